#include "Norv/IpAddrParse.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <string_view>

#include "Kel/Exception.h"

namespace Norv {
namespace {

// The fault of a text, without what was expected instead.
std::string faultOf(std::string_view text) {
  IpGenAddr value("192.0.2.77");
  std::string why;
  std::string_view want;
  if (parseAddress(text, value, why, want)) return "none: it is " + value.stringValue();
  EXPECT_EQ(value, IpGenAddr("192.0.2.77")) << text << " touched the value";
  EXPECT_TRUE(want.starts_with("; expected ")) << text << " expects " << want;
  return why;
}

std::string whyNot(std::string_view text) {
  IpGenAddr value;
  std::string why;
  EXPECT_FALSE(kelParse(text, value, why)) << text;
  return why;
}

TEST(IpAddrParse, SaysWhatWasFoundAndWhatWasExpectedInstead) {
  EXPECT_EQ(
      whyNot("10.1.0.300"),
      "octet 300 is above 255; expected four decimal numbers from 0 to 255, such as 10.1.0.1");
  EXPECT_EQ(whyNot("2001:db8::12345"),
            "group \"12345\" has more than four digits; expected eight groups of one to four "
            "hexadecimal digits, perhaps one run of zero groups as \"::\", such as 2001:db8::1");
  EXPECT_EQ(
      whyNot("localhost"),
      "it looks like neither IPv4 nor IPv6; expected four decimal numbers from 0 to 255, such "
      "as 10.1.0.1, or groups of hexadecimal digits, such as 2001:db8::1");
  EXPECT_EQ(whyNot(""),
            "the text is empty; expected four decimal numbers from 0 to 255, such as 10.1.0.1, or "
            "groups of hexadecimal digits, such as 2001:db8::1");
}

TEST(IpAddrParse, RaisesTheRangeErrorWithTheTextFromTheConstructor) {
  try {
    const IpGenAddr address("10.1.0.300");
    FAIL() << "no exception, but " << address;
  } catch (const Kel::RangeException& error) {
    EXPECT_STREQ(error.what(),
                 "\"10.1.0.300\" is not an IP address: octet 300 is above 255; expected four "
                 "decimal numbers from 0 to 255, such as 10.1.0.1");
  }
}

TEST(IpAddrParse, LeavesTheReasonAloneWhenTheTextIsGood) {
  IpGenAddr value;
  std::string why = "untouched";
  EXPECT_TRUE(kelParse("2001:db8::1", value, why));
  EXPECT_EQ(value, IpGenAddr("2001:db8::1"));
  EXPECT_TRUE(kelParse("10.1.0.1", value, why));
  EXPECT_EQ(value, IpGenAddr("10.1.0.1"));
  EXPECT_EQ(why, "untouched");
}

TEST(IpAddrParse, NamesTheFaultOfAnIpv4Octet) {
  EXPECT_EQ(faultOf("256.1.0.1"), "octet 256 is above 255");
  EXPECT_EQ(faultOf("10.1000.0.1"), "octet 1000 is above 255");
  EXPECT_EQ(faultOf("10.1.4294967297.1"), "octet 4294967297 is above 255");
  EXPECT_EQ(faultOf("1.1.1.123456789012345678901234567890"),
            "octet 12345678901234567890... is above 255");
  EXPECT_EQ(faultOf("10.01.0.1"), "octet 01 has a leading zero");
  EXPECT_EQ(faultOf("10.1.0.00"), "octet 00 has a leading zero");
  EXPECT_EQ(faultOf("010.300.0.1"), "octet 010 has a leading zero");
  EXPECT_EQ(faultOf(".1.0.1"), "octet 1 is empty");
  EXPECT_EQ(faultOf("10..0.1"), "octet 2 is empty");
  EXPECT_EQ(faultOf("10.1.0."), "octet 4 is empty");
}

TEST(IpAddrParse, NamesTheFaultOfAnIpv4Address) {
  EXPECT_EQ(faultOf("10"), "only 1 of four octets given");
  EXPECT_EQ(faultOf("10.1.1"), "only 3 of four octets given");
  EXPECT_EQ(faultOf("10.1.0.1.2"), "more than four octets given");
  EXPECT_EQ(faultOf("10.1.0.1."), "more than four octets given");
  EXPECT_EQ(faultOf("10.1.0.1/32"), "the length \"/32\" is allowed in a prefix only");
  EXPECT_EQ(faultOf("10.1/16"), "the length \"/16\" is allowed in a prefix only");
  EXPECT_EQ(faultOf("10.1.0.1%eth0"), "the zone \"%eth0\" is not allowed");
  EXPECT_EQ(faultOf("10.1.0.1:8080"), "the port \":8080\" is not allowed");
  EXPECT_EQ(faultOf("10.1.0.1 "), "\" \" at position 9 has no place in an IPv4 address");
  EXPECT_EQ(faultOf(" 10.1.0.1"), "\" \" at position 1 has no place in an IPv4 address");
  EXPECT_EQ(faultOf("10.1.0.x"), "\"x\" at position 8 has no place in an IPv4 address");
  EXPECT_EQ(faultOf("10.0x1.0.1"), "\"x\" at position 5 has no place in an IPv4 address");
  EXPECT_EQ(faultOf("10.-1.0.1"), "\"-\" at position 4 has no place in an IPv4 address");
  EXPECT_EQ(faultOf("10.1.0.1\n"), "\"\\x0a\" at position 9 has no place in an IPv4 address");
  EXPECT_EQ(faultOf(std::string_view("10.1.0.1\0", 9)),
            "\"\\x00\" at position 9 has no place in an IPv4 address");
}

TEST(IpAddrParse, NamesTheFaultOfAnIpv6Group) {
  EXPECT_EQ(faultOf("2001:0db80::1"), "group \"0db80\" has more than four digits");
  EXPECT_EQ(faultOf("::00001"), "group \"00001\" has more than four digits");
  EXPECT_EQ(faultOf("2001:dg8::1"), "\"g\" at position 7 has no place in an IPv6 address");
  EXPECT_EQ(faultOf("[::1]"), "\"[\" at position 1 has no place in an IPv6 address");
  EXPECT_EQ(faultOf("::1]"), "\"]\" at position 4 has no place in an IPv6 address");
  EXPECT_EQ(faultOf(" ::1"), "\" \" at position 1 has no place in an IPv6 address");
  EXPECT_EQ(faultOf("::1 "), "\" \" at position 4 has no place in an IPv6 address");
  EXPECT_EQ(faultOf("::-1"), "\"-\" at position 3 has no place in an IPv6 address");
  EXPECT_EQ(faultOf("::\xc3\xa9"), "\"\\xc3\" at position 3 has no place in an IPv6 address");
}

TEST(IpAddrParse, NamesTheFaultOfAnIpv6Address) {
  EXPECT_EQ(faultOf("1:2:3:4:5:6:7"), "only 7 of eight groups given, and no \"::\"");
  EXPECT_EQ(faultOf("1:2"), "only 2 of eight groups given, and no \"::\"");
  EXPECT_EQ(faultOf("1:2:3:4:5:6:7:8:9"), "more than eight groups given");
  EXPECT_EQ(faultOf("1:2:3:4:5:6:7::8:9"), "more than eight groups given");
  EXPECT_EQ(faultOf("1:2:3:4::5:6:7:8"),
            "\"::\" stands for no group, because eight groups are given");
  EXPECT_EQ(faultOf("1:2:3:4:5:6:7:8::"),
            "\"::\" stands for no group, because eight groups are given");
  EXPECT_EQ(faultOf("::1:2:3:4:5:6:7:8"),
            "\"::\" stands for no group, because eight groups are given");
  EXPECT_EQ(faultOf("1::2::3"), "\"::\" is given more than once");
  EXPECT_EQ(faultOf("::1::"), "\"::\" is given more than once");
  EXPECT_EQ(faultOf(":::"), "three colons stand in a row");
  EXPECT_EQ(faultOf("1:::2"), "three colons stand in a row");
  EXPECT_EQ(faultOf(":"), "a single colon stands at the start");
  EXPECT_EQ(faultOf(":1:2:3:4:5:6:7"), "a single colon stands at the start");
  EXPECT_EQ(faultOf("1:2:3:4:5:6:7:"), "a single colon stands at the end");
  EXPECT_EQ(faultOf("::1:"), "a single colon stands at the end");
  EXPECT_EQ(faultOf("fe80::1%eth0"), "the zone \"%eth0\" is not allowed");
  EXPECT_EQ(faultOf("fe80::%1"), "the zone \"%1\" is not allowed");
  EXPECT_EQ(faultOf("2001:db8::/32"), "the length \"/32\" is allowed in a prefix only");
}

TEST(IpAddrParse, NamesTheFaultOfADottedPart) {
  EXPECT_EQ(faultOf("::ffff:10.1.0.256"), "dotted part \"10.1.0.256\": octet 256 is above 255");
  EXPECT_EQ(faultOf("::ffff:10.1.0.01"), "dotted part \"10.1.0.01\": octet 01 has a leading zero");
  EXPECT_EQ(faultOf("::ffff:10.1"), "dotted part \"10.1\": only 2 of four octets given");
  EXPECT_EQ(faultOf("::ffff:.1.0.1"), "dotted part \".1.0.1\": octet 1 is empty");
  EXPECT_EQ(faultOf("::10.1.0.1.1"), "dotted part \"10.1.0.1.1\": more than four octets given");
  EXPECT_EQ(faultOf("::a.1.0.1"),
            "dotted part \"a.1.0.1\": \"a\" at position 1 has no place in an IPv4 address");
  EXPECT_EQ(faultOf("::10.1.0.1%1"), "dotted part \"10.1.0.1%1\": the zone \"%1\" is not allowed");
  EXPECT_EQ(faultOf("::10.1.0.1:1"), "groups follow the dotted part, which has to be last");
  EXPECT_EQ(faultOf("1:2:3:4:5:6:7:10.1.0.1"),
            "more than eight groups given, the dotted part counted as two");
  EXPECT_EQ(faultOf("1:2:3:4:5:6::10.1.0.1"),
            "\"::\" stands for no group, because eight groups are given");
  EXPECT_EQ(faultOf("1:2:3:4:5:10.1.0.1"), "only 7 of eight groups given, and no \"::\"");
}

// Compares with the operating system's own reader, whose two grammars are the same as ours.
TEST(IpAddrParse, AgreesWithTheSystemOnGarbledAddresses) {
  constexpr std::array<std::string_view, 8> seeds{
      "10.1.0.1",        "255.255.255.255",     "::",         "2001:db8::1", "1:2:3:4:5:6:7:8",
      "::ffff:10.1.0.1", "1:2:3:4:5:6:1.2.3.4", "fe80::a:0:0"};
  constexpr std::string_view alphabet = "0123456789abfAF::::....gx%/ ";
  const auto seed = std::random_device{}();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  const auto below = [&random](std::size_t end) {
    return std::uniform_int_distribution<std::size_t>(0, end - 1)(random);
  };
  unsigned accepted = 0;
  for (unsigned round = 0; round < 200'000; ++round) {
    std::string text(seeds[below(seeds.size())]);
    for (std::size_t edits = below(4); edits != 0; --edits) {
      const std::size_t at = below(text.size() + 1);
      const std::size_t removed = std::min(below(3), text.size() - at);
      text.replace(at, removed, below(3), alphabet[below(alphabet.size())]);
    }
    std::array<std::uint8_t, 16> bytes{};
    const bool isIpv4 = inet_pton(AF_INET, text.c_str(), bytes.data()) == 1;
    const bool isIpv6 = !isIpv4 && inet_pton(AF_INET6, text.c_str(), bytes.data()) == 1;
    IpGenAddr value;
    std::string why;
    ASSERT_EQ(kelParse(text, value, why), isIpv4 || isIpv6) << text << ' ' << why;
    if (!isIpv4 && !isIpv6) {
      ASSERT_NE(why.find("; expected "), std::string::npos) << text << ' ' << why;
      ASSERT_FALSE(why.starts_with(';')) << text;
      continue;
    }
    ++accepted;
    ASSERT_EQ(value.isIpv4(), isIpv4) << text;
    ASSERT_TRUE(std::equal(value.bytes().begin(), value.bytes().end(), bytes.begin())) << text;
    ASSERT_EQ(IpGenAddr(value.stringValue()), value) << text;
  }
  EXPECT_GT(accepted, 20'000U);
}

}  // namespace
}  // namespace Norv
