#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "Pario/Event.h"
#include "Pario/Listening.h"
#include "support/RingCapture.h"
#include "support/TraceCapture.h"

namespace {

TEST(Listening, NobodyDoesAtFirst) {
  EXPECT_EQ(Pario::listening.load(), 0U);
  for (unsigned level = 0; level <= 9; ++level) {
    EXPECT_FALSE(Pario::on(level));
  }
}

TEST(Listening, FollowsTheLevelsOfTheTextTraceAtRunTime) {
  TestSupport::TraceCapture text("6-8");
  EXPECT_EQ(Pario::listening.load(), 0x1c0U);
  text.levelsAre("0,9");
  EXPECT_EQ(Pario::listening.load(), 0x201U);
  EXPECT_TRUE(Pario::on(0));
  EXPECT_FALSE(Pario::on(7));
  EXPECT_TRUE(Pario::on(9));
}

TEST(Listening, IsTheUnionOfAllFacilities) {
  const TestSupport::TraceCapture first("6", "First");
  const TestSupport::TraceCapture second("8", "Second");
  EXPECT_EQ(Pario::listening.load(), 0x140U);
}

TEST(Listening, TheBinaryTraceListensToAllLevelsWhileItHasADefaultRing) {
  {
    const TestSupport::RingCapture ring;
    EXPECT_EQ(Pario::listening.load(), 0x3ff0000U);
    EXPECT_TRUE(Pario::on(7));
  }
  EXPECT_EQ(Pario::listening.load(), 0U);
}

TEST(Listening, TheLevelsOfTheBinaryTraceAreKeptWithoutARing) {
  Pario::binaryLevelsAre(0x1c0);
  EXPECT_EQ(Pario::listening.load(), 0U);
  {
    const TestSupport::RingCapture ring;
    EXPECT_EQ(Pario::listening.load(), 0x1c00000U);
    EXPECT_EQ(Pario::binaryLevels(), 0x1c0U);
    Pario::binaryLevelsAre(0xffffffff);
    EXPECT_EQ(Pario::binaryLevels(), 0x3ffU);
    EXPECT_EQ(Pario::listening.load(), 0x3ff0000U);
  }
}

TEST(Listening, TheEnvironmentIsHeardFromTheMomentOfLoading) {
  if (std::getenv("PARIO_TEST_CHILD") != nullptr) {
    EXPECT_EQ(Pario::listening.load(), 0x1c0U);
    return;
  }
  const std::string self = std::filesystem::read_symlink("/proc/self/exe");
  const std::string command =
      "PARIO_TEST_CHILD=1 VELA_TRACE=VelaPolicyMonitor/6-8 '" + self +
      "' --gtest_filter=Listening.TheEnvironmentIsHeardFromTheMomentOfLoading >/dev/null 2>&1";
  EXPECT_EQ(std::system(command.c_str()), 0);
}

}  // namespace
