// vpm replay --record: what was applied, as a change log that leads to the same end.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/Running.h"

namespace HostTests {
namespace {

using testing::HasSubstr;
using testing::Not;

const char* const kConfig = R"({
  "vela-l3:policy-source": {"policy-set": [{"device-name": "fw1", "policy": [
    {"vrf-name": "red", "rule": [{"priority": 20000, "origin": [{"name": "web"}]}]}]}]},
  "vela-policy-monitor:status": {"device-policy-list": [{"device-name": "fw1",
    "net-vrf-name-by-vrf": [{"vrf-name": "red", "net-vrf-name": "net-red"}]}]}
})";
const std::string kRed =
    "/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']";
std::string tags(const std::string& tags) {
  return R"("update":[{"path":")" + kRed + R"(/rule[priority=20000]/origin[name=web]/tags",)" +
         R"("value":")" + tags + R"("}])";
}

class Recording : public testing::Test {
 protected:
  Outcome replay(const std::string& log, std::vector<std::string> options = {}) {
    std::vector<std::string> arguments{"replay", "--config", folder_.write("c.json", kConfig), log};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return runVpm(arguments);
  }
  Outcome record(const std::string& log, std::vector<std::string> options = {}) {
    options.insert(options.end(), {"--record", folder_.path("recorded")});
    return replay(folder_.write("log", log), options);
  }
  static std::string lastLine(const std::string& text) {
    return text.substr(text.rfind('\n', text.size() - 2) + 1);
  }

  Folder folder_;
};

TEST_F(Recording, HasWhatWasAppliedWithItsTimeAndNothingOfWhatWasRefused) {
  record("\n{\"time\":5," + tags("a") + "}\n" +                               //
         R"({"time":6,"delete":[")" + kRed + R"(/rule[priority=10000]"]})" +  // is not there
         "\n{\"show\":[\"v2\"]," + tags("b") + "}\n" +                        //
         R"({"time":7.25,"control":"suspend","tree":"policy"})" + "\n");
  const std::string web = R"("update":[{"path":")" + kRed +
                          R"(/rule[priority='20000']/origin[name='web']/tags","value":)";
  EXPECT_EQ(folder_.read("recorded"), "{\"time\":5," + web + R"("a"}]})" + "\n" +  //
                                          "{\"time\":5," + web + R"("b"}]})" + "\n" +
                                          R"({"time":7.25,"control":"suspend","tree":"policy"})"
                                          "\n");
}

TEST_F(Recording, ReplayedLeadsToTheSameAnswerAndTheSameTrace) {
  const Outcome first = record("{\"time\":5.5," + tags("a") + "}\n" +  //
                                   R"({"delete":[")" + kRed + R"(/rule[priority=10000]"]})" +
                                   "\n{\"time\":1732195712.123456," + tags("b") + "}\n" +
                                   R"({"signal":false,"replace":[{"path":")" + kRed +
                                   R"(","value":{"rule":[{"priority":10001}]}}]})" +
                                   "\n{\"control\":\"stop\"}\n{\"time\":8,\"control\":\"start\"}\n",
                               {"--trace", folder_.path("trace1"), "--time", "3"});
  EXPECT_EQ(first.exitCode, 1);  // the delete
  const Outcome second =
      replay(folder_.path("recorded"), {"--trace", folder_.path("trace2"), "--time", "3"});
  EXPECT_EQ(second.exitCode, 0);
  EXPECT_EQ(second.out, lastLine(first.out));
  EXPECT_EQ(folder_.read("trace1"), folder_.read("trace2"));
  EXPECT_THAT(folder_.read("trace1"), HasSubstr("1732195712.123456"));
}

TEST_F(Recording, IsWrittenLineByLineAndKeepsTheOneBefore) {
  folder_.write("recorded", "an earlier one");
  record("{\"time\":1}\n");
  EXPECT_EQ(folder_.read("recorded"), "{\"time\":1}\n");
  EXPECT_EQ(folder_.read("recorded~"), "an earlier one");
}

TEST_F(Recording, ThatCannotBeWrittenIsExitCode3) {
  const Outcome outcome =
      replay(folder_.write("log", "{}\n"), {"--record", folder_.path("no/such/folder")});
  EXPECT_EQ(outcome.exitCode, 3);
  EXPECT_THAT(outcome.err, HasSubstr("no/such/folder: cannot be created: No such file"));
  const Outcome full = replay(folder_.write("log", "{}\n"), {"--record", "/dev/full"});
  EXPECT_EQ(full.exitCode, 3);
  EXPECT_THAT(full.err, HasSubstr("/dev/full: cannot be written: No space left"));
}

}  // namespace
}  // namespace HostTests
