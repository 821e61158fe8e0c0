#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

#include "Kel/Exception.h"
#include "Kel/Text.h"
#include "VelaL3V2/VelaPolicyConfig.h"
#include "VelaL3V2/VelaPolicySourceConfig.h"
#include "VelaL3V2/VelaPriority.h"

namespace {

using VelaL3V2::VelaPriority;

std::string whatOf(std::uint32_t value) {
  try {
    const VelaPriority priority(value);
  } catch (const Kel::RangeException& error) {
    return error.what();
  }
  return "";
}

TEST(VelaL3V2Priority, TakesEveryValueFrom10000To30000) {
  for (const std::uint32_t value : {10000U, 10001U, 20000U, 29999U, 30000U}) {
    EXPECT_EQ(VelaPriority(value).value(), value);
  }
  EXPECT_EQ(VelaPriority::min, 10000U);
  EXPECT_EQ(VelaPriority::max, 30000U);
}

TEST(VelaL3V2Priority, RaisesTheRangeErrorOutsideWithItsOwnMessage) {
  for (const std::uint32_t value : {0U, 9999U, 30001U, 40000U, 4294967295U}) {
    EXPECT_EQ(whatOf(value),
              "VelaL3V2::VelaPriority::value < VelaL3V2::VelaPriority::min or > "
              "VelaL3V2::VelaPriority::max not allowed")
        << value;
  }
}

TEST(VelaL3V2Priority, AnUncheckedOneMayLieOutside) {
  EXPECT_EQ(VelaPriority::unchecked(0).value(), 0U);
  EXPECT_EQ(VelaPriority::unchecked(40000).value(), 40000U);
}

TEST(VelaL3V2Priority, IsTheLowestByDefault) { EXPECT_EQ(VelaPriority().value(), 10000U); }

TEST(VelaL3V2Priority, ComparesByValue) {
  EXPECT_TRUE(VelaPriority(20000).isEq(VelaPriority(20000)));
  EXPECT_FALSE(VelaPriority(20000).isEq(VelaPriority(20001)));
  EXPECT_EQ(VelaPriority(20000), VelaPriority(20000));
  EXPECT_LT(VelaPriority(10000), VelaPriority(30000));
  EXPECT_EQ(VelaPriority(20000).hash(), VelaPriority(20000).hash());
  EXPECT_NE(VelaPriority(20000).hash(), VelaPriority(20001).hash());
}

TEST(VelaL3V2Priority, IsCopiedAsMemory) {
  EXPECT_TRUE(std::is_trivially_copyable_v<VelaPriority>);
  EXPECT_EQ(sizeof(VelaPriority), 4U);
}

TEST(VelaL3V2Priority, PrintsAndReadsItsDigits) {
  EXPECT_EQ(Kel::textOf(VelaPriority(10000)), "10000");
  VelaPriority read;
  std::string why;
  EXPECT_TRUE(Kel::parseValue("30000", read, why));
  EXPECT_EQ(read.value(), 30000U);
  EXPECT_FALSE(Kel::parseValue("30001", read, why));
  EXPECT_EQ(why, "priority 30001 is out of range; expected 10000 to 30000");
  EXPECT_FALSE(Kel::parseValue("", read, why));
  EXPECT_FALSE(Kel::parseValue("2e4", read, why));
  EXPECT_FALSE(Kel::parseValue("-1", read, why));
  EXPECT_EQ(read.value(), 30000U);
}

TEST(VelaL3V2Priority, RulesAreWalkedFromTheHighestToTheLowest) {
  const auto source = VelaL3V2::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  const auto policy = source->policySetIs("fw1")->policyIs("net-red");
  for (const std::uint32_t value : {20000U, 10000U, 30000U, 15000U}) {
    policy->ruleIs(VelaPriority(value));
  }
  std::vector<std::uint32_t> walked;
  for (const auto& [priority, rule] : policy->rule()) {
    walked.push_back(priority.value());
  }
  EXPECT_EQ(walked, (std::vector<std::uint32_t>{30000, 20000, 15000, 10000}));
}

}  // namespace
