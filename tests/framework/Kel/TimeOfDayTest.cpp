#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <thread>

#include "Kel/TimeOfDay.h"
#include "support/OnThreads.h"

namespace {

constexpr Kel::Seconds kTolerance = 100e-6;

Kel::Seconds kernelTime() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<Kel::Seconds>(now.tv_sec) + static_cast<Kel::Seconds>(now.tv_nsec) * 1e-9;
}

/// Compares with the kernel for this long. Every answer must lie between two of the kernel's, so
/// the load of the machine does not matter.
void compareFor(Kel::Seconds duration) {
  const Kel::Seconds end = kernelTime() + duration;
  for (Kel::Seconds before = kernelTime(); before < end;) {
    const Kel::Seconds time = Kel::Impl::timeOfDay();
    const Kel::Seconds after = kernelTime();
    ASSERT_GE(time, before - kTolerance);
    ASSERT_LE(time, after + kTolerance);
    before = after;
  }
}

TEST(TimeOfDay, IsTheKernelsOverManyIntervals) { compareFor(0.1); }

TEST(TimeOfDay, IsTheKernelsAfterALongPause) {
  compareFor(0.04);
  std::this_thread::sleep_for(std::chrono::milliseconds(60));
  compareFor(0.04);
}

TEST(TimeOfDay, IsTheKernelsOnEveryThread) {
  TestSupport::onThreads(3, [](std::size_t) { compareFor(0.06); });
}

TEST(TimeOfDay, GoesOnBetweenTwoQuestions) {
  compareFor(0.04);  // from now on the counter is used, where there is one
  Kel::Seconds last = Kel::Impl::timeOfDay();
  int equal = 0;
  for (int i = 0; i < 1000; ++i) {
    const Kel::Seconds time = Kel::Impl::timeOfDay();
    equal += time == last ? 1 : 0;
    last = time;
  }
  EXPECT_LT(equal, 1000) << "a quarter of a microsecond is the resolution";
}

}  // namespace
