#include <gtest/gtest.h>

#include "Kel/Reckoning.h"

namespace {

using Kel::Seconds;
using Kel::Impl::Reckoning;

constexpr Seconds kDay = 86'400;   // the time of day is ahead of the running clock
constexpr Seconds kStarted = 100;  // and the machine has been running for a while

/// What the clocks say at a second; a tick is a nanosecond.
Reckoning::Reading at(Seconds second) {
  return {static_cast<std::uint64_t>((kStarted + second) * 1e9), kDay + second, kStarted + second,
          1e-7};
}

/// Knows the time from 1.04 s on.
Reckoning believing() {
  Reckoning reckoning;
  for (const Seconds second : {1.00, 1.02, 1.04}) {
    reckoning.learn(at(second));
  }
  return reckoning;
}

TEST(Reckoning, KnowsNothingBeforeTwoMeasurementsInARowHaveAgreed) {
  Reckoning reckoning;
  EXPECT_FALSE(reckoning.covers(0));
  reckoning.learn(at(1.00));
  EXPECT_FALSE(reckoning.covers(at(1.001).counter));
  reckoning.learn(at(1.02));
  EXPECT_FALSE(reckoning.covers(at(1.021).counter)) << "one measurement";
  reckoning.learn(at(1.04));
  EXPECT_TRUE(reckoning.covers(at(1.041).counter));
}

TEST(Reckoning, GoesOnByTicksForTenMilliseconds) {
  const Reckoning reckoning = believing();
  EXPECT_TRUE(reckoning.covers(at(1.04).counter));
  EXPECT_DOUBLE_EQ(reckoning.timeAt(at(1.04).counter), kDay + 1.04);
  EXPECT_TRUE(reckoning.covers(at(1.0499).counter));
  EXPECT_NEAR(reckoning.timeAt(at(1.0499).counter), kDay + 1.0499, 1e-9);
  EXPECT_FALSE(reckoning.covers(at(1.0501).counter));
}

TEST(Reckoning, DoesNotKnowTheTimeAtACounterThatWentBack) {
  EXPECT_FALSE(believing().covers(at(1.0399).counter));
}

TEST(Reckoning, IsDueAfterTenMillisecondsOrWhenTheCounterWentBack) {
  const Reckoning reckoning = believing();
  EXPECT_FALSE(reckoning.isDue(at(1.049).counter, kStarted + 1.049));
  EXPECT_TRUE(reckoning.isDue(at(1.051).counter, kStarted + 1.051));
  EXPECT_TRUE(reckoning.isDue(at(1.03).counter, kStarted + 1.041));
}

TEST(Reckoning, TakesTheNewTimeOfDayOver) {
  Reckoning reckoning = believing();
  Reckoning::Reading set = at(1.06);
  set.time = 5;
  reckoning.learn(set);
  EXPECT_TRUE(reckoning.covers(set.counter + 1000));
  EXPECT_NEAR(reckoning.timeAt(set.counter + 1000), 5 + 1e-6, 1e-12);
}

TEST(Reckoning, IgnoresAReadingThatWasInterrupted) {
  Reckoning reckoning = believing();
  Reckoning::Reading interrupted = at(1.06);
  interrupted.time = 5;
  interrupted.took = 3e-6;
  reckoning.learn(interrupted);
  EXPECT_NEAR(reckoning.timeAt(at(1.045).counter), kDay + 1.045, 1e-9);
  EXPECT_TRUE(reckoning.covers(at(1.045).counter));
}

TEST(Reckoning, BeginsAnewWhenMeasurementsDisagree) {
  Reckoning reckoning = believing();
  Reckoning::Reading jumped = at(1.06);
  jumped.counter += 1'000'000;  // 5 % more ticks than before
  reckoning.learn(jumped);
  EXPECT_FALSE(reckoning.covers(jumped.counter + 1));
  for (const Seconds second : {1.08, 1.10}) {
    jumped = at(second);
    jumped.counter += 1'000'000;
    reckoning.learn(jumped);
  }
  EXPECT_TRUE(reckoning.covers(jumped.counter + 1));
}

TEST(Reckoning, BeginsAnewWhenTheCounterWentBackOrALongTimeHasGoneBy) {
  for (const Seconds later : {0.5, 12.0}) {
    Reckoning reckoning = believing();
    Reckoning::Reading reading = at(later);
    reading.running = kStarted + 1.04 + later;
    reckoning.learn(reading);
    EXPECT_FALSE(reckoning.covers(reading.counter + 1)) << later;
  }
}

}  // namespace
