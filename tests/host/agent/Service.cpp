// What the agent answers.

#include "host/agent/AgentTest.h"

namespace HostTests {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class AgentAnswers : public Agent {};

TEST_F(AgentAnswers, AChangeLineByItsNumberAndTranslatesItAtOnce) {
  TestClient client = start().client();
  EXPECT_EQ(client.ask(update(kWeb + "/tags", R"("a")")), R"({"line":1})");
  EXPECT_EQ(
      client.ask(kShowTags),
      R"({"line":2,"data":{"vela-l3v2:policy-source":{"policy-set":[{"device-name":"fw1","policy":)"
      R"([{"net-vrf-name":"net-red","rule":[{"priority":20000,"origin":[{"name":"web","tags":"a"}]}]}]}]}}})");
}

TEST_F(AgentAnswers, WhatAChangeLineAsksToShow) {
  TestClient client = start().client();
  const std::string answer = client.ask(R"({"show":["v2","status","audit","stats"]})");
  EXPECT_THAT(answer, StartsWith(R"({"line":1,"v2":{"vela-l3v2:policy-source":{"policy-set":[)"));
  EXPECT_THAT(answer, HasSubstr(R"("policy-converge":true)"));
  EXPECT_THAT(answer,
              HasSubstr(R"("audit":{"equal":true,"differences":[]},"stats":{"applied":1,)"));
}

TEST_F(AgentAnswers, ShowWithTheContainersThatAreAskedFor) {
  TestClient client = start().client();
  const std::string v2 = client.ask(R"({"request":"show"})");
  EXPECT_THAT(v2, StartsWith(R"({"line":1,"data":{"vela-l3v2:policy-source":{"policy-set":[{)"));
  EXPECT_THAT(v2, Not(HasSubstr("vela-l3:")));
  const std::string others = client.ask(R"({"request":"show","of":["v1","status"]})");
  EXPECT_THAT(others, StartsWith(R"({"line":2,"data":{"vela-l3:policy-source":{"policy-set":[{)"));
  EXPECT_THAT(others, HasSubstr(R"("vela-policy-monitor:status":{"device-policy-list":[{)"));
  EXPECT_THAT(others, Not(HasSubstr("vela-l3v2:")));
}

TEST_F(AgentAnswers, AuditAndStatistics) {
  TestClient client = start().client();
  EXPECT_EQ(client.ask(R"({"request":"audit"})"),
            R"({"line":1,"audit":{"equal":true,"differences":[]}})");
  const std::string answer = client.ask(R"({"request":"stats"})");
  EXPECT_THAT(answer, StartsWith(R"({"line":2,"stats":{"applied":0,"failed":0,"writes":0,)"));
  EXPECT_THAT(answer, HasSubstr(R"("clients":1,"watches":0,"lines":2,)"));
  EXPECT_THAT(answer, HasSubstr(R"("resident":)"));
}

// The counts of the entities of one type, as an agent tells them.
struct Counts {
  unsigned long notifications;
  unsigned long unchanged;
};

Counts countsOf(TestClient& client, const std::string& type) {
  const std::string answer = client.ask(R"({"request":"stats"})");
  const auto behind = [&answer](const std::string& words, std::size_t from) {
    const std::size_t at = answer.find(words, from);
    return at == std::string::npos ? answer.size() : at + words.size();
  };
  const std::size_t entry = behind(R"({"type":")" + type + R"(",)", behind(R"("entities":[)", 0));
  const auto number = [&](const std::string& name) {
    return std::stoul(answer.substr(behind('"' + name + "\":", entry)));
  };
  return {number("notifications"), number("unchanged-writes")};
}

TEST_F(AgentAnswers, HowOftenEntitiesChangedAndHowOftenTheyWereWrittenInVain) {
  TestClient client = start().client();
  for (const std::string type :
       {"VelaL3::VelaRuleOriginConfig", "VelaL3V2::VelaRuleOriginConfig"}) {
    client.ask(update(kWeb + "/tags", R"("before")"));
    const Counts first = countsOf(client, type);
    client.ask(update(kWeb + "/tags", R"("a")"));
    const Counts changed = countsOf(client, type);
    EXPECT_EQ(changed.notifications, first.notifications + 1) << type;
    EXPECT_EQ(changed.unchanged, first.unchanged) << type;
    client.ask(update(kWeb + "/tags", R"("a")"));
    const Counts again = countsOf(client, type);
    EXPECT_EQ(again.notifications, changed.notifications + 1) << type;
    EXPECT_EQ(again.unchanged, changed.unchanged + 1) << type;
  }
}

TEST_F(AgentAnswers, WhatItCannotReadWithAnErrorAndGoesOn) {
  TestClient client = start().client();
  EXPECT_THAT(client.ask(R"({"request":"shwo"})"),
              HasSubstr(R"(\"shwo\" is unknown here; expected one of show, audit,)"));
  EXPECT_THAT(client.ask(R"({"updat":[]})"), HasSubstr(R"(did you mean \"update\"?)"));
  EXPECT_THAT(client.ask(std::string("\0\xff\x01\"{[", 6)), StartsWith(R"({"line":3,"error":")"));
  EXPECT_THAT(client.ask(R"({"time":5})"), HasSubstr("the clock of an agent is the real one"));
  EXPECT_THAT(client.ask(R"({"delete":[")" + kWeb + R"(/match/src-ip"]})"),
              HasSubstr("nothing to delete at /vela-l3:policy-source"));
  EXPECT_EQ(client.ask("{}"), R"({"line":6})");
}

TEST_F(AgentAnswers, LinesWithEitherEndAndCountsBlankOnes) {
  TestClient client = start().client();
  EXPECT_EQ(client.ask("{}\r\n\r\n\n  \n{}"), R"({"line":1})");
  EXPECT_EQ(client.line(), R"({"line":5})");
}

TEST_F(AgentAnswers, WhyAnEntryIsInVersion2) {
  TestClient client = start().client();
  EXPECT_THAT(client.ask(R"({"request":"explain","path":")" + kWeb + "\"}"),
              AllOf(StartsWith(R"({"line":1,"explain":{"path":")" + kWeb +
                               R"(","in-version-2":true,"steps":[{"level":"tree",)"),
                    HasSubstr(R"("verdict":"is in version 2: version 1 has it, and )")));
  EXPECT_THAT(client.ask(R"({"request":"explain","path":"/vela-l3:policy-source"})"),
              StartsWith(R"({"line":2,"error":"which device is meant?)"));
  const Outcome run = runVpm({"ctl", "--socket", agent_->socket(), "explain", kWeb});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.out, HasSubstr("\n  [x] perOriginSm web: keeps it up to date\n"));
  EXPECT_EQ(runVpm({"explain", kWeb, "--socket", agent_->socket()}).out, run.out);
}

TEST_F(AgentAnswers, StopAndEnds) {
  TestClient client = start().client();
  client.send("{\"request\":\"stop\"}\n{}\n");
  EXPECT_EQ(client.line(), R"({"line":1,"stopping":true})");
  EXPECT_EQ(client.line(), "(end)");
  EXPECT_EQ(agent_->exitCode(), 0);
  EXPECT_THAT(agent_->said(), HasSubstr("vpm: stopped by a client\n"));
}

}  // namespace
}  // namespace HostTests
