#include <gtest/gtest.h>

#include <thread>

#include "Pario/Listening.h"
#include "common/HandlerTimes.h"

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
    HandlerTimes::Run run;
    run.begin(kScope, "f(int)");
    sleepFor(2);
    run.end();
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
  HandlerTimes::Run outer;
  outer.begin(kScope, "outer()");
  for (int i = 0; i < 2; ++i) {
    HandlerTimes::Run inner;
    inner.begin(kScope, "inner()");
    sleepFor(20);
    inner.end();
  }
  outer.end();
  const auto all = HandlerTimes::all();
  ASSERT_EQ(all.size(), 2U);
  EXPECT_EQ(all[0].form, "inner()");
  EXPECT_GE(all[0].seconds, 0.04);
  EXPECT_LT(all[1].seconds, 0.02);
}

TEST(HandlerTimes, ARunCountsAsMeasuredWhenItBeganWhileTheyWereOn) {
  HandlerTimes::forget();
  HandlerTimes::Run before;
  before.begin(kScope, "before()");
  HandlerTimes::Run within;
  {
    const Measured measured;
    before.end();
    within.begin(kScope, "within()");
  }
  within.end();
  const auto all = HandlerTimes::all();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all[0].form, "within()");
}

}  // namespace
}  // namespace VelaPolicyMonitor
