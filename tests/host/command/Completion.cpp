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

TEST(ZshCompletion, IsAScriptOfThatShell) {
  if (shell("command -v zsh >/dev/null").exitCode != 0) {
    GTEST_SKIP() << "there is no zsh here";
  }
  const Outcome outcome =
      shell("$VPM completion zsh > /dev/null && $VPM completion zsh | zsh -n 2>&1");
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(outcome.out, "");
}

TEST(FishCompletion, OffersCommandsOptionsAndValues) {
  if (shell("command -v fish >/dev/null").exitCode != 0) {
    GTEST_SKIP() << "there is no fish here";
  }
  const auto offers = [](const std::string& line) {
    return shell(
               "HOME=/nowhere fish -N -c 'source (\"'$VPM'\" completion fish | psub); complete -C "
               "\"" +
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
