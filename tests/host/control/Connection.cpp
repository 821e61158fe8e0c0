#include "control/Connection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/control/FakeAgent.h"

namespace HostTests {
namespace {

using testing::HasSubstr;

TEST(Connection, SaysWhichSocketWasTriedAndWhatToDoWhenThereIsNone) {
  const Folder folder;
  const std::string socket = folder.path("none.sock");
  const Outcome outcome = runVpm({"ctl", "show", "--socket", socket});
  EXPECT_EQ(outcome.exitCode, 3);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "vpm: error: no agent at " + socket +
                             ": there is no such socket; start one with \"vpm agent --config DOC "
                             "--listen " +
                             socket + "\", or say with --socket where it listens\n");
}

TEST(Connection, TellsAnAgentThatHasEndedFromAFileThatIsNoSocket) {
  const Folder folder;
  const std::string file = folder.write("file", "");
  EXPECT_THAT(runVpm({"ctl", "show", "--socket", file}).err, HasSubstr("that is no socket"));
  const std::string left = folder.path("left.sock");
  {
    const Host::Descriptor ended(::socket(AF_UNIX, SOCK_STREAM, 0));
    const sockaddr_un address = Host::socketAddress(left);
    ASSERT_EQ(::bind(ended.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
              0);
  }
  EXPECT_THAT(runVpm({"ctl", "show", "--socket", left}).err, HasSubstr("the agent has ended"));
}

TEST(Connection, TakesTheSocketBeforeAndBehindTheCommand) {
  const FakeAgent agent(always(R"(,"stopping":true)"));
  EXPECT_EQ(runVpm({"ctl", "--socket", agent.socket(), "stop"}).exitCode, 0);
  EXPECT_EQ(runVpm({"ctl", "stop", "--socket", agent.socket()}).exitCode, 0);
}

TEST(Connection, FailsWhenTheAgentGoesBeforeItHasAnswered) {
  const FakeAgent agent([](std::size_t, const std::string&) {
    return std::string(R"({"line":1,"da)") + FakeAgent::kClose;
  });
  const Outcome outcome = agent.ctl({"show"});
  EXPECT_EQ(outcome.exitCode, 3);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, HasSubstr("the agent at " + agent.socket() + " is gone: "));
}

TEST(Connection, FailsWhenTheOtherSideIsNoAgent) {
  const FakeAgent agent([](std::size_t, const std::string&) { return "HTTP/1.1 400\n"; });
  const Outcome outcome = agent.ctl({"show"});
  EXPECT_EQ(outcome.exitCode, 3);
  EXPECT_THAT(outcome.err, HasSubstr("no agent: it said \"HTTP/1.1 400\""));
}

TEST(Connection, ReportsWhatTheAgentRefuses) {
  const FakeAgent agent(always(R"(,"error":"site.json cannot be read")"));
  const Outcome outcome = agent.ctl({"reload"});
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "vpm: error: site.json cannot be read\n");
}

}  // namespace
}  // namespace HostTests
