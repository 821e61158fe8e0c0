#include "Vela/DeviceName.h"

#include <gtest/gtest.h>

#include <compare>
#include <cstddef>
#include <iomanip>
#include <sstream>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "Brix/String.h"

namespace Vela {
namespace {

Brix::String textOf(const DeviceName& name) { return name.stringValue(); }

TEST(DeviceName, IsEmptyByDefault) {
  EXPECT_EQ(DeviceName().stringValue(), "");
  EXPECT_EQ(DeviceName(), DeviceName(""));
}

TEST(DeviceName, TakesEightBytes) { EXPECT_EQ(sizeof(DeviceName), 8U); }

TEST(DeviceName, StandsWhereverAStringIsGiven) {
  EXPECT_EQ(textOf(Brix::String("fw1")), "fw1");
  EXPECT_EQ(textOf(std::string_view("fw1")), "fw1");
  EXPECT_EQ(textOf(std::string("fw1")), "fw1");
  EXPECT_EQ(textOf("fw1"), "fw1");
}

TEST(DeviceName, SharesTheTextOfTheStringItIsBuiltFrom) {
  const Brix::String shared("a name that is stored once");
  EXPECT_EQ(DeviceName(shared).stringValue().c_str(), shared.c_str());
}

TEST(DeviceName, KeepsEveryByteOfANameOfAnyLength) {
  const std::string large(100'000, 'd');
  EXPECT_EQ(DeviceName(large).stringValue(), large);
  const std::string_view odd(" FW\0\n\xff ", 7);
  EXPECT_EQ(DeviceName(odd).stringValue().view(), odd);
}

TEST(DeviceName, EqualsANameAndATextOfTheSameBytes) {
  EXPECT_TRUE(DeviceName("fw1") == DeviceName("fw1"));
  EXPECT_FALSE(DeviceName("fw1") == DeviceName("FW1"));
  EXPECT_TRUE(DeviceName("fw1") == std::string_view("fw1"));
  EXPECT_TRUE(std::string_view("fw1") == DeviceName("fw1"));
  EXPECT_TRUE(DeviceName("fw1") == "fw1");
  EXPECT_TRUE(DeviceName("fw1") == std::string("fw1"));
  EXPECT_TRUE(DeviceName("fw1") == Brix::String("fw1"));
  EXPECT_TRUE(Brix::String("fw1") == DeviceName("fw1"));
  EXPECT_TRUE(DeviceName("fw1") != "fw2");
  EXPECT_FALSE(DeviceName("fw1") == std::string_view("fw1\0", 4));
}

TEST(DeviceName, StandsInOrderByUnsignedBytes) {
  const std::vector<DeviceName> ascending{"", "FW", "fw", "fw1", "fw10", "fw2", "\x7f", "\xc3\xbc"};
  for (std::size_t i = 0; i < ascending.size(); ++i) {
    for (std::size_t j = 0; j < ascending.size(); ++j) {
      EXPECT_EQ(ascending[i] <=> ascending[j], i <=> j) << ascending[i] << ' ' << ascending[j];
    }
  }
}

TEST(DeviceName, HasTheHashOfItsString) {
  EXPECT_EQ(DeviceName("fw1").hash(), Brix::String("fw1").hash());
  EXPECT_EQ(std::hash<DeviceName>()("fw1"), DeviceName("fw1").hash());
  EXPECT_EQ((std::unordered_set<DeviceName>{"fw1", "fw2", "fw1"}).size(), 2U);
}

TEST(DeviceName, PrintsAsItsText) {
  std::string out = "device ";
  kelAppend(out, DeviceName("fw1"));
  EXPECT_EQ(out, "device fw1");
  std::ostringstream stream;
  stream << std::setw(5) << DeviceName("fw1") << '|';
  EXPECT_EQ(stream.str(), "  fw1|");
}

TEST(DeviceName, ReadsAnyText) {
  DeviceName value("before");
  std::string why;
  EXPECT_TRUE(kelParse("fw 1/a", value, why));
  EXPECT_EQ(value, "fw 1/a");
  EXPECT_TRUE(kelParse("", value, why));
  EXPECT_EQ(value, "");
  EXPECT_EQ(why, "");
}

}  // namespace
}  // namespace Vela
