// An agent that goes on after a restart.

#include <sys/resource.h>

#include <filesystem>

#include "host/agent/AgentTest.h"

namespace HostTests {
namespace {

using testing::HasSubstr;
using testing::Not;

class AgentState : public Agent {
 protected:
  RunningAgent& startWithState(const std::function<void()>& prepare = {}) {
    return start({"--state", folder_.path("state")}, prepare);
  }
  static std::string tagsIn(TestClient& client) {
    const std::string answer = client.ask(kShowTags);
    const std::string name = R"("tags":")";
    const std::size_t begin = answer.find(name) + name.size();
    return answer.substr(begin, answer.find('"', begin) - begin);
  }
};

TEST_F(AgentState, HasWhatWasAcknowledgedWhenItWasKilled) {
  TestClient client = startWithState().client();
  std::string lines;
  for (int i = 1; i <= 100; ++i) {
    lines += update(kWeb + "/tags", "\"t" + std::to_string(i) + "\"") + "\n";
  }
  client.send(lines);
  for (int i = 1; i <= 100; ++i) {
    ASSERT_EQ(client.line(), "{\"line\":" + std::to_string(i) + "}");
  }
  agent_->signal(SIGKILL);
  agent_->exitCode();
  TestClient again = startWithState().client();
  EXPECT_EQ(tagsIn(again), "t100");
  EXPECT_THAT(agent_->said(), HasSubstr("vpm: loaded the state in " + folder_.path("state") +
                                        ": 1 policy set, 0 service devices, 1 monitor record\n"));
  EXPECT_THAT(again.ask(R"({"request":"audit"})"), HasSubstr(R"("equal":true)"));
}

TEST_F(AgentState, GoesOnAfterAnOrderlyStop) {
  TestClient client = startWithState().client();
  client.ask(update(kWeb + "/tags", R"("kept")"));
  EXPECT_EQ(agent_->stop(), 0);
  TestClient again = startWithState().client();
  EXPECT_EQ(tagsIn(again), "kept");
}

TEST_F(AgentState, AppliesWhatWasEditedInTheDocumentsMeanwhileAndNothingElse) {
  TestClient client = startWithState().client();
  client.ask(update(kWeb + "/tags", R"("kept")"));
  EXPECT_EQ(agent_->stop(), 0);
  std::string edited = kFirewall;
  edited.replace(edited.find("10.1.0.0/16"), 11, "10.7.0.0/16");
  agent_.emplace(folder_, std::vector<std::string>{"--state", folder_.path("state"), "--config",
                                                   folder_.write("c.json", edited)});
  TestClient again = agent_->client();
  EXPECT_EQ(tagsIn(again), "kept");
  const std::string answer = again.ask(R"({"request":"show"})");
  EXPECT_THAT(answer, HasSubstr("10.7.0.0/16"));
  EXPECT_THAT(answer, Not(HasSubstr("10.1.0.0/16")));
}

TEST_F(AgentState, KeepsWhatAReloadHasApplied) {
  TestClient client = startWithState().client();
  std::string edited = kFirewall;
  edited.replace(edited.find("10.1.0.0/16"), 11, "10.7.0.0/16");
  folder_.write("c.json", edited);
  EXPECT_EQ(client.ask(R"({"request":"reload"})"), R"({"line":1,"changes":1})");
  EXPECT_EQ(client.ask(R"({"delete":[")" + kWeb + R"("]})"), R"({"line":2})");
  agent_->signal(SIGKILL);
  agent_->exitCode();
  agent_.emplace(folder_, std::vector<std::string>{"--state", folder_.path("state"), "--config",
                                                   folder_.path("c.json")});
  TestClient again = agent_->client();
  EXPECT_THAT(again.ask(R"({"request":"show"})"), Not(HasSubstr("10.")));
  EXPECT_TRUE(agent_->said("vpm: read the documents again: nothing differs"));
}

TEST_F(AgentState, RefusesWhatItCannotWriteDownAndGoesOn) {
  constexpr rlim_t kLargestFile = 16'000;
  TestClient client = startWithState([] {
                        const rlimit small{kLargestFile, kLargestFile};
                        ::setrlimit(RLIMIT_FSIZE, &small);
                      }).client();
  std::string last;
  std::string answer;
  for (int i = 0; i < 100 && answer.find("error") == std::string::npos; ++i) {
    const std::string tags = std::to_string(i) + std::string(500, 'x');
    answer = client.ask(update(kWeb + "/tags", '"' + tags + '"'));
    last = answer.find("error") == std::string::npos ? tags : last;
  }
  EXPECT_THAT(answer, HasSubstr("File too large"));
  EXPECT_EQ(tagsIn(client), last);
  agent_->signal(SIGKILL);
  agent_->exitCode();
  TestClient again = startWithState().client();
  EXPECT_EQ(tagsIn(again), last);
}

TEST_F(AgentState, BelongsToOneAgentAtATime) {
  startWithState().client();
  const Outcome second =
      runVpm({"agent", "--state", folder_.path("state"), "--listen", folder_.path("other")});
  EXPECT_EQ(second.exitCode, 3);
  EXPECT_FALSE(std::filesystem::exists(folder_.path("other")));
}

}  // namespace
}  // namespace HostTests
