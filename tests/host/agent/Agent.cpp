// The life of an agent: starts, signals, ends.

#include "host/agent/AgentTest.h"

namespace HostTests {
namespace {

using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

/// A socket to which an agent says how it is.
class Manager {
 public:
  explicit Manager(const std::string& name)
      : socket_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address = Host::socketAddress(name);
    socklen_t size = sizeof address;
    if (name.starts_with('@')) {
      address.sun_path[0] = '\0';
      size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    }
    ::bind(socket_.number(), reinterpret_cast<const sockaddr*>(&address), size);
  }
  std::string hears() const {
    pollfd wanted{socket_.number(), POLLIN, 0};
    char text[100];
    const ssize_t got =
        ::poll(&wanted, 1, 20'000) == 1 ? ::recv(socket_.number(), text, sizeof text, 0) : 0;
    return {text, static_cast<std::size_t>(std::max<ssize_t>(got, 0))};
  }

 private:
  Host::Descriptor socket_;
};

class AgentLife : public Agent {};

TEST_F(AgentLife, SaysInOneLineEachWhatItHasLoadedWhereItListensAndWhyItEnds) {
  start().client();
  EXPECT_EQ(agent_->stop(), 0);
  EXPECT_EQ(agent_->said(),
            "vpm: loaded 1 document: 1 policy set, 0 service devices, 1 monitor record\n"
            "vpm: listening on " +
                agent_->socket() + "\nvpm: stopped by SIGTERM\n");
}

TEST_F(AgentLife, EndsUponSigintToo) {
  start().client();
  agent_->signal(SIGINT);
  EXPECT_EQ(agent_->exitCode(), 0);
  EXPECT_THAT(agent_->said(), EndsWith("vpm: stopped by SIGINT\n"));
}

TEST_F(AgentLife, TellsTheServiceManagerWhenItIsReadyAndWhenItStops) {
  for (const std::string& name :
       {folder_.path("manager"), "@vpm-test-" + std::to_string(::getpid())}) {
    const Manager manager(name);
    start({}, [&] { ::setenv("NOTIFY_SOCKET", name.c_str(), 1); });
    EXPECT_EQ(manager.hears(), "READY=1");
    EXPECT_EQ(TestClient(agent_->socket()).ask("{}"), R"({"line":1})");
    EXPECT_EQ(agent_->stop(), 0);
    EXPECT_EQ(manager.hears(), "STOPPING=1");
    agent_.reset();
  }
}

TEST_F(AgentLife, DoesNotBeginWithAWrongDocument) {
  const std::string bad = folder_.write("bad.json", R"({"vela-l3:policy-source": {"policy": 1}})");
  const Outcome outcome =
      runVpm({"agent", "--listen", folder_.path("s"), "--config", bad, folder_.path("missing")});
  EXPECT_EQ(outcome.exitCode, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, StartsWith(bad + ":1:28: error: "));
  EXPECT_THAT(outcome.err, HasSubstr("missing: error: "));
  EXPECT_THAT(outcome.err, EndsWith("vpm: 2 errors; the agent was not started\n"));
  EXPECT_FALSE(std::filesystem::exists(folder_.path("s")));
}

TEST_F(AgentLife, TakesNoStandardInputAndWatchesNothingWithoutDocuments) {
  const Outcome input = runVpm({"agent", "--listen", folder_.path("s"), "--config", "-"});
  EXPECT_EQ(input.exitCode, 2);
  EXPECT_THAT(input.err, HasSubstr("give it files and no \"-\""));
  const Outcome watch = runVpm({"agent", "--listen", folder_.path("s"), "--watch"});
  EXPECT_EQ(watch.exitCode, 2);
  EXPECT_THAT(watch.err, HasSubstr("name them with --config"));
}

TEST_F(AgentLife, StampsVersion2WithTheTimeOfDay) {
  TestClient client = start().client();
  const auto before = std::time(nullptr);
  client.ask(update(kWeb + "/tags", R"("a")"));
  const std::string answer =
      client.ask(R"({"request":"show","path":"/vela-l3v2:policy-source/policy-set[device-name=fw1])"
                 R"(/policy[net-vrf-name=net-red]/timestamp"})");
  const std::string name = R"("timestamp":")";
  const double stamp = std::stod(answer.substr(answer.find(name) + name.size()));
  EXPECT_GE(stamp, static_cast<double>(before));
  EXPECT_LE(stamp, static_cast<double>(std::time(nullptr) + 1));
}

TEST_F(AgentLife, WritesVersion2AndTheRecordsAsTheyWereWhenItStops) {
  start({"--output", folder_.path("out")}).client().ask(update(kWeb + "/tags", R"("last")"));
  EXPECT_FALSE(std::filesystem::exists(folder_.path("out")));
  EXPECT_EQ(agent_->stop(), 0);
  EXPECT_THAT(folder_.read("out"), StartsWith(R"({"line":"end","v2":{)"));
  EXPECT_THAT(folder_.read("out"), HasSubstr(R"("tags":"last")"));
  EXPECT_THAT(folder_.read("out"), HasSubstr(R"("status":{"vela-policy-monitor:status")"));
}

TEST_F(AgentLife, RecordsALogWhoseReplayMakesTheSame) {
  start({"--record", folder_.path("log"), "--output", folder_.path("out")});
  TestClient client = agent_->client();
  client.ask(update(kWeb + "/tags", R"("a")"));
  client.ask(R"({"delete":[")" + kWeb + R"(/match/src-ip"]})");
  client.ask(update(kRed + "/rule[priority='15000']", R"({"origin":[{"name":"b"}]})"));
  EXPECT_EQ(agent_->stop(), 0);
  const std::string said = agent_->said();
  const std::string before = "--time ";
  const std::size_t begin = said.find(before) + before.size();
  const std::string time = said.substr(begin, said.find('"', begin) - begin);
  const Outcome again =
      runVpm({"replay", "--config", folder_.path("c.json"), "--time", time, folder_.path("log")});
  EXPECT_EQ(again.exitCode, 0);
  EXPECT_EQ(again.out, folder_.read("out"));
  EXPECT_THAT(again.out, HasSubstr(R"("tags":"a")"));
}

TEST_F(AgentLife, WritesATextTrace) {
  start({"--trace", folder_.path("trace"), "--trace-levels", "6"})
      .client()
      .ask(update(kWeb + "/match/dst-ip[.='10.2.0.0/16']", R"("10.2.0.0/16")"));
  EXPECT_EQ(agent_->stop(), 0);
  EXPECT_THAT(folder_.read("trace"), HasSubstr("10.2.0.0/16"));
}

}  // namespace
}  // namespace HostTests
