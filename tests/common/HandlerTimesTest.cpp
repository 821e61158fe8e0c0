#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <thread>

#include "Pario/Listening.h"
#include "common/HandlerTimes.h"
#include "common/Handling.h"
#include "common/IdleMachine.h"
#include "framework/Kel/FailingMemory.h"

namespace VelaPolicyMonitor {
namespace {

constexpr const char* kScope = "void Space::Class::";

/// Handlers are measured, from zero, while this lives.
class Measured {
 public:
  Measured() {
    HandlerTimes::forget();
    Pario::measuringIs(true);
  }
  Measured(const Measured&) = delete;
  Measured& operator=(const Measured&) = delete;
  ~Measured() { Pario::measuringIs(false); }
};

void sleepFor(int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

TEST(HandlerTimes, CountAndTimeTheRunsOfAHandler) {
  const Measured measured;
  for (int i = 0; i < 3; ++i) {
    ASSERT_TRUE(HandlerTimes::begin(kScope, "f(int)"));
    sleepFor(2);
    HandlerTimes::end();
  }
  const auto all = HandlerTimes::all();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all[0].className, "Space::Class");
  EXPECT_EQ(all[0].form, "f(int)");
  EXPECT_EQ(all[0].calls, 3U);
  EXPECT_GE(all[0].seconds, 0.006);
}

TEST(HandlerTimes, ARunInsideAnotherIsNoPartOfItsTime) {
  const Measured measured;
  ASSERT_TRUE(HandlerTimes::begin(kScope, "outer()"));
  for (int i = 0; i < 2; ++i) {
    ASSERT_TRUE(HandlerTimes::begin(kScope, "inner()"));
    sleepFor(20);
    HandlerTimes::end();
  }
  HandlerTimes::end();
  const auto all = HandlerTimes::all();
  ASSERT_EQ(all.size(), 2U);
  EXPECT_EQ(all[0].form, "inner()");
  EXPECT_GE(all[0].seconds, 0.04);
  EXPECT_LT(all[1].seconds, 0.02);
}

TEST(HandlerTimes, ARunThatFindsNoMemoryIsNotMeasuredAndTheNextIs) {
  const Measured measured;
  for (std::size_t nth = 1;; ++nth) {
    // Each on a thread of its own, which has no room for a run yet.
    std::thread([nth] {
      const FailingMemory memory(nth);
      if (HandlerTimes::begin(kScope, "poor()")) {
        HandlerTimes::end();
      }
    }).join();
    const auto all = HandlerTimes::all();
    if (!all.empty()) {
      EXPECT_EQ(all[0].form, "poor()");
      EXPECT_EQ(all[0].calls, 1U);
      EXPECT_EQ(nth, 3U) << "one allocation for the run, one for its sum";
      break;
    }
  }
}

TEST(HandlerTimes, AHandlerIsMeasuredWhenItBeganWhileThatWasOn) {
  HandlerTimes::forget();
  static constexpr TraceScope kTrace{kScope, "return"};
  const Brix::Ptr<CommonTests::IdleMachine> machine(new CommonTests::IdleMachine, Brix::adopt);
  std::optional<Handling> before(std::in_place, *machine, kTrace, "before()");
  std::optional<Handling> within;
  {
    const Measured measured;
    before.reset();
    within.emplace(*machine, kTrace, "within()");
  }
  within.reset();
  const auto all = HandlerTimes::all();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all[0].form, "within()");
}

}  // namespace
}  // namespace VelaPolicyMonitor
