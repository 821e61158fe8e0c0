#include "control/Errands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/control/FakeAgent.h"

namespace HostTests {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kDifferences =
    R"(,"audit":{"equal":false,"differences":[{"path":"/vela-l3:policy-source/policy-set)"
    R"([device-name='fw1']/policy[vrf-name='red']","class":"as designed","why":"the record of )"
    R"(fw1 has no network VRF name for red, so that nothing of this VRF is translated"}]})";

std::string differences(const std::string& kind) {
  std::string text = kDifferences;
  text.replace(text.find("as designed"), 11, kind);
  return text;
}

TEST(AuditAgent, PrintsATableThatFitsATerminal) {
  const FakeAgent agent(always(differences("as designed")));
  const Outcome outcome = agent.ctl({"audit"});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(outcome.out,
            R"(CLASS        PATH
             WHY
as designed  /vela-l3:policy-source/policy-set[device-name='fw1']
             /policy[vrf-name='red']
             the record of fw1 has no network VRF name for red, so that nothing
             of this VRF is translated
)");
}

TEST(AuditAgent, AnswersWithOneWhenADifferenceIsAlarming) {
  for (const char* const kind : {"foreign", "defect"}) {
    const FakeAgent agent(always(differences(kind)));
    EXPECT_EQ(agent.ctl({"audit"}).exitCode, 1);
    const Outcome json = agent.ctl({"audit", "--json"});
    EXPECT_EQ(json.exitCode, 1);
    EXPECT_THAT(json.out, HasSubstr("{\n  \"equal\": false,\n  \"differences\": [\n"));
  }
}

TEST(AuditAgent, SaysSoWhenThereIsNoDifference) {
  const FakeAgent agent(always(R"(,"audit":{"equal":true,"differences":[]})"));
  const Outcome outcome = agent.ctl({"audit"});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(outcome.out, "version 2 is what version 1 says\n");
}

TEST(TraceScope, SetsWhatIsSaidAndShowsWhatIsSet) {
  FakeAgent agent(
      always(R"(,"trace":{"levels":"6-8","device":"fw1","vrf":"","rule":"","handler":""})"));
  EXPECT_EQ(agent.ctl({"trace", "--levels", "6-8", "--device", "fw1"}).out,
            "levels   6-8\ndevice   fw1\nvrf      all\nrule     all\nhandler  all\n");
  agent.ctl({"trace", "--all"});
  agent.ctl({"trace", "--handler", "handleRule", "--rule", "20000", "--vrf", "red"});
  EXPECT_THAT(
      agent.told(),
      ElementsAre(R"({"request":"trace","levels":"6-8","device":"fw1"})",
                  R"({"request":"trace","device":"","vrf":"","rule":"","handler":""})",
                  R"({"request":"trace","vrf":"red","rule":"20000","handler":"handleRule"})"));
}

TEST(TraceScope, RefusesLevelsThatAreNone) {
  FakeAgent agent(always(""));
  const Outcome outcome = agent.ctl({"trace", "--levels", "6-12"});
  EXPECT_EQ(outcome.exitCode, 2);
  EXPECT_THAT(outcome.err, HasSubstr("6-12"));
  EXPECT_THAT(agent.told(), ElementsAre());
}

TEST(WaitConverged, AnswersWithZeroOnceAllHasConverged) {
  FakeAgent agent(always(R"(,"converged":true,"devices":[])"));
  const Outcome outcome = agent.ctl({"wait", "--converged", "fw1", "--timeout", "2.5"});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(agent.told(), ElementsAre(R"({"request":"wait","device":"fw1","timeout":2.500000})"));
}

TEST(WaitConverged, SaysWhichDevicesAreLateAndWhyWhenTheTimeIsUp) {
  const FakeAgent agent([](std::size_t number, const std::string& line) {
    const std::string start = R"({"line":)" + std::to_string(number);
    return line.find("audit") == std::string::npos
               ? start +
                     R"(,"converged":false,"devices":[)"
                     R"({"device":"fw1","policy":false,"service-device":true},)"
                     R"({"device":"fw2","policy":false,"service-device":false},{"device":"fw3"}]})"
                     "\n"
               : start + kDifferences + "}\n";
  });
  const Outcome outcome = agent.ctl({"wait", "--timeout", "0"});
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.out, R"(fw1: its policies have not converged
  the record of fw1 has no network VRF name for red, so that nothing of this VRF
    is translated
fw2: its policies and its VRFs have not converged
fw3: version 1 does not have this device
)");
  const Outcome json = agent.ctl({"wait", "--timeout", "0", "--json"});
  EXPECT_EQ(json.exitCode, 1);
  EXPECT_THAT(json.out,
              HasSubstr(R"({ "device": "fw1", "policy": false, "service-device": true })"));
}

TEST(Errands, AreSaidInAWord) {
  FakeAgent agent(always(R"(,"changes":2,"stopping":true)"));
  EXPECT_EQ(agent.ctl({"reload"}).out, "documents that differed: 2\n");
  EXPECT_EQ(agent.ctl({"reload", "--json"}).out, "{\"changes\": 2}\n");
  EXPECT_EQ(agent.ctl({"stop"}).out, "");
  EXPECT_THAT(agent.told(), ElementsAre(R"({"request":"reload"})", R"({"request":"reload"})",
                                        R"({"request":"stop"})"));
}

}  // namespace
}  // namespace HostTests
