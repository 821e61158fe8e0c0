#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/Running.h"

namespace HostTests {
namespace {

using testing::HasSubstr;

const char* const kConfig = R"({
  "vela-l3:policy-source": {"policy-set": [{"device-name": "fw1", "policy": [
    {"vrf-name": "red", "rule": [{"priority": 20000}]}]}]},
  "vela-policy-monitor:status": {"device-policy-list": [{"device-name": "fw1",
    "net-vrf-name-by-vrf": [{"vrf-name": "red", "net-vrf-name": "n"}]}]}
})";

TEST(AuditDocuments, FindsWhatARunHasPrintedEqualToItsInput) {
  const Folder folder;
  const std::string config = folder.write("c.json", kConfig);
  const std::string printed = folder.write("v2.json", runVpm({"translate", config}).out);
  const Outcome outcome = runVpm({"audit", config, printed});
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(outcome.out, "{\n  \"equal\": true,\n  \"differences\": []\n}\n");
  const std::string last = folder.write(
      "end.json", runVpm({"replay", folder.write("a.log", ""), "--config", config}).out);
  EXPECT_EQ(runVpm({"audit", config, last}).exitCode, 0);
}

TEST(AuditDocuments, FindsWhatDiffersAndSaysSoByTheExitCode) {
  const Folder folder;
  const std::string config = folder.write("c.json", kConfig);
  std::string printed = runVpm({"translate", config}).out;
  printed.replace(printed.find("20000"), 5, "20001");
  const Outcome outcome = runVpm({"audit", config, folder.write("v2.json", printed)});
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_THAT(outcome.out, HasSubstr(R"("class": "defect")"));
  EXPECT_THAT(outcome.out, HasSubstr(R"("class": "foreign")"));
}

TEST(AuditDocuments, RefusesWhatIsNoData) {
  const Folder folder;
  const Outcome outcome = runVpm({"audit", folder.write("c.json", R"({"vela-l3:x": {}})")});
  EXPECT_EQ(outcome.exitCode, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, HasSubstr("1:2: error: there is no container"));
}

}  // namespace
}  // namespace HostTests
