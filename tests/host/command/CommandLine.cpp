#include "command/CommandLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <filesystem>

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
    {"UnknownColor", {"translate", "a.json", "--color", "blue"}, "--color: blue"},
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
  for (const auto& arguments : {std::vector<std::string>{"--help"}, {"translate", "--help"}}) {
    std::istringstream lines(runVpm(arguments).out);
    for (std::string line; std::getline(lines, line);) {
      EXPECT_LE(line.size(), 80U) << line;
    }
  }
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

/// Runs a line of shell with $VPM as the program beside this test.
Outcome shell(const std::string& line) {
  const std::string vpm = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "vpm";
  const std::string command = "VPM='" + vpm + "'; " + line;
  std::FILE* const pipe = ::popen(command.c_str(), "r");
  std::string out;
  std::array<char, 4096> piece;
  for (std::size_t got = 0; (got = std::fread(piece.data(), 1, piece.size(), pipe)) != 0;) {
    out.append(piece.data(), got);
  }
  const int status = ::pclose(pipe);
  return {WEXITSTATUS(status), out, ""};
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
