#include "command/Completion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/Running.h"

namespace HostTests {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/// What bash offers behind these words, the last of which is being typed; one per line.
std::string offered(const std::string& words, const std::string& folder = "/") {
  return shell("cd " + folder + " && bash -c 'source <(\"$0\" completion bash) && COMP_WORDS=(" +
               words +
               ") && COMP_CWORD=$((${#COMP_WORDS[@]} - 1)) && _vpm && "
               "printf \"%s\\n\" \"${COMPREPLY[@]}\"' \"$VPM\" 2>&1")
      .out;
}

TEST(BashCompletion, OffersCommands) {
  EXPECT_EQ(offered("vpm tr"), "translate\ntrace\n");
  EXPECT_EQ(offered("vpm ctl w"), "watch\nwait\n");
  EXPECT_THAT(offered("vpm \"\""), AllOf(HasSubstr("agent\n"), HasSubstr("ctl\n")));
}

TEST(BashCompletion, OffersTheOptionsOfTheCommandThatIsTyped) {
  EXPECT_EQ(offered("vpm ctl --so"), "--socket\n");
  EXPECT_EQ(offered("vpm ctl show --j"), "--json\n");
  EXPECT_EQ(offered("vpm translate --j"), "\n");
}

TEST(BashCompletion, OffersTheValuesOfAnOption) {
  EXPECT_EQ(offered("vpm translate --color \"\""), "auto\nalways\nnever\n");
  EXPECT_EQ(offered("vpm translate --color = al"), "always\n");
  EXPECT_EQ(offered("vpm translate --color ="), "auto\nalways\nnever\n");
  EXPECT_EQ(offered("vpm completion z"), "zsh\n");
  EXPECT_EQ(offered("vpm translate --time \"\""), "\n");
}

TEST(BashCompletion, TakesNoValueForACommand) {
  EXPECT_EQ(offered("vpm ctl --socket show --so"), "--socket\n");
  EXPECT_EQ(offered("vpm ctl --socket = show appl"), "apply\n");
}

TEST(BashCompletion, OffersFiles) {
  const Folder folder;
  folder.write("site one.json", "");
  EXPECT_EQ(offered("vpm translate si", folder.path("")), "site one.json\n");
  EXPECT_EQ(offered("vpm translate -o si", folder.path("")), "site one.json\n");
  EXPECT_EQ(offered("vpm ctl reload si", folder.path("")), "\n");
}

TEST(ZshCompletion, OffersCommandsOptionsAndValues) {
  const Outcome outcome = runVpm({"completion", "zsh"});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_THAT(outcome.out, HasSubstr("    'show:print what the agent holds, as a tree'\n"));
  EXPECT_THAT(outcome.out,
              HasSubstr("'(-o --output)-o[write to this file, whole or not at all]:FILE:_files'"));
  EXPECT_THAT(outcome.out,
              HasSubstr("[use colours\\: auto, always or never]:WHEN:(auto always never)'"));
  EXPECT_THAT(outcome.out, HasSubstr("'*:DOC:_files'"));
}

TEST(ZshCompletion, IsAScriptOfThatShellWhereThereIsOne) {
  const Outcome outcome =
      shell("command -v zsh >/dev/null || exit 0; $VPM completion zsh | zsh -n 2>&1");
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(outcome.out, "");
}

TEST(FishCompletion, OffersCommandsOptionsAndValues) {
  const std::string here = R"(complete -c vpm -n 'test (__vpm_command) = "vpm ctl)";
  const Outcome outcome = runVpm({"completion", "fish"});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_THAT(outcome.out, HasSubstr(here + "\"' -a show -d 'print what the agent holds"));
  EXPECT_THAT(outcome.out, HasSubstr(here + " show\"' -l color -r -a 'auto always never' -d "));
  EXPECT_THAT(outcome.out, HasSubstr(here + "\"' -l socket -r -F -d "));
}

TEST(FishCompletion, WorksInThatShellWhereThereIsOne) {
  if (shell("command -v fish >/dev/null").exitCode != 0) {
    return;
  }
  const auto offers = [](const std::string& line) {
    return shell(
               "HOME=/nowhere fish -N -c "
               "'source (\"'$VPM'\" completion fish | psub); complete -C \"" +
               line + "\"' 2>&1")
        .out;
  };
  EXPECT_THAT(offers("vpm ctl sh"), HasSubstr("show\t"));
  EXPECT_THAT(offers("vpm ctl show --j"), HasSubstr("--json\t"));
  EXPECT_THAT(offers("vpm translate --color al"), HasSubstr("always\t"));
  EXPECT_THAT(offers("vpm ctl --socket show --so"),
              AllOf(HasSubstr("--socket"), Not(HasSubstr("--json"))));
}

}  // namespace
}  // namespace HostTests
