#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "Brix/Counted.h"
#include "Brix/Ptr.h"

namespace Brix {
namespace {

/// Switches counting by read-modify-write on while it lives.
class ThreadSafePointers {
 public:
  ThreadSafePointers() { threadSafePointers.store(true); }
  ~ThreadSafePointers() { threadSafePointers.store(false); }
  ThreadSafePointers(const ThreadSafePointers&) = delete;
  ThreadSafePointers& operator=(const ThreadSafePointers&) = delete;
};

class Object : public Counted {
 public:
  using Step = std::function<void(Object&)>;

  explicit Object(Step inConstructor = {}, Step inDestructor = {})
      : inDestructor_(std::move(inDestructor)) {
    ++constructed;
    if (inConstructor) {
      inConstructor(*this);
    }
  }
  ~Object() override {
    ++destroyed;
    if (inDestructor_) {
      inDestructor_(*this);
    }
  }

  static inline std::atomic<int> constructed = 0;
  static inline std::atomic<int> destroyed = 0;
  int payload = 0;

 private:
  Step inDestructor_;
};

class CountedLife : public ::testing::Test {
 protected:
  void SetUp() override { Object::constructed = Object::destroyed = 0; }
};

TEST_F(CountedLife, StartsAtOneBeforeTheDerivedConstructorRuns) {
  std::uint32_t seen = 0;
  const Ptr<Object> object(new Object([&](Object& self) { seen = self.refCount(); }), adopt);
  EXPECT_EQ(seen, 1U);
  EXPECT_EQ(object->refCount(), 1U);
}

TEST_F(CountedLife, SurvivesPointersTakenAndDroppedByItsConstructor) {
  Ptr<Object> object(new Object([](Object& self) {
                       for (int i = 0; i != 3; ++i) {
                         const Ptr<Object> temporary(&self);
                         EXPECT_EQ(self.refCount(), 2U);
                       }
                       EXPECT_EQ(Object::destroyed, 0);
                     }),
                     adopt);
  EXPECT_EQ(Object::destroyed, 0);
  object.reset();
  EXPECT_EQ(Object::destroyed, 1);
}

TEST_F(CountedLife, KeepsThePointerThatItsConstructorHandedOut) {
  Ptr<Object> kept;
  Ptr<Object> object(new Object([&](Object& self) { kept = Ptr<Object>(&self); }), adopt);
  EXPECT_EQ(object->refCount(), 2U);
  object.reset();
  EXPECT_EQ(Object::destroyed, 0);
  kept.reset();
  EXPECT_EQ(Object::destroyed, 1);
}

TEST_F(CountedLife, IsDestroyedOnceThoughItsDestructorTakesAndDropsPointers) {
  Ptr<Object> object(new Object({},
                                [](Object& self) {
                                  for (int i = 0; i != 3; ++i) {
                                    const Ptr<Object> outer(&self);
                                    const Ptr<Object> inner = outer;
                                  }
                                }),
                     adopt);
  object.reset();
  EXPECT_EQ(Object::destroyed, 1);
}

TEST_F(CountedLife, IsDestroyedOnceThoughItsDestructorTakesPointersInThreadSafeMode) {
  const ThreadSafePointers on;
  Ptr<Object> object(new Object({}, [](Object& self) { const Ptr<Object> temporary(&self); }),
                     adopt);
  object.reset();
  EXPECT_EQ(Object::destroyed, 1);
}

/// Decides for itself what zero means, as an object with work on the stack does.
class Waiting : public Object {
 public:
  bool working = true;
  int zeros = 0;
  void endWork() {
    working = false;
    if (refCount() == 0) {
      destroy();
    }
  }

 private:
  void onZeroReferences() noexcept override {
    ++zeros;
    if (!working) {
      destroy();
    }
  }
};

TEST_F(CountedLife, MayOutliveItsLastPointerUntilItDecidesToGo) {
  auto* const object = new Waiting;
  Ptr<Waiting>(object, adopt).reset();
  EXPECT_EQ(object->zeros, 1);
  EXPECT_EQ(Object::destroyed, 0);
  object->endWork();
  EXPECT_EQ(Object::destroyed, 1);
}

TEST_F(CountedLife, MayBeTakenUpAgainBetweenItsLastPointerAndItsDecision) {
  auto* const object = new Waiting;
  Ptr<Waiting>(object, adopt).reset();
  Ptr<Waiting> again(object);
  EXPECT_EQ(object->refCount(), 1U);
  object->endWork();
  EXPECT_EQ(Object::destroyed, 0);
  again.reset();
  EXPECT_EQ(Object::destroyed, 1);
}

TEST_F(CountedLife, GoesOnCountingWhenTheSwitchIsThrownWhileItIsHeld) {
  Ptr<Object> first(new Object, adopt);
  Ptr<Object> second = first;
  {
    const ThreadSafePointers on;
    Ptr<Object> third = second;
    EXPECT_EQ(first->refCount(), 3U);
    second.reset();
    EXPECT_EQ(first->refCount(), 2U);
  }
  EXPECT_EQ(first->refCount(), 1U);
  EXPECT_EQ(Object::destroyed, 0);
  first.reset();
  EXPECT_EQ(Object::destroyed, 1);
}

TEST_F(CountedLife, CountsExactlyWhenSeveralThreadsCopyPointersInThreadSafeMode) {
  const ThreadSafePointers on;
  constexpr int kThreads = 4;
  constexpr int kRounds = 5000;
  Ptr<Object> shared(new Object, adopt);
  {
    std::vector<std::jthread> threads;
    for (int i = 0; i != kThreads; ++i) {
      threads.emplace_back([mine = shared] {
        for (int round = 0; round != kRounds; ++round) {
          const Ptr<Object> copy = mine;
          const Ptr<Object> another = copy;
        }
      });
    }
  }
  EXPECT_EQ(shared->refCount(), 1U);
  shared.reset();
  EXPECT_EQ(Object::destroyed, 1);
}

TEST_F(CountedLife, IsDestroyedByTheThreadThatDropsLastWhichSeesAllWritesOfTheOthers) {
  const ThreadSafePointers on;
  for (int round = 0; round != 200; ++round) {
    std::atomic<int> seen = 0;
    Ptr<Object> shared(new Object({}, [&seen](Object& self) { seen = self.payload; }), adopt);
    {
      std::jthread other([mine = std::move(shared), copy = shared]() mutable {
        mine->payload = 7;  // by this thread alone
        mine.reset();
      });
      shared.reset();
    }
    EXPECT_EQ(seen, 7);
  }
  EXPECT_EQ(Object::destroyed, 200);
}

}  // namespace
}  // namespace Brix
