#include "Norv/IpProto.h"

#include <gtest/gtest.h>

#include <compare>
#include <iomanip>
#include <set>
#include <sstream>
#include <string>
#include <type_traits>
#include <unordered_set>

namespace Norv {
namespace {

std::string whyNot(std::string_view text) {
  IpProto value(77);
  std::string why;
  EXPECT_FALSE(kelParse(text, value, why)) << text;
  EXPECT_EQ(value, IpProto(77)) << text << " touched the value";
  return why;
}

TEST(IpProto, TakesOneByteThatMayBeCopiedAsMemory) {
  EXPECT_EQ(sizeof(IpProto), 1U);
  EXPECT_TRUE(std::is_trivially_copyable_v<IpProto>);
  EXPECT_TRUE(std::is_standard_layout_v<IpProto>);
}

TEST(IpProto, ConvertsFromItsNumber) {
  constexpr IpProto tcp = 6;
  static_assert(tcp.value() == 6);
  EXPECT_EQ(tcp, IpProto(6));
  EXPECT_NE(tcp, IpProto(17));
  EXPECT_EQ(IpProto().value(), 0);
}

TEST(IpProto, StandsInOrderByNumber) {
  EXPECT_EQ(IpProto(6) <=> IpProto(17), std::strong_ordering::less);
  EXPECT_EQ(IpProto(255) <=> IpProto(0), std::strong_ordering::greater);
  EXPECT_EQ(IpProto(6) <=> IpProto(6), std::strong_ordering::equal);
}

TEST(IpProto, PrintsAndReadsEveryNumberInDecimal) {
  for (unsigned number = 0; number < 256; ++number) {
    const IpProto value(static_cast<std::uint8_t>(number));
    EXPECT_EQ(value.stringValue(), std::to_string(number));
    IpProto read(static_cast<std::uint8_t>(number + 1));
    std::string why;
    EXPECT_TRUE(kelParse(std::to_string(number), read, why)) << why;
    EXPECT_EQ(read, value);
    EXPECT_EQ(why, "");
  }
}

TEST(IpProto, AppendsBehindWhatStandsThere) {
  std::string out = "proto ";
  kelAppend(out, IpProto(17));
  IpProto(6).appendTo(out += ' ');
  EXPECT_EQ(out, "proto 17 6");
}

TEST(IpProto, GoesToAStreamAsANumberAndNotAsACharacter) {
  std::ostringstream out;
  out << IpProto(65) << std::setw(5) << IpProto(132);
  EXPECT_EQ(out.str(), "65  132");
}

TEST(IpProto, SaysWhatWasFoundAndWhatWasExpectedInstead) {
  const std::string want = "; expected a protocol number from 0 to 255, such as 6 for TCP";
  EXPECT_EQ(whyNot("256"), "number 256 is above 255" + want);
  EXPECT_EQ(whyNot("4294967302"), "number 4294967302 is above 255" + want);
  EXPECT_EQ(whyNot("06"), "number 06 has a leading zero" + want);
  EXPECT_EQ(whyNot(""), "the text is empty" + want);
  EXPECT_EQ(whyNot("tcp"), "\"t\" at position 1 is not a decimal digit" + want);
  EXPECT_EQ(whyNot("6 "), "\" \" at position 2 is not a decimal digit" + want);
  EXPECT_EQ(whyNot("-6"), "\"-\" at position 1 is not a decimal digit" + want);
  EXPECT_EQ(whyNot("6.0"), "\".\" at position 2 is not a decimal digit" + want);
}

TEST(IpProto, GivesEveryNumberALowByteOfItsOwnInTheHash) {
  std::set<std::uint32_t> lowBytes;
  for (unsigned number = 0; number < 256; ++number) {
    lowBytes.insert(IpProto(static_cast<std::uint8_t>(number)).hash() & 0xffU);
  }
  EXPECT_EQ(lowBytes.size(), 256U);
  EXPECT_EQ(std::hash<IpProto>()(IpProto(6)), IpProto(6).hash());
  EXPECT_EQ((std::unordered_set<IpProto>{6, 17, 6}).size(), 2U);
}

}  // namespace
}  // namespace Norv
