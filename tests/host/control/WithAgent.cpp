// The commands of "vpm ctl" with an agent at the other end.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/agent/RunningAgent.h"

namespace HostTests {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kSite = R"({"vela-l3:policy-source":{"policy-set":[{"device-name":"fw1",
  "policy":[{"vrf-name":"red","rule":[{"priority":20000,"origin":[{"name":"web","action":"drop",
  "match":{"dst-ip":["10.1.0.0/16"]}}]}]}]},{"device-name":"fw2"}]},"vela-policy-monitor:status":
  {"device-policy-list":[{"device-name":"fw1","net-vrf-name-by-vrf":[{"vrf-name":"red",
  "net-vrf-name":"net-red"}]}]}})";

class WithAgent : public testing::Test {
 protected:
  WithAgent() { agent_.client(); }

  Outcome ctl(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"ctl", "--socket", agent_.socket()});
    return runVpm(arguments);
  }

  Folder folder_;
  RunningAgent agent_{folder_, {"--config", folder_.write("site.json", kSite)}};
};

TEST_F(WithAgent, ShowPrintsWhatWasLoadedAndMade) {
  EXPECT_THAT(ctl({"show"}).out,
              HasSubstr("\n        origin web tags=\"\" action=drop log-enabled="
                        "false\n          match\n            dst-ip 10.1.0.0/16\n"));
  const std::string all = ctl({"show", "--v1", "--status", "--json"}).out;
  EXPECT_THAT(all, AllOf(HasSubstr("vela-l3:policy-source"),
                         HasSubstr("vela-policy-monitor:status"), Not(HasSubstr("vela-l3v2:"))));
  EXPECT_EQ(ctl({"show", "/vela-l3:policy-source/policy-set[device-name=fw2]"}).out,
            "vela-l3:policy-source\n  policy-set fw2\n");
}

TEST_F(WithAgent, ApplyChangesWhatShowPrints) {
  std::string log;
  for (int i = 0; i < 3000; ++i) {
    log += R"({"update":[{"path":"/vela-l3:policy-source/policy-set[device-name='fw1']/)"
           R"(policy[vrf-name='red']/rule[priority=')" +
           std::to_string(10000 + i) + R"(']","value":{}}]})" + "\n";
  }
  log += "{\"delete\":[\"/vela-l3:policy-source/policy-set[device-name=fw9]\"]}\n";
  const std::string file = folder_.write("changes.log", log);
  const Outcome outcome = ctl({"apply", file});
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_THAT(outcome.err, HasSubstr(file + ":3001: error: nothing to delete at "));
  EXPECT_THAT(outcome.err, HasSubstr("vpm: 3000 applied, 1 failed\n"));
  EXPECT_THAT(ctl({"show"}).out, HasSubstr("      rule 12999\n"));
  EXPECT_EQ(ctl({"audit"}).exitCode, 0);
}

TEST_F(WithAgent, WaitNamesTheDeviceWithoutARecord) {
  EXPECT_EQ(ctl({"wait", "--converged", "fw1", "--timeout", "20"}).exitCode, 0);
  const Outcome outcome = ctl({"wait", "--timeout", "0"});
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_THAT(outcome.out, testing::StartsWith("fw2: its policies have not converged\n  "));
}

TEST_F(WithAgent, StatsHasAMetricForEachOfItsCounts) {
  const Outcome outcome = ctl({"stats", "--prometheus"});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("\nvpm_clients "), Not(HasSubstr("untyped"))));
  EXPECT_THAT(
      outcome.out,
      HasSubstr("\nvpm_handler_calls_total{class=\"VelaPolicyMonitor::PolicyTranslateRootSm\","
                "handler=\"handleInitialized()\"} 1\n"));
}

TEST_F(WithAgent, StopEndsIt) {
  EXPECT_EQ(ctl({"stop"}).exitCode, 0);
  EXPECT_EQ(agent_.exitCode(), 0);
  EXPECT_EQ(ctl({"show"}).exitCode, 3);
}

}  // namespace
}  // namespace HostTests
