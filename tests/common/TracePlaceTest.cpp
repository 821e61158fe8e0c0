#include <gtest/gtest.h>

#include <string>

#include "common/TracePlace.h"

namespace VelaPolicyMonitor {
namespace {

TEST(TracePlace, FitsIntoTheGapBehindAFlag) {
  struct Tail {
    bool flag;
    TracePlace place;
  };
  EXPECT_EQ(sizeof(Tail), 8U);
}

TEST(TracePlace, HasThePartsThatItWasGiven) {
  const TracePlace place =
      TracePlace().with(OnDevice{"fw1"}).with(OnVrf{"red"}).with(OnRule{20000});
  EXPECT_EQ(place.bits() & TracePlace::kDeviceMask, OnDevice{"fw1"}.bits());
  EXPECT_EQ(place.bits() & TracePlace::kVrfMask, OnVrf{"red"}.bits());
  EXPECT_EQ(place.bits() & TracePlace::kRuleMask, OnRule{20000}.bits());
  EXPECT_EQ(TracePlace().bits(), 0U);
}

TEST(TracePlace, EveryPartLiesUnderItsMaskAndIsNotNothing) {
  for (std::uint32_t i = 0; i < 40000; ++i) {
    const std::string name = "name" + std::to_string(i);
    const Pario::Place device = OnDevice{name}.bits();
    const Pario::Place vrf = OnVrf{name}.bits();
    const Pario::Place rule = OnRule{i}.bits();
    ASSERT_NE(device, 0U);
    ASSERT_EQ(device & ~TracePlace::kDeviceMask, 0U);
    ASSERT_NE(vrf, 0U);
    ASSERT_EQ(vrf & ~TracePlace::kVrfMask, 0U);
    ASSERT_NE(rule, 0U);
    ASSERT_EQ(rule & ~TracePlace::kRuleMask, 0U);
  }
}

TEST(TracePlace, PrioritiesInRangeAreToldApart) {
  for (std::uint32_t priority = 10000; priority < 30000; ++priority) {
    ASSERT_LT(OnRule{priority}.bits(), OnRule{priority + 1}.bits());
  }
  EXPECT_NE(OnRule{30000}.bits(), OnRule{9999}.bits());
}

TEST(TracePlace, AChildIsMadeWhereItsOwnerStands) {
  const TracePlace outer = TracePlace().with(OnDevice{"fw1"});
  EXPECT_EQ(TracePlace::ofOwner().bits(), 0U);
  {
    const TracePlace::Making making(outer);
    EXPECT_EQ(TracePlace::ofOwner().bits(), outer.bits());
    {
      const TracePlace::Making within{TracePlace()};
      EXPECT_EQ(TracePlace::ofOwner().bits(), 0U);
    }
    EXPECT_EQ(TracePlace::ofOwner().bits(), outer.bits());
  }
  EXPECT_EQ(TracePlace::ofOwner().bits(), 0U);
}

// A trace is read by another build than the one that wrote it.
TEST(TracePlace, TheBitsOfANameNeverChange) {
  EXPECT_EQ(OnDevice{"fw1"}.bits(), 726333U);
  EXPECT_EQ(OnVrf{"red"}.bits(), 1647959867392U);
}

TEST(TracePlace, TheBitsOfAPriorityNeverChange) {
  EXPECT_EQ(OnRule{10000}.bits(), Pario::Place{1} << 41U);
  EXPECT_EQ(OnRule{30000}.bits(), Pario::Place{20001} << 41U);
  EXPECT_EQ(OnRule{9999}.bits(), Pario::Place{32767} << 41U);
  EXPECT_EQ(OnRule{4294967295}.bits(), Pario::Place{32767} << 41U);
}

}  // namespace
}  // namespace VelaPolicyMonitor
