#include "agent/Trials.h"

#include <csignal>
#include <fstream>

#include "host/agent/AgentTest.h"

namespace HostTests {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

class AgentTrial : public Agent {
 protected:
  static std::string tried(const std::string& change) {
    return R"({"request":"try","change":)" + change + "}";
  }
  /// What is told of a change that is made, without what only a watch has.
  static std::string changesIn(const std::string& watched) {
    const auto at = watched.find("\"event\"");
    return at == std::string::npos ? "" : "{" + watched.substr(at);
  }
};

const std::string kRecord = "/vela-policy-monitor:status/device-policy-list[device-name='fw1']";
const std::string kMapping = kRecord + "/net-vrf-name-by-vrf[vrf-name='red']";
const std::string kPolicy2 =
    "/vela-l3v2:policy-source/policy-set[device-name='fw1']/policy[net-vrf-name='net-red']";

TEST_F(AgentTrial, SaysWhatALineWouldChangeAndChangesNothing) {
  TestClient client = start().client();
  const std::string before = client.ask(R"({"request":"show","of":["v1","v2","status"]})");
  const std::string change =
      R"({"update":[{"path":")" + kWeb + R"(/match/dst-ip[.='10.7.0.0/16']"}],"signal":false})";
  EXPECT_EQ(client.ask(tried(change)), R"({"line":2,"changes":[{"event":"add","path":")" + kWebV2 +
                                           R"(/match/dst-ip[.='10.7.0.0/16']"}],"warnings":[]})");
  const std::string after = client.ask(R"({"request":"show","of":["v1","v2","status"]})");
  EXPECT_EQ(after.substr(after.find("data")), before.substr(before.find("data")));
  EXPECT_THAT(client.ask(R"({"request":"stats"})"), HasSubstr(R"("applied":0)"));
}

TEST_F(AgentTrial, SaysExactlyWhatIsToldWhenTheLineIsApplied) {
  TestClient client = start().client();
  for (const std::string& change :
       {R"({"update":[{"path":")" + kWeb + R"(","value":{"action":"drop","tags":"x"}}],)" +
            R"("signal":false})",
        R"({"delete":[")" + kRed + R"("]})",
        R"({"update":[{"path":")" + kMapping + R"(","value":{"net-vrf-name":""}}]})",
        R"({"delete":[")" + kRecord + R"("],"notify":[")" + kRed + R"("]})",
        std::string(R"({"control":"cleanup"})"), std::string(R"({"control":"initialize"})")}) {
    const std::string answer = client.ask(tried(change));
    TestClient watching(agent_->socket());
    watching.send(R"({"request":"watch"})"
                  "\n");
    while (watching.line().find("synchronized") == std::string::npos) {
    }
    client.ask(change);
    watching.send(R"({"request":"audit"})"
                  "\n");
    std::string told;
    for (std::string line = watching.line(); line.find("\"audit\"") == std::string::npos;
         line = watching.line()) {
      ASSERT_THAT(line, StartsWith("{\"line\":1,"));
      if (line.find("timestamp") == std::string::npos) {
        told += (told.empty() ? "" : ",") + changesIn(line);
      }
    }
    const auto begin = answer.find("\"changes\":[") + 11;
    std::string changes = answer.substr(begin, answer.find("],\"warnings\"") - begin);
    if (const auto stamp = changes.find(R"({"event":"set","path":")" + kPolicy2 + "/timestamp");
        stamp != std::string::npos) {
      const auto end = changes.find('}', stamp);
      changes.erase(stamp == 0 ? 0 : stamp - 1, end - stamp + 2);
    }
    EXPECT_EQ(changes, told) << change;
  }
}

TEST_F(AgentTrial, WarnsOfWhatALineWouldTakeAway) {
  TestClient client = start().client();
  EXPECT_THAT(
      client.ask(tried(update(kMapping, R"({"net-vrf-name":""})"))),
      HasSubstr(R"("warnings":["device \"fw1\": the policy of VRF \"red\" would lose \"net-red\", )"
                R"(its entry in version 2",")" +
                kRed +
                R"(: the monitor's record \"fw1\" has an empty network VRF name for this VRF"]})"));
  EXPECT_THAT(client.ask(tried(R"({"delete":[")" + kRecord + "\"]}")),
              HasSubstr(R"(the monitor's record of this device is gone (looked for \"fw1\"); )"
                        R"(what was translated stays until the device is announced again"]})"));
  EXPECT_THAT(client.ask(tried(R"({"delete":[")" + kRecord + R"("],"update":[{"path":")" +
                               kMapping + R"(","value":{"net-vrf-name":"net-red"}}]})")),
              HasSubstr(R"(: the state machine perDeviceSm follows another record than the one )"
                        R"(that is there now, until the device is announced"]})"));
  EXPECT_THAT(client.ask(tried(R"({"delete":[")" + kWeb + "/match\"]}")),
              HasSubstr("that of version 2 outlives it until its origin goes"));
}

TEST_F(AgentTrial, WarnsOfNamesThatVrfsShareOrSwap) {
  TestClient client = start().client();
  const std::string blue =
      "/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='blue']";
  const std::string mapped = kRecord + "/net-vrf-name-by-vrf[vrf-name='blue']";
  client.ask(update(mapped, R"({"net-vrf-name":"net-blue"})"));
  client.ask(update(blue, R"({"rule":[{"priority":20000}]})"));
  EXPECT_THAT(client.ask(tried(update(mapped, R"({"net-vrf-name":"net-red"})"))),
              HasSubstr(R"(policy[vrf-name='blue']: this VRF shares the network VRF name )"
                        R"(\"net-red\" with \"red\"; one entry of version 2 cannot show both")"));
  EXPECT_THAT(client.ask(tried(R"({"update":[{"path":")" + mapped +
                               R"(","value":{"net-vrf-name":"net-red"}},{"path":")" + kMapping +
                               R"(","value":{"net-vrf-name":"net-blue"}}]})")),
              AllOf(HasSubstr(R"(device \"fw1\": the policy of VRF \"blue\" would lose )"
                              R"(\"net-blue\", its entry in version 2)"),
                    HasSubstr(R"(the network VRF name \"net-red\" has belonged to another VRF, )"
                              R"(which took the entry along when it left)")));
}

TEST_F(AgentTrial, DoesNotWarnOfHarmlessLines) {
  TestClient client = start().client();
  for (const std::string& change :
       {update(kWeb + "/tags", "\"x\""), update(kRed + "/rule[priority='10001']", "{}"),
        R"({"delete":[")" + kWeb + "\"]}", R"({"delete":[")" + kRed + "\"]}",
        std::string(R"({"delete":["/vela-l3:policy-source/policy-set[device-name='fw1']"]})"),
        update(kMapping, R"({"net-vrf-name":"net-other"})"),
        R"({"update":[{"path":")" + kWeb + R"(/log","value":true}],"signal":false})",
        R"({"notify":[")" + kRed + "\"]}"}) {
    EXPECT_THAT(client.ask(tried(change)), HasSubstr(R"("warnings":[]})")) << change;
  }
}

TEST_F(AgentTrial, AnswersALineThatCannotBeAppliedWithItsError) {
  TestClient client = start().client();
  EXPECT_EQ(client.ask(tried(R"({"delete":[")" + kRed + "/rule[priority='10001']\"]}")),
            R"({"line":1,"changes":[],"warnings":[],"error":"nothing to delete at )" + kRed +
                R"(/rule[priority='10001']"})");
  EXPECT_EQ(client.ask(tried(R"({"time":5})")),
            R"({"line":2,"error":"\"time\" is for a replay; the clock of an agent is the real )"
            R"(one"})");
}

TEST_F(AgentTrial, TellsWatchersAndJournalNothing) {
  TestClient watching = start({"--state", folder_.path("state")}).client();
  watching.send(R"({"request":"watch"})"
                "\n");
  while (watching.line().find("synchronized") == std::string::npos) {
  }
  TestClient client(agent_->socket());
  EXPECT_THAT(client.ask(tried(R"({"delete":[")" + kRed + "\"]}")),
              HasSubstr(R"("event":"remove","path":")" + kPolicy2));
  client.ask(update(kWeb + "/tags", "\"real\""));
  EXPECT_THAT(watching.line(), HasSubstr(R"("value":"real")"));
  client.leave();
  watching.leave();
  EXPECT_EQ(agent_->stop(), 0);
  TestClient again = start({"--state", folder_.path("state")}).client();
  EXPECT_THAT(again.ask(kShowTags), HasSubstr(R"("tags":"real")"));
}

/// A line that takes a child long enough to be found at it.
std::string longLine() {
  std::string prefixes;
  for (int i = 0; i != 30'000; ++i) {
    prefixes += (i == 0 ? "\"10." : ",\"10.") + std::to_string(i / 250) + '.' +
                std::to_string(i % 250) + ".0/24\"";
  }
  return R"({"update":[{"path":")" + kWeb + R"(","value":{"match":{"dst-ip":[)" + prefixes +
         "]}}}]}";
}

/// The child of a process that has one or is about to have one; 0 when none comes.
pid_t childOf(pid_t parent) {
  const std::string file =
      "/proc/" + std::to_string(parent) + "/task/" + std::to_string(parent) + "/children";
  pid_t child = 0;
  eventually([&] {
    std::ifstream(file) >> child;
    return child != 0;
  });
  return child;
}

TEST_F(AgentTrial, SurvivesTheBreakdownOfTheProcessThatTries) {
  TestClient client = start().client();
  client.send(tried(longLine()) + '\n');
  const pid_t child = childOf(agent_->pid());
  ASSERT_NE(child, 0);
  ASSERT_EQ(::kill(child, SIGKILL), 0);
  EXPECT_EQ(client.line(),
            R"({"line":1,"error":"the process that has tried this line out has broken down; )"
            R"(applied, the line may end the agent"})");
  EXPECT_EQ(client.ask("{}"), R"({"line":2})");
}

TEST_F(AgentTrial, EndsWhenNobodyWaitsForItAnyMore) {
  TestClient client = start().client();
  pid_t child = 0;
  {
    TestClient leaving(agent_->socket());
    leaving.send(tried(longLine()) + '\n');
    child = childOf(agent_->pid());
    ASSERT_NE(child, 0);
    ASSERT_EQ(::kill(child, SIGSTOP), 0);  // it would never end by itself
  }
  EXPECT_TRUE(eventually([&] { return ::kill(child, 0) != 0; }));
  EXPECT_EQ(client.ask("{}"), R"({"line":1})");
}

}  // namespace
}  // namespace HostTests
