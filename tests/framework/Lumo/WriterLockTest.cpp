#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "Lumo/WriterLock.h"
#include "support/OnThreads.h"

namespace {

TEST(WriterLock, TurnsAwayTheThreadThatIsInside) {
  Lumo::WriterLock lock;
  ASSERT_TRUE(lock.enter());
  EXPECT_FALSE(lock.enter());
  lock.leave();
  EXPECT_TRUE(lock.enter());
  lock.leave();
}

TEST(WriterLock, BelongsToItsFirstThreadUntilAnotherOneComes) {
  Lumo::WriterLock lock;
  EXPECT_FALSE(lock.tryEnter()) << "it belongs to nobody yet";
  ASSERT_TRUE(lock.enter());
  lock.leave();
  ASSERT_TRUE(lock.tryEnter()) << "the kernel of this machine has no barrier for all threads";
  lock.leave();
  std::thread([&] {
    EXPECT_FALSE(lock.tryEnter());
    EXPECT_TRUE(lock.enter());
    EXPECT_FALSE(lock.enter()) << "also a stranger is turned away from inside";
    lock.leave();
  }).join();
  EXPECT_FALSE(lock.tryEnter()) << "it is shared now";
  EXPECT_TRUE(lock.enter());
  EXPECT_FALSE(lock.enter());
  lock.leave();
}

TEST(WriterLock, AStrangerWaitsForTheOwner) {
  Lumo::WriterLock lock;
  ASSERT_TRUE(lock.enter());
  lock.leave();
  ASSERT_TRUE(lock.enter());
  int value = 0;
  std::thread stranger([&] {
    EXPECT_TRUE(lock.enter());
    EXPECT_EQ(value, 1);
    lock.leave();
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  value = 1;
  lock.leave();
  stranger.join();
}

TEST(WriterLock, LetsOneInAtATime) {
  for (int round = 0; round < 20; ++round) {
    Lumo::WriterLock lock;
    int value = 0;  // guarded by the lock: a lost increment is a fault of it
    TestSupport::onThreads(4, [&](std::size_t) {
      for (int n = 0; n < 1000; ++n) {
        EXPECT_TRUE(lock.enter());
        ++value;
        lock.leave();
      }
    });
    EXPECT_EQ(value, 4000);
  }
}

}  // namespace
