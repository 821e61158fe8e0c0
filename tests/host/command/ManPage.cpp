#include "command/ManPage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command/CommandTable.h"
#include "command/CommandText.h"
#include "host/Running.h"

namespace HostTests {
namespace {

using testing::HasSubstr;

std::string unescaped(const std::string& roff) {
  std::string text;
  for (std::size_t i = 0; i < roff.size(); ++i) {
    if (roff[i] != '\\') {
      text += roff[i];
    } else if (roff.compare(i, 2, "\\-") == 0) {
      text += '-';
      ++i;
    }
  }
  return text;
}

TEST(ManPage, CoversEveryCommandAndOption) {
  const Outcome outcome = runVpm({"man"});
  ASSERT_EQ(outcome.exitCode, 0);
  Host::CommandTable table;
  Host::addCommands(table);
  std::size_t options = 0;
  // Each is looked for behind the section of its command.
  const std::string page = unescaped(outcome.out);
  Host::forEachCommand(Host::textOf(table.app()), [&](const Host::CommandText& command) {
    const bool all = command.name == "vpm";
    const std::size_t begin =
        page.find(all ? ".SH OPTIONS" : ".SS \"" + command.name + " [OPTIONS]");
    ASSERT_NE(begin, std::string::npos) << command.name;
    const std::string section = page.substr(begin, page.find("\n.S", begin + 1) - begin);
    for (const Host::OptionText& option : command.options) {
      for (const std::string& name : option.names) {
        ++options;
        EXPECT_THAT(section, HasSubstr("fB" + name + "fR")) << command.name;
      }
    }
  });
  EXPECT_GT(options, 80U);
}

TEST(ManPage, IsSetWithoutAWarning) {
  const Outcome outcome = shell("$VPM man | groff -ww -man -Tutf8 2>&1 >/dev/null");
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(outcome.out, "");
}

TEST(ManPage, ShowsExamplesAsTheyAreTyped) {
  const Outcome outcome = shell("$VPM man | groff -man -Tascii -P-cbou");
  EXPECT_THAT(outcome.out, HasSubstr("vpm translate firewall.json\n"));
  EXPECT_THAT(
      outcome.out,
      HasSubstr(R"(echo '{"delete":["/vela-l3:policy-source/policy-set[device-name=fw1]"]}' |)"));
}

}  // namespace
}  // namespace HostTests
