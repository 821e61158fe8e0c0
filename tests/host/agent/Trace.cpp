// What an agent traces, and how that is changed while it runs.

#include <algorithm>

#include "host/agent/AgentTest.h"

namespace HostTests {
namespace {

using testing::HasSubstr;
using testing::Not;

class AgentTraces : public Agent {
 protected:
  std::string binary() const { return runVpm({"trace", folder_.path("bin")}).out; }
};

TEST_F(AgentTraces, WhatItWasToldToFromAnyClient) {
  start({"--trace", folder_.path("text"), "--trace-file", folder_.path("bin"), "--trace-levels",
         "none", "--trace-only", "vrf=red"});
  TestClient client = agent_->client();
  EXPECT_EQ(
      client.ask(R"({"request":"trace"})"),
      R"({"line":1,"trace":{"levels":"none","device":"","vrf":"red","rule":"","handler":""}})");
  client.ask(update(kWeb + "/tags", R"("a")"));
  EXPECT_EQ(folder_.read("text"), "");
  EXPECT_EQ(
      client.ask(R"({"request":"trace","levels":"8","device":"fw1","handler":"handleTags"})"),
      R"({"line":3,"trace":{"levels":"8","device":"fw1","vrf":"red","rule":"","handler":"handleTags"}})");
  client.ask(update(kWeb + "/tags", R"("b")"));
  const std::string text = folder_.read("text");
  EXPECT_THAT(text, HasSubstr(" handleTags: void VelaPolicyMonitor::PolicyTranslatePerOriginSm::"
                              "handleTags() policy: web\n"));
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1);
  EXPECT_EQ(binary(), text);
}

TEST_F(AgentTraces, TheSameAsBeforeWhenItIsToldSomethingWrong) {
  start();
  TestClient client = agent_->client();
  EXPECT_THAT(client.ask(R"({"request":"trace","levels":"6-8","rule":"5"})"),
              HasSubstr(R"("error":"\"5\" is no priority of a rule; expected 10000 to 30000")"));
  EXPECT_THAT(client.ask(R"({"request":"trace"})"), HasSubstr(R"("levels":"none")"));
}

TEST_F(AgentTraces, AndMeasuresWhatItsHandlersDo) {
  start();
  TestClient client = agent_->client();
  EXPECT_THAT(client.ask(R"({"request":"stats"})"),
              Not(HasSubstr(R"x("handler":"handleTags()","calls":2)x")));
  client.ask(update(kWeb + "/tags", R"("b")"));
  const std::string stats = client.ask(R"({"request":"stats"})");
  EXPECT_THAT(stats, HasSubstr(R"({"class":"VelaPolicyMonitor::PolicyTranslatePerOriginSm",)"
                               R"x("handler":"handleTags()","calls":2,"seconds":)x"));
  EXPECT_THAT(stats, HasSubstr(R"("postponed":)"));
}

TEST_F(AgentTraces, AndTellsOnceWhenItsTextTraceLosesLines) {
  start({"--trace", "/dev/full"});
  TestClient client = agent_->client();
  client.ask(update(kWeb + "/tags", R"("b")"));
  client.ask(update(kWeb + "/tags", R"("c")"));
  EXPECT_EQ(agent_->stop(), 0);
  const std::string said = agent_->said();
  const std::string lost = "vpm: /dev/full: lines of the trace that could not be written: ";
  EXPECT_THAT(said, HasSubstr(lost));
  EXPECT_THAT(said.substr(said.find(lost) + 1), Not(HasSubstr(lost)));
}

}  // namespace
}  // namespace HostTests
