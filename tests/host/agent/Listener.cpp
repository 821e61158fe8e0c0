// Who may listen where.

#include <sys/stat.h>

#include "host/agent/AgentTest.h"

namespace HostTests {
namespace {

using testing::HasSubstr;

class AgentListener : public Agent {
 protected:
  /// A socket file that nobody listens at any more, as a killed agent leaves it.
  void leaveStaleSocket() const {
    const Host::Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const sockaddr_un address = Host::socketAddress(folder_.path(RunningAgent::kSocket));
    ::bind(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
  }
  bool socketIsThere() const {
    return std::filesystem::exists(folder_.path(RunningAgent::kSocket));
  }
};

TEST_F(AgentListener, IsOpenToItsUserAloneWhateverTheUmask) {
  start({}, [] { ::umask(0); }).client();
  struct stat found {};
  ASSERT_EQ(::stat(agent_->socket().c_str(), &found), 0);
  EXPECT_TRUE(S_ISSOCK(found.st_mode));
  EXPECT_EQ(found.st_mode & 07777U, 0600U);
}

TEST_F(AgentListener, RemovesItsSocketAtTheEnd) {
  start().client();
  EXPECT_EQ(agent_->stop(), 0);
  EXPECT_FALSE(socketIsThere());
}

TEST_F(AgentListener, LeavesWhatSomebodyElseHasPutThere) {
  start().client();
  std::filesystem::remove(agent_->socket());
  folder_.write(RunningAgent::kSocket, "not ours");
  EXPECT_EQ(agent_->stop(), 0);
  EXPECT_EQ(folder_.read(RunningAgent::kSocket), "not ours");
}

TEST_F(AgentListener, TakesOverWhatAKilledAgentHasLeft) {
  leaveStaleSocket();
  ASSERT_TRUE(socketIsThere());
  EXPECT_EQ(start().client().ask("{}"), R"({"line":1})");
  agent_->signal(SIGKILL);
  EXPECT_EQ(agent_->exitCode(), -SIGKILL);
  ASSERT_TRUE(socketIsThere());
  EXPECT_EQ(start().client().ask("{}"), R"({"line":1})");
}

TEST_F(AgentListener, KeepsASecondAgentAway) {
  TestClient client = start().client();
  const Outcome second = runVpm({"agent", "--listen", agent_->socket()});
  EXPECT_EQ(second.exitCode, 3);
  EXPECT_THAT(second.err,
              HasSubstr("an agent listens here already; stop it with \"vpm ctl --socket " +
                        agent_->socket() + " stop\""));
  EXPECT_EQ(client.ask("{}"), R"({"line":1})");
}

TEST_F(AgentListener, OfTwoThatStartAtOnceOneListens) {
  leaveStaleSocket();
  const std::vector<std::string> config{"--config", folder_.write("c.json", kFirewall)};
  RunningAgent one(folder_, config);
  RunningAgent two(folder_, config);
  std::optional<int> ended;
  ASSERT_TRUE(eventually([&] {
    ended = one.ended();
    ended = ended ? ended : two.ended();
    return ended.has_value();
  }));
  EXPECT_EQ(ended, 3);
  EXPECT_TRUE(one.said("an agent listens here already"));
  ASSERT_TRUE(one.says("listening on"));
  EXPECT_EQ(TestClient(folder_.path(RunningAgent::kSocket)).ask("{}"), R"({"line":1})");
}

TEST_F(AgentListener, DoesNotTouchWhatIsNoSocket) {
  const std::string file = folder_.write("file", "text");
  const Outcome outcome = runVpm({"agent", "--listen", file});
  EXPECT_EQ(outcome.exitCode, 3);
  EXPECT_THAT(outcome.err, HasSubstr(file + " is there and is no socket; remove it"));
  EXPECT_EQ(folder_.read("file"), "text");
}

TEST_F(AgentListener, SaysWhyItsPathCannotBeUsed) {
  const Outcome missing = runVpm({"agent", "--listen", folder_.path("no/where")});
  EXPECT_EQ(missing.exitCode, 3);
  EXPECT_THAT(missing.err, HasSubstr("the socket cannot be made: No such file or directory"));
  const Outcome tooLong = runVpm({"agent", "--listen", folder_.path(std::string(200, 'x'))});
  EXPECT_EQ(tooLong.exitCode, 3);
  EXPECT_THAT(tooLong.err, HasSubstr("is too long for a socket"));
}

}  // namespace
}  // namespace HostTests
