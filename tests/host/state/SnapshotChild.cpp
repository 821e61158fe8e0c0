#include "state/SnapshotChild.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): raise with POSIX signals
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "host/Running.h"

namespace HostTests {
namespace {

std::string outcomeOf(Host::SnapshotChild& child) {
  for (int i = 0; i < 5000; ++i) {
    if (const auto outcome = child.outcome()) {
      return *outcome;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return "it goes on";
}

TEST(SnapshotChild, WorksOnACopyOfTheMemory) {
  const Folder folder;
  int number = 1;
  Host::SnapshotChild child;
  child.start([&] {
    ++number;
    std::ofstream(folder.path("result")) << number;
  });
  number = 7;
  EXPECT_TRUE(child.running());
  EXPECT_EQ(outcomeOf(child), "");
  EXPECT_FALSE(child.running());
  EXPECT_EQ(folder.read("result"), "2");
  EXPECT_EQ(number, 7);
  EXPECT_EQ(child.outcome(), std::nullopt);  // it is told once
}

TEST(SnapshotChild, SaysWhyTheWorkHasFailed) {
  Host::SnapshotChild child;
  child.start([] { throw std::runtime_error("no room"); });
  EXPECT_EQ(outcomeOf(child), "no room");
  child.start([] { ::raise(SIGKILL); });
  EXPECT_EQ(outcomeOf(child), "its process was ended by signal 9");
}

TEST(SnapshotChild, KeepsNoDescriptorOpenOnWhichSomebodyMayWait) {
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  Host::SnapshotChild child;
  child.start([] { ::pause(); });
  ::close(ends[1]);
  char byte = 0;
  EXPECT_EQ(::read(ends[0], &byte, 1), 0);  // nobody else can write any more
  ::close(ends[0]);
  child.stop();
  EXPECT_FALSE(child.running());
}

TEST(SnapshotChild, EndsWithItsParent) {
  const Folder folder;
  const pid_t parent = ::fork();
  if (parent == 0) {
    Host::SnapshotChild child;
    child.start([&] {
      std::ofstream(folder.path("pid")) << ::getpid() << std::flush;
      ::pause();
    });
    while (folder.read("pid").empty()) {
      ::usleep(1000);
    }
    ::raise(SIGKILL);
  }
  ASSERT_EQ(::waitpid(parent, nullptr, 0), parent);
  const pid_t child = std::stoi(folder.read("pid"));
  const auto lives = [&] {
    std::ifstream status("/proc/" + std::to_string(child) + "/stat");
    std::string number;
    std::string name;
    std::string state = "gone";
    status >> number >> name >> state;
    return state != "gone" && state != "Z";
  };
  for (int i = 0; lives() && i < 5000; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_FALSE(lives());
}

}  // namespace
}  // namespace HostTests
