#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include "Kel/Assert.h"

namespace {

constexpr const char* kFunction =
    "VelaL3V2::VelaAction VelaPolicyMonitor::toVelaL3V2Action(VelaL3::VelaAction)";

TEST(AssertDeathTest, AFailureNamesPlaceFunctionConditionAndMessageAndAborts) {
  EXPECT_EXIT(Kel::require(false, "false", "Should not be here", kFunction, "Conversions.cpp", 41),
              testing::KilledBySignal(SIGABRT),
              "^Conversions\\.cpp:41: VelaL3V2::VelaAction "
              "VelaPolicyMonitor::toVelaL3V2Action\\(VelaL3::VelaAction\\): "
              "assertion \"false\" failed: Should not be here\n$");
}

constexpr int kLineOfFailure = __LINE__ + 1;
void failing() { Kel::require(1 + 1 == 3, "1 + 1 == 3", "no arithmetic", "void f()"); }

TEST(AssertDeathTest, ThePlaceIsThatOfTheCaller) {
  EXPECT_EXIT(
      failing(), testing::KilledBySignal(SIGABRT),
      "AssertTest\\.cpp:" + std::to_string(kLineOfFailure) + ": void f\\(\\): assertion \"1");
}

TEST(AssertDeathTest, AFailureWithoutAConditionAbortsToo) {
  EXPECT_EXIT(Kel::assertionFailed("slot is set", "Should not be here", "void g()"),
              testing::KilledBySignal(SIGABRT),
              "void g\\(\\): assertion \"slot is set\" failed: Should not be here");
}

TEST(Assert, ATrueConditionDoesNothing) {
  testing::internal::CaptureStderr();
  Kel::require(true, "true", "Should not be here", kFunction);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

#ifdef NDEBUG
constexpr bool kAssertIsOff = true;
#else
constexpr bool kAssertIsOff = false;
#endif

TEST(AssertDeathTest, HoldsWhetherOrNotTheLanguagesOwnAssertDoes) {
  EXPECT_DEATH(Kel::require(kAssertIsOff && !kAssertIsOff, "a and not a", "logic", "void h()"),
               "assertion \"a and not a\" failed: logic");
}

}  // namespace
