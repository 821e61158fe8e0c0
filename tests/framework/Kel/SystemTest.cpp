#include <gtest/gtest.h>

#include <chrono>

#include "Kel/System.h"

namespace {

Kel::Seconds timeOfDay() {
  return std::chrono::duration<Kel::Seconds>(std::chrono::system_clock::now().time_since_epoch())
      .count();
}

TEST(System, TheTimeIsTheTimeOfDayUntilAClockIsSet) {
  const Kel::Seconds before = timeOfDay();
  const Kel::Seconds now = Kel::System::currentTime();
  const Kel::Seconds after = timeOfDay();
  EXPECT_GE(now, before - 1e-3);
  EXPECT_LE(now, after + 1e-3);
}

TEST(System, AClockOfOnesOwnIsAskedEveryTime) {
  Kel::Seconds time = 12.5;
  Kel::System::clockIs([&] { return time += 0.25; });
  EXPECT_EQ(Kel::System::currentTime(), 12.75);
  EXPECT_EQ(Kel::System::currentTime(), 13.0);
  Kel::System::clockIs({});
}

TEST(System, AnEmptyFunctionRestoresTheTimeOfDay) {
  Kel::System::clockIs([] { return 1.0; });
  ASSERT_EQ(Kel::System::currentTime(), 1.0);
  Kel::System::clockIs({});
  EXPECT_NEAR(Kel::System::currentTime(), timeOfDay(), 1.0);
}

}  // namespace
