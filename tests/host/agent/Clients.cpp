// How the agent gets on with those who talk to it.

#include <sys/resource.h>

#include "host/agent/AgentTest.h"

namespace HostTests {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// So many lines that do something, of which each says which one it is.
std::string lines(int count) {
  std::string all;
  for (int i = 1; i <= count; ++i) {
    all += update(kWeb + "/tags", "\"t" + std::to_string(i) + "\"") + "\n";
  }
  return all;
}

class AgentClients : public Agent {
 protected:
  /// Whether the agent has this many clients, the one that asks among them.
  static bool hasClients(TestClient& client, int count) {
    const std::string wanted = "\"clients\":" + std::to_string(count) + ",";
    return eventually(
        [&] { return client.ask(R"({"request":"stats"})").find(wanted) != std::string::npos; });
  }
  static bool hasTags(TestClient& client, const std::string& tags) {
    return client.ask(kShowTags).find("\"tags\":\"" + tags + "\"") != std::string::npos;
  }
};

TEST_F(AgentClients, AreAnsweredInTheOrderOfTheirLines) {
  constexpr int kLines = 10'000;
  TestClient client = start().client();
  client.send(lines(kLines));
  for (int i = 1; i <= kLines; ++i) {
    ASSERT_EQ(client.line(), "{\"line\":" + std::to_string(i) + "}");
  }
  EXPECT_TRUE(hasTags(client, "t" + std::to_string(kLines)));
}

TEST_F(AgentClients, AreServedSideBySide) {
  constexpr int kClients = 8;
  constexpr int kLines = 200;
  start().client();
  std::vector<TestClient> clients;
  for (int i = 0; i < kClients; ++i) {
    clients.push_back(agent_->client());
  }
  for (const TestClient& each : clients) {
    each.send(lines(kLines));
  }
  for (TestClient& each : clients) {
    for (int i = 1; i <= kLines; ++i) {
      ASSERT_EQ(each.line(), "{\"line\":" + std::to_string(i) + "}");
    }
  }
  EXPECT_TRUE(hasClients(clients.front(), kClients));
  EXPECT_THAT(clients.front().ask(R"({"request":"stats"})"),
              HasSubstr("\"applied\":" + std::to_string(kClients * kLines)));
}

TEST_F(AgentClients, DoNotStarveBesideOneThatFloods) {
  start().client();
  TestClient flood = agent_->client();
  TestClient other = agent_->client();
  constexpr int kLines = 5'000;
  flood.send(lines(kLines));
  EXPECT_EQ(other.ask("{}"), R"({"line":1})");
  for (int i = 1; i <= kLines; ++i) {
    ASSERT_EQ(flood.line(), "{\"line\":" + std::to_string(i) + "}");
  }
}

TEST_F(AgentClients, ThatDoNotReadAreNotReadFromUntilTheyDo) {
  start().client();
  TestClient other = agent_->client();
  TestClient slow = agent_->client();
  const std::string large(1 << 18, 'x');
  ASSERT_EQ(other.ask(update(kWeb + "/tags", '"' + large + '"')), R"({"line":1})");
  const std::string show = "{\"request\":\"show\"}\n";
  const std::size_t oneAnswer = other.ask(R"({"request":"show"})").size();
  std::size_t sent = 0;
  const auto sendAsMuchAsGoes = [&] {
    std::size_t lines = 0;
    while (::send(slow.descriptor(), show.data(), show.size(), MSG_NOSIGNAL | MSG_DONTWAIT) > 0) {
      ++lines;
    }
    sent += lines;
    return lines;
  };
  std::size_t waiting = 0;
  ASSERT_TRUE(eventually([&] {
    sendAsMuchAsGoes();
    const std::string statistics = other.ask(R"({"request":"stats"})");
    const std::string name = "\"waiting-output\":";
    waiting = std::stoul(statistics.substr(statistics.find(name) + name.size()));
    return waiting >= 16U << 20U;
  }));
  // The others are served meanwhile; what waits is bounded, and nothing more is taken.
  EXPECT_LE(waiting, (16U << 20U) + oneAnswer);
  sendAsMuchAsGoes();
  other.ask("{}");
  other.ask("{}");
  EXPECT_EQ(sendAsMuchAsGoes(), 0U);
}

TEST_F(AgentClients, ThatReadLateGetAllTheirAnswersInOrder) {
  constexpr int kLines = 2000;
  TestClient client = start().client();
  std::string all;
  for (int i = 0; i < kLines; ++i) {
    all += "{\"show\":[\"v2\",\"status\",\"stats\"]}\n";
  }
  client.send(all);
  client.sendsNoMore();
  for (int i = 1; i <= kLines; ++i) {
    ASSERT_THAT(client.line(), StartsWith("{\"line\":" + std::to_string(i) + ",\"v2\":{"));
  }
  EXPECT_EQ(client.line(), "(end)");
}

TEST_F(AgentClients, ThatVanishHaveDoneWhatTheySentAndNothingElse) {
  start().client();
  TestClient stays = agent_->client();
  TestClient vanishes = agent_->client();
  vanishes.send(lines(3) + update(kWeb + "/tags", R"("never")"));  // the last one has no end
  vanishes.leave();
  EXPECT_TRUE(eventually([&] { return hasTags(stays, "t3"); }));
  EXPECT_TRUE(hasClients(stays, 1));
  EXPECT_TRUE(hasTags(stays, "t3"));
}

TEST_F(AgentClients, ThatVanishBeforeTheirAnswersAreHarmless) {
  start().client();
  TestClient stays = agent_->client();
  for (int i = 0; i < 3; ++i) {
    TestClient vanishes = agent_->client();
    for (int j = 0; j < 2000; ++j) {
      vanishes.send("{\"request\":\"stats\"}\n");
    }
    vanishes.leave();
  }
  EXPECT_TRUE(hasClients(stays, 1));
}

TEST_F(AgentClients, ThatSendNothingMoreStillGetTheirAnswers) {
  TestClient client = start().client();
  client.send(lines(5) + "{\"half\"");
  client.sendsNoMore();
  for (int i = 1; i <= 5; ++i) {
    EXPECT_EQ(client.line(), "{\"line\":" + std::to_string(i) + "}");
  }
  EXPECT_EQ(client.line(), "(end)");
}

TEST_F(AgentClients, ThatSendALineWithoutEndAreToldAndLetGo) {
  start().client();
  TestClient client = agent_->client();
  const std::string piece(1 << 20, ' ');
  for (int i = 0; i < 66 && client.send(piece); ++i) {
  }
  EXPECT_THAT(client.line(), StartsWith(R"({"line":1,"error":"this line is longer than 67108864)"));
  EXPECT_EQ(client.line(), "(end)");
  TestClient other = agent_->client();
  EXPECT_TRUE(hasClients(other, 1));
}

TEST_F(AgentClients, ThatAreTooManyAreServedWhenOthersHaveLeft) {
  constexpr int kClients = 40;
  start({}, [] {
    const rlimit few{30, 30};
    ::setrlimit(RLIMIT_NOFILE, &few);
  });
  std::vector<TestClient> clients;
  clients.push_back(agent_->client());
  // Once before there are too many: the sanitizers need a descriptor to check a type they meet.
  EXPECT_EQ(clients.front().ask("{}"), R"({"line":1})");
  while (clients.size() < kClients) {
    clients.emplace_back(agent_->socket());
  }
  EXPECT_EQ(clients.front().ask("{}"), R"({"line":2})");
  clients.back().send("{}\n");
  ASSERT_TRUE(clients.back().isConnected());
  clients.erase(clients.begin() + 1, clients.end());
  TestClient late(agent_->socket());
  EXPECT_EQ(late.ask("{}"), R"({"line":1})");
  EXPECT_EQ(clients.front().ask("{}"), R"({"line":3})");
}

TEST_F(AgentClients, GetTheAnswersThatAreDueWhenTheAgentStops) {
  TestClient client = start().client();
  client.send("{}\n{\"request\":\"wait\",\"device\":\"none\"}\n");
  EXPECT_EQ(client.line(), R"({"line":1})");
  EXPECT_EQ(agent_->stop(), 0);
  EXPECT_EQ(client.line(), "(end)");
}

}  // namespace
}  // namespace HostTests
