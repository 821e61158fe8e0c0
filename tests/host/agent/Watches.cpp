#include "agent/Watches.h"

#include "host/agent/AgentTest.h"

namespace HostTests {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

class AgentWatch : public Agent {
 protected:
  /// The lines up to the one that says that the first picture is whole, without that.
  static std::vector<std::string> picture(TestClient& client) {
    std::vector<std::string> lines;
    for (;;) {
      lines.push_back(client.line());
      if (lines.back().starts_with('(') ||
          lines.back().find("\"synchronized\":true") != std::string::npos) {
        return lines;
      }
    }
  }
};

TEST_F(AgentWatch, TellsWhatThereIsAndThenEachChange) {
  TestClient watching = start().client();
  watching.send(
      "\n"
      R"({"request":"watch","path":")" +
      kWebV2 + "\"}\n");
  const auto first = picture(watching);
  ASSERT_EQ(first.size(), 7U);
  EXPECT_THAT(first[0], MatchesRegex(R"(\{"line":2,"time":[0-9.]+,"event":"add","path":".*)"));
  EXPECT_THAT(first[0], HasSubstr(R"("path":")" + kWebV2 + "\"}"));
  EXPECT_THAT(first[5], HasSubstr(kWebV2 + R"(/match/dst-ip[.='10.1.0.0/16']"})"));
  EXPECT_EQ(first[6], R"({"line":2,"synchronized":true})");

  TestClient other(agent_->socket());
  EXPECT_EQ(other.ask(update(kWeb + "/tags", "\"new\"")), R"({"line":1})");
  EXPECT_THAT(watching.line(),
              AllOf(StartsWith(R"({"line":2,"time":)"),
                    HasSubstr(R"("event":"set","path":")" + kWebV2 + R"(/tags","value":"new"})")));
  EXPECT_EQ(watching.ask(R"({"delete":[")" + kWeb + "\"]}").substr(0, 9), R"({"line":2)");
  EXPECT_THAT(watching.line(), HasSubstr(R"("event":"remove","path":")" + kWebV2 + "\"}"));
  EXPECT_EQ(watching.line(), R"({"line":3})");
}

TEST_F(AgentWatch, GoesOnWhenTheClientSendsNothingMoreAndEndsWithIt) {
  TestClient watching = start().client();
  watching.send(R"({"request":"watch"})"
                "\n");
  EXPECT_EQ(picture(watching).size(), 14U);
  watching.sendsNoMore();
  TestClient other(agent_->socket());
  EXPECT_THAT(other.ask(R"({"request":"stats"})"), HasSubstr(R"("watches":1)"));
  other.ask(R"({"control":"stop","tree":"policy"})");
  EXPECT_THAT(watching.line(), HasSubstr(R"("event":"remove")"));
  watching.leave();
  EXPECT_TRUE(eventually([&] {
    return other.ask(R"({"request":"stats"})").find(R"("watches":0)") != std::string::npos;
  }));
}

TEST_F(AgentWatch, SaysWhatCannotBeWatched) {
  TestClient client = start().client();
  EXPECT_THAT(client.ask(R"({"request":"watch","path":"/vela-l3:policy-source"})"),
              AllOf(StartsWith(R"({"line":1,"error":"nothing can be watched at )"),
                    HasSubstr("/vela-l3:policy-source: it is not the translation")));
  EXPECT_EQ(client.ask(update(kWeb + "/tags", "\"on\"")), R"({"line":2})");
}

TEST_F(AgentWatch, LetsGoOfAClientThatReadsTooSlowly) {
  TestClient slow = start().client();
  slow.send(R"({"request":"watch"})"
            "\n");
  TestClient busy(agent_->socket());
  const std::string text(4U << 20U, 'x');
  for (int i = 0; i < 8; ++i) {
    busy.ask(update(kWeb + "/tags", "\"" + std::to_string(i) + text + "\""));
  }
  EXPECT_THAT(busy.ask(R"({"request":"stats"})"), HasSubstr(R"("watches":0)"));
  std::string last;
  for (std::string line = slow.line(); line != "(end)"; line = slow.line()) {
    last = line;
  }
  EXPECT_EQ(last, R"({"line":1,"error":"this client reads too slowly to keep up with the changes; )"
                  R"(connect again for a new first picture"})");
}

}  // namespace
}  // namespace HostTests
