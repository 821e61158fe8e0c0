// Edits of the documents, while the agent runs.

#include <filesystem>

#include "host/agent/AgentTest.h"

namespace HostTests {
namespace {

using testing::HasSubstr;
using testing::Not;

/// The document with other rules in the place of its rule.
std::string document(const std::string& rules) {
  return R"({"vela-l3:policy-source": {"policy-set": [{"device-name": "fw1", "policy": [
    {"vrf-name": "red", "rule": [)" +
         rules + R"(]}]}]},
  "vela-policy-monitor:status": {"device-policy-list": [{"device-name": "fw1",
    "net-vrf-name-by-vrf": [{"vrf-name": "red", "net-vrf-name": "net-red"}]}]}
})";
}
std::string rule(int priority, const std::string& tags) {
  return R"({"priority": )" + std::to_string(priority) +
         R"(, "origin": [{"name": "web", "tags": ")" + tags +
         R"(", "match": {"dst-ip": ["10.1.0.0/16"]}}]})";
}

class AgentDocuments : public Agent {
 protected:
  /// Saves as editors do: a new file takes the place of the old one.
  void save(const std::string& text) const {
    folder_.write("c.json~", text);
    std::filesystem::rename(folder_.path("c.json~"), folder_.path("c.json"));
  }
  static bool hasTags(TestClient& client, const std::string& tags) {
    return client.ask(kShowTags).find("\"tags\":\"" + tags + "\"") != std::string::npos;
  }
};

TEST_F(AgentDocuments, AreFollowedWhenAnEditorReplacesThem) {
  TestClient client = start({"--watch"}).client();
  save(document(rule(20000, "edited")));
  EXPECT_TRUE(eventually([&] { return hasTags(client, "edited"); }));
  // The new file is followed like the old one, also when it is written in place.
  save(document(rule(20000, "again")));
  EXPECT_TRUE(eventually([&] { return hasTags(client, "again"); }));
  folder_.write("c.json", document(rule(20000, "in place")));
  EXPECT_TRUE(eventually([&] { return hasTags(client, "in place"); }));
  EXPECT_EQ(client.ask(R"({"request":"audit"})").find(R"("differences":[])") != std::string::npos,
            true);
}

TEST_F(AgentDocuments, AreFollowedBehindASymbolicLink) {
  const Folder elsewhere;
  elsewhere.write("real.json", kFirewall);
  std::filesystem::create_symlink(elsewhere.path("real.json"), folder_.path("link.json"));
  agent_.emplace(folder_,
                 std::vector<std::string>{"--watch", "--config", folder_.path("link.json")});
  TestClient client = agent_->client();
  elsewhere.write("new", document(rule(20000, "edited")));
  std::filesystem::rename(elsewhere.path("new"), elsewhere.path("real.json"));
  EXPECT_TRUE(eventually([&] { return hasTags(client, "edited"); }));
}

TEST_F(AgentDocuments, AreFollowedWhenALinkOnTheWayToThemIsTurnedOver) {
  const auto version = [this](const std::string& name, const std::string& text) {
    std::filesystem::create_directory(folder_.path(name));
    folder_.write(name + "/c.json", text);
  };
  const auto turnOver = [this](const std::string& name) {
    std::filesystem::create_symlink(name, folder_.path("next"));
    std::filesystem::rename(folder_.path("next"), folder_.path("now"));
  };
  version("v1", kFirewall);
  turnOver("v1");
  std::filesystem::create_symlink("now/c.json", folder_.path("link.json"));
  agent_.emplace(folder_,
                 std::vector<std::string>{"--watch", "--config", folder_.path("link.json")});
  TestClient client = agent_->client();
  version("v2", document(rule(20000, "second")));
  turnOver("v2");
  EXPECT_TRUE(eventually([&] { return hasTags(client, "second"); }));
  // What it leads to now is followed, and so is the next turn.
  folder_.write("v2/c.json", document(rule(20000, "in place")));
  EXPECT_TRUE(eventually([&] { return hasTags(client, "in place"); }));
  version("v3", document(rule(20000, "third")));
  turnOver("v3");
  EXPECT_TRUE(eventually([&] { return hasTags(client, "third"); }));
  // It may lead nowhere for a while, or be removed and made anew.
  turnOver("nowhere/at/all");
  ASSERT_TRUE(agent_->says("; the agent goes on as before\n"));
  std::filesystem::remove(folder_.path("now"));
  std::filesystem::create_symlink("v2", folder_.path("now"));
  EXPECT_TRUE(eventually([&] { return hasTags(client, "in place"); }));
}

TEST_F(AgentDocuments, AreReadAgainUponSighupAndUponRequest) {
  TestClient client = start().client();
  save(document(rule(20000, "hup")));
  agent_->signal(SIGHUP);
  EXPECT_TRUE(eventually([&] { return hasTags(client, "hup"); }));
  save(document(rule(20000, "asked")));
  TestClient other = agent_->client();
  EXPECT_EQ(other.ask(R"({"request":"reload"})"), R"({"line":1,"changes":1})");
  EXPECT_TRUE(hasTags(client, "asked"));
  EXPECT_EQ(other.ask(R"({"request":"reload"})"), R"({"line":2,"changes":0})");
  EXPECT_TRUE(agent_->said("vpm: read the documents again: deletions: 0, writes: 1\n"));
  EXPECT_TRUE(agent_->said("vpm: read the documents again: nothing differs\n"));
}

TEST_F(AgentDocuments, AreNotReadAgainByThemselvesWithoutWatch) {
  TestClient client = start().client();
  save(document(rule(20000, "edited")));
  EXPECT_TRUE(hasTags(client, ""));
  EXPECT_EQ(client.ask(R"({"request":"reload"})"), R"({"line":2,"changes":1})");
}

TEST_F(AgentDocuments, WithAMistakeAreReportedAndChangeNothing) {
  TestClient client = start({"--watch"}).client();
  client.ask(update(kWeb + "/tags", R"("before")"));
  save(document(rule(9, "wrong") + "," + rule(20000, "wrong too")));
  ASSERT_TRUE(agent_->says("vpm: 1 error; the agent goes on as before\n"));
  EXPECT_TRUE(agent_->said(folder_.path("c.json") + ":2:47: error: "));
  EXPECT_TRUE(hasTags(client, "before"));
  const std::string answer = client.ask(R"({"request":"reload"})");
  EXPECT_THAT(answer, HasSubstr(R"("error":")" + folder_.path("c.json") + ":2:47: error: "));
  EXPECT_THAT(answer, Not(HasSubstr("\\n")));
  // Put right, it is compared with what was good last.
  save(document(rule(20001, "right")));
  EXPECT_TRUE(eventually([&] {
    return client.ask(R"({"request":"show"})").find(R"("tags":"right")") != std::string::npos;
  }));
  EXPECT_FALSE(hasTags(client, "before"));
}

TEST_F(AgentDocuments, ThatAreGoneChangeNothing) {
  TestClient client = start().client();
  std::filesystem::remove(folder_.path("c.json"));
  EXPECT_THAT(client.ask(R"({"request":"reload"})"), HasSubstr("c.json: error: "));
  EXPECT_THAT(client.ask(R"({"request":"show"})"), HasSubstr("20000"));
}

TEST_F(AgentDocuments, LeaveAloneWhatTheSocketHasChangedAndTheEditHasNot) {
  TestClient client = start().client();
  EXPECT_EQ(client.ask(update(kWeb + "/tags", R"("mine")")), R"({"line":1})");
  EXPECT_EQ(client.ask(update(kRed + "/rule[priority='15000']", R"({"origin":[{"name":"own"}]})")),
            R"({"line":2})");
  save(document(R"({"priority": 20000, "origin": [{"name": "web", "log": true,
      "match": {"dst-ip": ["10.1.0.0/16"]}}]})"));
  EXPECT_EQ(client.ask(R"({"request":"reload"})"), R"({"line":3,"changes":1})");
  const std::string answer = client.ask(R"({"request":"show"})");
  EXPECT_THAT(answer, HasSubstr(R"("name":"own")"));
  EXPECT_THAT(answer, HasSubstr(R"("tags":"mine")"));
  EXPECT_THAT(answer, HasSubstr(R"("log-enabled":true)"));
}

TEST_F(AgentDocuments, DeleteWhatIsGoneAlreadyWithoutAnError) {
  TestClient client = start().client();
  EXPECT_EQ(client.ask(R"({"delete":[")" + kWeb + R"("]})"), R"({"line":1})");
  save(document(""));
  EXPECT_EQ(client.ask(R"({"request":"reload"})"), R"({"line":2,"changes":1})");
  EXPECT_THAT(client.ask(R"({"request":"show"})"), Not(HasSubstr("20000")));
}

}  // namespace
}  // namespace HostTests
