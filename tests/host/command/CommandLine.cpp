#include "command/CommandLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command/CommandTable.h"
#include "command/CommandText.h"
#include "host/Running.h"

namespace HostTests {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

struct Refused {
  const char* name;
  std::vector<std::string> arguments;
  const char* message;
};

class RefusedCommandLine : public testing::TestWithParam<Refused> {};

TEST_P(RefusedCommandLine, SaysWhyAndDoesNothing) {
  const Outcome outcome = runVpm(GetParam().arguments);
  EXPECT_EQ(outcome.exitCode, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, StartsWith("vpm: error: "));
  EXPECT_THAT(outcome.err, HasSubstr(GetParam().message));
  EXPECT_THAT(outcome.err, HasSubstr("--help\"\n"));
}

const std::vector<Refused> kRefused{
    {"NoCommand", {}, "a command is missing"},
    {"UnknownCommand",
     {"tranlsate", "a.json"},
     "there is no command tranlsate; did you mean \"translate\"?"},
    {"UnknownCommandWithoutALikelyOne", {"zzz"}, "there is no command zzz\n"},
    {"UnknownOption",
     {"translate", "a.json", "--ouput", "b.json"},
     "there is no option --ouput; did you mean \"--output\"?"},
    {"UnknownOptionBeforeACommand", {"--verson"}, "there is no option --verson"},
    {"NoDocument", {"translate"}, "DOC"},
    {"NoFileForTheTrace", {"translate", "a.json", "--trace"}, "--trace"},
    {"UnknownColor",
     {"translate", "a.json", "--color", "alwys"},
     "--color: alwys is unknown; expected auto, always or never; did you mean \"always\"?"},
    {"NoCommandOfACommand", {"ctl"}, "a ctl command is missing"},
    {"UnknownCommandOfACommand",
     {"ctl", "shwo"},
     "there is no ctl command shwo; did you mean \"show\"?"},
    {"UnknownOptionOfACommandOfACommand",
     {"ctl", "show", "--jsn"},
     "there is no option --jsn; did you mean \"--json\"?"},
    {"TimeoutBeforeNow", {"ctl", "wait", "--timeout", "-1"}, "--timeout: -1 is before now"},
    {"LevelsOutOfRange", {"translate", "a.json", "--trace-levels", "6-12"}, "6-12"},
    {"TimeThatIsNone", {"translate", "a.json", "--time", "noon"}, "\"noon\" is not a time"},
};
INSTANTIATE_TEST_SUITE_P(, RefusedCommandLine, testing::ValuesIn(kRefused),
                         [](const auto& each) { return each.param.name; });

TEST(CommandLine, HelpsOnStandardOutput) {
  const Outcome all = runVpm({"--help"});
  EXPECT_EQ(all.exitCode, 0);
  EXPECT_EQ(all.err, "");
  EXPECT_THAT(all.out, HasSubstr("translate"));
  const Outcome one = runVpm({"translate", "--help"});
  EXPECT_EQ(one.exitCode, 0);
  EXPECT_THAT(one.out, HasSubstr("Usage: vpm translate"));
  EXPECT_THAT(one.out, HasSubstr("Examples:\n  vpm translate firewall.json\n"));
}

TEST(CommandLine, HelpFitsInEightyColumns) {
  Host::CommandTable table;
  addCommands(table);
  std::size_t commands = 0;
  Host::forEachCommand(Host::textOf(table.app()), [&](const Host::CommandText& command) {
    ++commands;
    std::istringstream lines(Host::helpOf(command));
    for (std::string line; std::getline(lines, line);) {
      EXPECT_LE(line.size(), 80U) << command.name << ": " << line;
    }
  });
  EXPECT_GE(commands, 15U);
}

TEST(CommandLine, HelpOfEveryCommandHasExamples) {
  Host::CommandTable table;
  addCommands(table);
  Host::forEachCommand(Host::textOf(table.app()), [](const Host::CommandText& command) {
    EXPECT_THAT(Host::helpOf(command), HasSubstr("\nExamples:\n  ")) << command.name;
  });
}

TEST(CommandLine, HelpListsCommandsUnderHeadings) {
  const std::string help = runVpm({"--help"}).out;
  EXPECT_THAT(help, HasSubstr("\nDocuments and logs of changes:\n  translate "));
  EXPECT_THAT(help, HasSubstr("\nThe agent:\n  agent "));
  EXPECT_THAT(runVpm({"ctl", "--help"}).out, HasSubstr("\nCommands:\n  show "));
}

TEST(CommandLine, PrintsItsVersion) {
  const Outcome outcome = runVpm({"--version"});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_THAT(outcome.out, testing::MatchesRegex("vpm [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST(CommandLine, ColoursMessagesWhenAsked) {
  const Folder folder;
  const std::string file = folder.write("site.json", "[]");
  EXPECT_THAT(runVpm({"translate", file, "--color", "always"}).err, HasSubstr("\033[1;31merror: "));
  EXPECT_THAT(runVpm({"translate", file, "--color", "never"}).err, testing::Not(HasSubstr("\033")));
  EXPECT_THAT(runVpm({"translate", file}).err, testing::Not(HasSubstr("\033")));
}

TEST(Program, AnswersWithTheExitCodesOfItsCommands) {
  EXPECT_EQ(shell("echo '{}' | $VPM translate - 2>&1 >/dev/null").exitCode, 0);
  EXPECT_EQ(shell("$VPM translate /nowhere/site.json 2>/dev/null").exitCode, 2);
  EXPECT_EQ(shell("$VPM 2>/dev/null").exitCode, 2);
  EXPECT_EQ(shell("echo '{}' | $VPM translate - 2>/dev/null >/dev/full").exitCode, 3);
}

TEST(Program, ReadsStandardInputAndNamesIt) {
  EXPECT_THAT(shell("echo '{}' | $VPM translate -").out, HasSubstr("\"vela-l3v2:policy-source\""));
  EXPECT_THAT(shell("printf '{]' | $VPM translate - 2>&1").out, StartsWith("<stdin>:1:2: error: "));
}

TEST(Program, ShowsProgressOnlyWhenAskedOrOnATerminal) {
  const std::string slow = "(sleep 1.5; echo '{}') | $VPM translate - ";
  EXPECT_EQ(shell(slow + "2>&1 >/dev/null").out, "");
  EXPECT_THAT(shell(slow + "--progress 2>&1 >/dev/null").out, HasSubstr("vpm: reading"));
}

}  // namespace
}  // namespace HostTests
