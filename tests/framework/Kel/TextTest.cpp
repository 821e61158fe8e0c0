#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "Kel/Text.h"

namespace {

enum class Colour : std::uint8_t { red, green, blue };
constexpr std::array<std::string_view, 3> kColours{"red", "green", "blue"};
const std::array<std::string_view, 3>& kelNames(Colour) { return kColours; }

}  // namespace

namespace Kel {
namespace {

template <class T>
std::string refusal(std::string_view text) {
  T value{};
  const T before = value;
  std::string why;
  EXPECT_FALSE(parseValue(text, value, why)) << text;
  EXPECT_EQ(value, before) << text;
  return why;
}

template <class T>
T parsed(std::string_view text) {
  T value{};
  std::string why;
  EXPECT_TRUE(parseValue(text, value, why)) << text << ": " << why;
  return value;
}

TEST(Text, PrintsBooleansAsWordsAndReadsNothingElse) {
  EXPECT_EQ(textOf(true), "true");
  EXPECT_EQ(textOf(false), "false");
  EXPECT_TRUE(parsed<bool>("true"));
  EXPECT_FALSE(parsed<bool>("false"));
  for (const char* text : {"", "1", "0", "True", "true ", "yes"}) {
    EXPECT_EQ(refusal<bool>(text), "\"" + std::string(text) + "\" is neither true nor false");
  }
}

TEST(Text, PrintsWholeNumbersAsDigits) {
  EXPECT_EQ(textOf(std::uint8_t{0}), "0");
  EXPECT_EQ(textOf(std::uint8_t{255}), "255");
  EXPECT_EQ(textOf(std::numeric_limits<std::uint32_t>::max()), "4294967295");
  EXPECT_EQ(textOf(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
}

TEST(Text, ReadsWholeNumbersUpToTheLargestOfTheirType) {
  EXPECT_EQ(parsed<std::uint8_t>("255"), 255);
  EXPECT_EQ(parsed<std::uint16_t>("65535"), 65535);
  EXPECT_EQ(parsed<std::uint32_t>("4294967295"), 4294967295U);
  EXPECT_EQ(refusal<std::uint8_t>("256"), "256 is too large; expected 0 to 255");
  EXPECT_EQ(refusal<std::uint16_t>("99999999999999999999999"),
            "99999999999999999999999 is too large; expected 0 to 65535");
  for (const char* text : {"", "-1", "+1", " 1", "1 ", "1.0", "0x10", "ten"}) {
    EXPECT_EQ(refusal<std::uint8_t>(text),
              "\"" + std::string(text) + "\" is not a whole number; expected 0 to 255");
  }
}

TEST(Text, PrintsSecondsWithSixDigits) {
  EXPECT_EQ(textOf(Seconds{12.5}), "12.500000");
  EXPECT_EQ(textOf(Seconds{0}), "0.000000");
  EXPECT_EQ(textOf(Seconds{-0.0}), "0.000000");
  EXPECT_EQ(textOf(Seconds{-1.25}), "-1.250000");
  EXPECT_EQ(textOf(Seconds{1700000000.123456}), "1700000000.123456");
  EXPECT_GE(textOf(std::numeric_limits<Seconds>::max()).size(), 309U);
}

TEST(Text, ReadsSecondsInPlainDecimalNotation) {
  EXPECT_EQ(parsed<Seconds>("0"), 0);
  EXPECT_EQ(parsed<Seconds>("12.5"), 12.5);
  EXPECT_EQ(parsed<Seconds>("-0.000001"), -0.000001);
  EXPECT_EQ(parsed<Seconds>("999999999999.999999"), 999999999999.999999);
  for (const char* text : {"", "-", ".", "1.", ".5", "1.1234567", "1e3", "nan", "inf", "+1",
                           "1000000000000", "1,5", "--1", "1.-5"}) {
    EXPECT_EQ(refusal<Seconds>(text), "\"" + std::string(text) +
                                          "\" is not a time; expected seconds such as 12.5, at "
                                          "most 12 digits before the point and six after it");
  }
}

TEST(Text, PrintsEnumeratorsByNameAndOrdinalsOutsideAsNumbers) {
  EXPECT_EQ(textOf(Colour::green), "green");
  EXPECT_EQ(textOf(static_cast<Colour>(3)), "3");
  EXPECT_EQ(textOf(static_cast<Colour>(255)), "255");
}

TEST(Text, ReadsEnumeratorsByNameAndListsThemInARefusal) {
  EXPECT_EQ(parsed<Colour>("blue"), Colour::blue);
  EXPECT_EQ(refusal<Colour>("Red"), "\"Red\" is unknown; expected red, green or blue");
  EXPECT_EQ(refusal<Colour>("1"), "\"1\" is unknown; expected red, green or blue");
  EXPECT_EQ(refusal<Colour>(""), "\"\" is unknown; expected red, green or blue");
}

TEST(Text, PrintsAndReadsStringsAsTheyAre) {
  EXPECT_EQ(textOf(String("a:b\\c")), "a:b\\c");
  EXPECT_EQ(parsed<String>("a:b\\c"), "a:b\\c");
  EXPECT_EQ(parsed<String>(""), "");
}

TEST(Text, CountsTheEditsBetweenTwoWords) {
  EXPECT_EQ(editDistance("", ""), 0U);
  EXPECT_EQ(editDistance("", "abc"), 3U);
  EXPECT_EQ(editDistance("abc", ""), 3U);
  EXPECT_EQ(editDistance("drop", "drop"), 0U);
  EXPECT_EQ(editDistance("drop", "dropp"), 1U);
  EXPECT_EQ(editDistance("kitten", "sitting"), 3U);
  EXPECT_EQ(editDistance("ab", "ba"), 2U);
}

}  // namespace
}  // namespace Kel
