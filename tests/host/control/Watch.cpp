#include "control/Watch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <csignal>
#include <cstdlib>

#include "host/control/FakeAgent.h"

namespace HostTests {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kChanges =
    R"({"line":1,"time":45296.25,"event":"add","path":"/a[n='x']"})"
    "\n"
    R"({"line":1,"synchronized":true})"
    "\n"
    R"({"line":1,"time":45297.0,"event":"set","path":"/a[n='x']/b","value":7})"
    "\n"
    R"({"line":1,"time":45298.5,"event":"remove","path":"/a[n='x']"})"
    "\n";

/// Says the changes, and a moment later interrupts the thread that made it.
class Interrupting {
 public:
  std::string operator()(std::size_t /*number*/, const std::string& /*line*/) const {
    thread_ = std::thread([client = client_] {
      ::usleep(100'000);
      ::pthread_kill(client, SIGINT);
    });
    return kChanges;
  }
  ~Interrupting() {
    if (thread_.joinable()) {
      thread_.join();
    }
  }

 private:
  const pthread_t client_ = ::pthread_self();
  mutable std::thread thread_;
};

class Watch : public testing::Test {
 protected:
  Watch() {
    ::setenv("TZ", "UTC", 1);
    ::tzset();
  }

  Interrupting interrupting_;
  FakeAgent agent_{std::ref(interrupting_)};
};

TEST_F(Watch, PrintsALinePerChangeUntilItIsInterrupted) {
  const Outcome outcome = agent_.ctl({"watch"});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out,
            "12:34:56.250 + /a[n='x']\n"
            "-- this is what there is; changes follow --\n"
            "12:34:57.000 ~ /a[n='x']/b = 7\n"
            "12:34:58.500 - /a[n='x']\n");
  EXPECT_THAT(agent_.told(), ElementsAre(R"({"request":"watch"})"));
}

TEST_F(Watch, PrintsJsonLinesAsTheyCome) {
  EXPECT_EQ(agent_.ctl({"watch", "--json", "/vela-l3v2:policy-source"}).out, kChanges);
  EXPECT_THAT(agent_.told(),
              ElementsAre(R"({"request":"watch","path":"/vela-l3v2:policy-source"})"));
}

TEST_F(Watch, IsNotEndedByASecondSignal) {
  agent_.ctl({"watch"});
  ::raise(SIGINT);  // which would end this process
  sigset_t signals;
  ::sigemptyset(&signals);
  ::sigaddset(&signals, SIGINT);
  ::sigaddset(&signals, SIGTERM);
  int taken = 0;
  EXPECT_EQ(::sigwait(&signals, &taken), 0);
  EXPECT_EQ(taken, SIGINT);
  ::pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);  // as the tests that follow expect
}

TEST(WatchedAgent, ThatGoesIsAFailure) {
  const FakeAgent agent(
      [](std::size_t, const std::string&) { return std::string(kChanges) + FakeAgent::kClose; });
  const Outcome outcome = agent.ctl({"watch", "--json"});
  EXPECT_EQ(outcome.exitCode, 3);
  EXPECT_EQ(outcome.out, kChanges);
  EXPECT_THAT(outcome.err, HasSubstr("is gone: "));
}

TEST(WatchedAgent, ThatFindsTheClientTooSlowIsAFailure) {
  const FakeAgent agent(always(R"(,"error":"you read too slowly; connect again")"));
  const Outcome outcome = agent.ctl({"watch"});
  EXPECT_EQ(outcome.exitCode, 3);
  EXPECT_EQ(outcome.err, "vpm: error: you read too slowly; connect again\n");
}

}  // namespace
}  // namespace HostTests
