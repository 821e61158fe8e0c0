#include "L3/VrfName.h"

#include <gtest/gtest.h>

#include <compare>
#include <cstddef>
#include <iomanip>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_set>
#include <vector>

#include "Brix/String.h"
#include "Kel/Exception.h"

namespace L3 {
namespace {

const std::string hundred(100, 'v');
const std::string hundredAndOne(101, 'v');

// The message of the range error that `make` raises.
template <typename Make>
std::string messageOf(Make make) {
  try {
    return "none: it is " + std::string(make().stringValue());
  } catch (const Kel::RangeException& error) {
    return error.what();
  }
}

TEST(VrfName, IsEmptyByDefault) {
  EXPECT_EQ(VrfName().stringValue(), "");
  EXPECT_EQ(VrfName(), VrfName(""));
}

TEST(VrfName, TakesEightBytes) { EXPECT_EQ(sizeof(VrfName), 8U); }

TEST(VrfName, IsBuiltFromEveryKindOfStringOnlyWhenAskedTo) {
  const Brix::String shared("red");
  EXPECT_EQ(VrfName(shared).stringValue(), "red");
  EXPECT_EQ(VrfName(std::string_view("red")).stringValue(), "red");
  EXPECT_EQ(VrfName(std::string("red")).stringValue(), "red");
  EXPECT_EQ(VrfName("red").stringValue(), "red");
  EXPECT_FALSE((std::is_convertible_v<Brix::String, VrfName>));
  EXPECT_FALSE((std::is_convertible_v<std::string_view, VrfName>));
  EXPECT_FALSE((std::is_convertible_v<std::string, VrfName>));
  EXPECT_FALSE((std::is_convertible_v<const char*, VrfName>));
}

TEST(VrfName, SharesTheTextOfTheStringItIsBuiltFrom) {
  const Brix::String shared("a name that is stored once");
  EXPECT_EQ(VrfName(shared).stringValue().c_str(), shared.c_str());
}

TEST(VrfName, HoldsAtMostAHundredBytes) {
  static_assert(VrfName::maxLength() == 100);
  EXPECT_EQ(VrfName(hundred).stringValue(), hundred);
  const std::string message = "Kel::String::bytes > maxLength() not allowed";
  EXPECT_EQ(messageOf([] { return VrfName(hundredAndOne); }), message);
  EXPECT_EQ(messageOf([] { return VrfName(hundredAndOne.c_str()); }), message);
  EXPECT_EQ(messageOf([] { return VrfName(std::string_view(hundredAndOne)); }), message);
  EXPECT_EQ(messageOf([] { return VrfName(Brix::String(hundredAndOne)); }), message);
}

TEST(VrfName, OfEveryLengthUpToTheLongestIsTakenAndRead) {
  for (std::size_t size = 0; size <= 100; ++size) {
    const std::string text(size, 'v');
    EXPECT_EQ(VrfName(text).stringValue(), text);
    VrfName value("before");
    std::string why;
    EXPECT_TRUE(kelParse(text, value, why)) << size << why;
    EXPECT_EQ(value, text);
  }
}

TEST(VrfName, CountsBytesAndNotCharacters) {
  std::string umlauts;
  for (int i = 0; i < 50; ++i) umlauts += "\xc3\xbc";
  EXPECT_EQ(VrfName(umlauts).stringValue().size(), 100U);
  EXPECT_EQ(messageOf([&] { return VrfName(umlauts + 'e'); }),
            "Kel::String::bytes > maxLength() not allowed");
}

TEST(VrfName, EqualsANameAndATextOfTheSameBytes) {
  EXPECT_TRUE(VrfName("red") == VrfName("red"));
  EXPECT_FALSE(VrfName("red") == VrfName("Red"));
  EXPECT_TRUE(VrfName("red") == std::string_view("red"));
  EXPECT_TRUE(std::string_view("red") == VrfName("red"));
  EXPECT_TRUE(VrfName("red") == "red");
  EXPECT_TRUE(VrfName("red") == std::string("red"));
  EXPECT_TRUE(VrfName("red") == Brix::String("red"));
  EXPECT_TRUE(VrfName("red") != "blue");
  EXPECT_FALSE(VrfName("red") == std::string_view("red\0", 4));
}

TEST(VrfName, StandsInOrderByUnsignedBytes) {
  const std::vector<VrfName> ascending{VrfName(""),     VrfName("Z"),       VrfName("a"),
                                       VrfName("aa"),   VrfName("red"),     VrfName("red1"),
                                       VrfName("\x7f"), VrfName("\xc3\xbc")};
  for (std::size_t i = 0; i < ascending.size(); ++i) {
    for (std::size_t j = 0; j < ascending.size(); ++j) {
      EXPECT_EQ(ascending[i] <=> ascending[j], i <=> j) << ascending[i] << ' ' << ascending[j];
    }
  }
}

TEST(VrfName, HasTheHashOfItsString) {
  EXPECT_EQ(VrfName("red").hash(), Brix::String("red").hash());
  EXPECT_EQ(std::hash<VrfName>()(VrfName("red")), VrfName("red").hash());
  const std::unordered_set<VrfName> set{VrfName("red"), VrfName("blue"), VrfName("red")};
  EXPECT_EQ(set.size(), 2U);
}

TEST(VrfName, PrintsAsItsText) {
  std::string out = "vrf ";
  kelAppend(out, VrfName("red"));
  EXPECT_EQ(out, "vrf red");
  std::ostringstream stream;
  stream << std::setw(5) << VrfName("red") << '|';
  EXPECT_EQ(stream.str(), "  red|");
}

TEST(VrfName, ReadsAnyTextOfAtMostAHundredBytes) {
  VrfName value("before");
  std::string why;
  EXPECT_TRUE(kelParse("net red/1", value, why));
  EXPECT_EQ(value, "net red/1");
  EXPECT_TRUE(kelParse("", value, why));
  EXPECT_EQ(value, "");
  EXPECT_TRUE(kelParse(hundred, value, why));
  EXPECT_EQ(value, hundred);
  EXPECT_EQ(why, "");
}

TEST(VrfName, SaysHowLongATextIsThatItDoesNotRead) {
  VrfName value("before");
  std::string why;
  EXPECT_FALSE(kelParse(hundredAndOne, value, why));
  EXPECT_EQ(why,
            "the name has 101 bytes; expected at most 100 bytes, of which a letter may take "
            "several");
  EXPECT_EQ(value, "before");
}

}  // namespace
}  // namespace L3
