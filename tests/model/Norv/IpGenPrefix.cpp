#include "Norv/IpGenPrefix.h"

#include <gtest/gtest.h>

#include <array>
#include <iomanip>
#include <sstream>
#include <string>
#include <type_traits>
#include <unordered_set>
#include <vector>

#include "Kel/Exception.h"
#include "model/Norv/HashSpread.h"

namespace Norv {
namespace {

std::string printed(std::string_view text) { return IpGenPrefix(text).stringValue(); }

std::string whyNot(std::string_view text) {
  IpGenPrefix value("192.0.2.0/24");
  std::string why;
  EXPECT_FALSE(kelParse(text, value, why)) << text;
  EXPECT_EQ(value, IpGenPrefix("192.0.2.0/24")) << text << " touched the value";
  return why;
}

// The fault of a text, without what was expected instead, which is the same for every prefix.
std::string faultOf(std::string_view text) {
  const std::string why = whyNot(text);
  const std::string want =
      "; expected an address, a slash and a length in bits, such as 10.1.0.0/16 or 2001:db8::/32";
  EXPECT_TRUE(why.ends_with(want)) << why;
  return why.substr(0, why.size() - want.size());
}

TEST(IpGenPrefix, TakesEighteenUnalignedBytesThatMayBeCopiedAsMemory) {
  EXPECT_EQ(sizeof(IpGenPrefix), 18U);
  EXPECT_EQ(alignof(IpGenPrefix), 1U);
  EXPECT_TRUE(std::is_trivially_copyable_v<IpGenPrefix>);
  EXPECT_TRUE(std::is_standard_layout_v<IpGenPrefix>);
}

TEST(IpGenPrefix, HoldsEveryIpv4AddressByDefault) {
  const IpGenPrefix prefix;
  EXPECT_EQ(prefix, IpGenPrefix("0.0.0.0/0"));
  EXPECT_TRUE(prefix.isIpv4());
  EXPECT_EQ(prefix.length(), 0U);
  EXPECT_EQ(prefix.stringValue(), "0.0.0.0/0");
}

TEST(IpGenPrefix, ReadsAnAddressAndALength) {
  const IpGenPrefix ipv4("10.1.0.0/16");
  EXPECT_EQ(ipv4.address(), IpGenAddr("10.1.0.0"));
  EXPECT_EQ(ipv4.length(), 16U);
  EXPECT_TRUE(ipv4.isIpv4());
  EXPECT_FALSE(ipv4.isIpv6());
  EXPECT_EQ(ipv4.family(), IpGenAddr::Family::ipv4);
  const IpGenPrefix ipv6("2001:DB8::/32");
  EXPECT_EQ(ipv6.address(), IpGenAddr("2001:db8::"));
  EXPECT_EQ(ipv6.length(), 32U);
  EXPECT_TRUE(ipv6.isIpv6());
  EXPECT_FALSE(ipv6.isIpv4());
  EXPECT_EQ(ipv6.family(), IpGenAddr::Family::ipv6);
}

TEST(IpGenPrefix, IsBuiltFromAnAddressAndALength) {
  EXPECT_EQ(IpGenPrefix(IpGenAddr("10.1.2.3"), 16), IpGenPrefix("10.1.0.0/16"));
  EXPECT_EQ(IpGenPrefix(IpGenAddr("10.1.2.3"), 32), IpGenPrefix("10.1.2.3/32"));
  EXPECT_EQ(IpGenPrefix(IpGenAddr("2001:db8::1"), 128), IpGenPrefix("2001:db8::1/128"));
}

TEST(IpGenPrefix, RaisesTheRangeErrorForALengthAboveTheWidthOfTheAddress) {
  const auto messageOf = [](std::string_view address, unsigned length) -> std::string {
    try {
      return "none: it is " + IpGenPrefix(IpGenAddr(address), length).stringValue();
    } catch (const Kel::RangeException& error) {
      return error.what();
    }
  };
  EXPECT_EQ(messageOf("10.1.2.3", 33), "length 33 of a prefix of 10.1.2.3 is above 32");
  EXPECT_EQ(messageOf("10.1.2.3", 256), "length 256 of a prefix of 10.1.2.3 is above 32");
  EXPECT_EQ(messageOf("::1", 129), "length 129 of a prefix of ::1 is above 128");
  EXPECT_EQ(messageOf("::1", 4294967295U), "length 4294967295 of a prefix of ::1 is above 128");
}

TEST(IpGenPrefix, CanonicalisesHostBits) {
  EXPECT_EQ(IpGenPrefix("10.1.2.3/8"), IpGenPrefix("10.0.0.0/8"));
  EXPECT_EQ(printed("10.1.2.3/8"), "10.0.0.0/8");
  EXPECT_EQ(printed("255.255.255.255/0"), "0.0.0.0/0");
  EXPECT_EQ(printed("255.255.255.255/1"), "128.0.0.0/1");
  EXPECT_EQ(printed("255.255.255.255/9"), "255.128.0.0/9");
  EXPECT_EQ(printed("255.255.255.255/23"), "255.255.254.0/23");
  EXPECT_EQ(printed("255.255.255.255/24"), "255.255.255.0/24");
  EXPECT_EQ(printed("255.255.255.255/31"), "255.255.255.254/31");
  EXPECT_EQ(printed("255.255.255.255/32"), "255.255.255.255/32");
  EXPECT_EQ(printed("ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff/0"), "::/0");
  EXPECT_EQ(printed("ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff/13"), "fff8::/13");
  EXPECT_EQ(printed("ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff/64"), "ffff:ffff:ffff:ffff::/64");
  EXPECT_EQ(printed("ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff/127"),
            "ffff:ffff:ffff:ffff:ffff:ffff:ffff:fffe/127");
  EXPECT_EQ(printed("ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff/128"),
            "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff/128");
}

TEST(IpGenPrefix, TellsPrefixesOfOneAddressApartByLength) {
  EXPECT_NE(IpGenPrefix("10.0.0.0/8"), IpGenPrefix("10.0.0.0/9"));
  EXPECT_NE(IpGenPrefix("0.0.0.0/0"), IpGenPrefix("::/0"));
}

TEST(IpGenPrefix, PrintsTheAddressInItsOwnFormAndTheLength) {
  EXPECT_EQ(printed("2001:DB8:0:0:1:0:0:1/128"), "2001:db8::1:0:0:1/128");
  EXPECT_EQ(printed("::ffff:10.1.2.3/112"), "::ffff:10.1.0.0/112");
  EXPECT_EQ(printed("::ffff:0:0/96"), "::ffff:0.0.0.0/96");
  EXPECT_EQ(printed("::ffff:0:0/95"), "::fffe:0:0/95");
  EXPECT_EQ(printed("100.200.100.200/30"), "100.200.100.200/30");
}

TEST(IpGenPrefix, PrintsAllLengths) {
  for (unsigned length = 0; length <= 128; ++length) {
    EXPECT_EQ(printed("::/" + std::to_string(length)), "::/" + std::to_string(length));
  }
}

TEST(IpGenPrefix, AppendsBehindWhatStandsThere) {
  std::string out = "add ";
  kelAppend(out, IpGenPrefix("10.1.0.0/16"));
  IpGenPrefix("::/0").appendTo(out += ' ');
  EXPECT_EQ(out, "add 10.1.0.0/16 ::/0");
}

TEST(IpGenPrefix, GoesToAStreamAsOneField) {
  std::ostringstream out;
  out << std::setw(12) << IpGenPrefix("10.1.0.0/16") << '|' << IpGenPrefix("::/0");
  EXPECT_EQ(out.str(), " 10.1.0.0/16|::/0");
}

TEST(IpGenPrefix, ContainsTheAddressesThatShareItsBits) {
  const IpGenPrefix prefix("10.1.128.0/17");
  EXPECT_TRUE(prefix.contains(IpGenAddr("10.1.128.0")));
  EXPECT_TRUE(prefix.contains(IpGenAddr("10.1.255.255")));
  EXPECT_FALSE(prefix.contains(IpGenAddr("10.1.127.255")));
  EXPECT_FALSE(prefix.contains(IpGenAddr("10.2.0.0")));
  EXPECT_TRUE(IpGenPrefix("10.1.0.1/32").contains(IpGenAddr("10.1.0.1")));
  EXPECT_FALSE(IpGenPrefix("10.1.0.1/32").contains(IpGenAddr("10.1.0.0")));
  EXPECT_TRUE(IpGenPrefix("2001:db8::/33").contains(IpGenAddr("2001:db8:7fff::1")));
  EXPECT_FALSE(IpGenPrefix("2001:db8::/33").contains(IpGenAddr("2001:db8:8000::1")));
}

TEST(IpGenPrefix, ContainsNoAddressOfTheOtherFamily) {
  EXPECT_TRUE(IpGenPrefix("0.0.0.0/0").contains(IpGenAddr("255.255.255.255")));
  EXPECT_FALSE(IpGenPrefix("0.0.0.0/0").contains(IpGenAddr("::")));
  EXPECT_TRUE(IpGenPrefix("::/0").contains(IpGenAddr("ffff::")));
  EXPECT_FALSE(IpGenPrefix("::/0").contains(IpGenAddr("0.0.0.0")));
  EXPECT_FALSE(IpGenPrefix("::ffff:10.0.0.0/104").contains(IpGenAddr("10.0.0.1")));
}

TEST(IpGenPrefix, StandsInOrderByFamilyThenByAddressThenByLength) {
  const std::vector<IpGenPrefix> ascending{IpGenPrefix("0.0.0.0/0"),
                                           IpGenPrefix("9.0.0.0/32"),
                                           IpGenPrefix("10.0.0.0/8"),
                                           IpGenPrefix("10.0.0.0/16"),
                                           IpGenPrefix("10.0.1.0/24"),
                                           IpGenPrefix("200.0.0.0/8"),
                                           IpGenPrefix("::/0"),
                                           IpGenPrefix("::/128"),
                                           IpGenPrefix("::ffff:10.0.0.0/104"),
                                           IpGenPrefix("2001:db8::/32"),
                                           IpGenPrefix("2001:db8::/33"),
                                           IpGenPrefix("ff00::/8")};
  for (std::size_t i = 0; i < ascending.size(); ++i) {
    for (std::size_t j = 0; j < ascending.size(); ++j) {
      EXPECT_EQ(ascending[i] <=> ascending[j], i <=> j) << ascending[i] << ' ' << ascending[j];
      EXPECT_EQ(ascending[i] == ascending[j], i == j) << ascending[i] << ' ' << ascending[j];
    }
  }
}

TEST(IpGenPrefix, SaysWhatWasFoundAndWhatWasExpectedInstead) {
  EXPECT_EQ(whyNot("10.1.0.0/33"),
            "IPv4 length 33 is above 32; expected an address, a slash and a length in "
            "bits, such as 10.1.0.0/16 or 2001:db8::/32");
  try {
    const IpGenPrefix prefix("10.1.0.0");
    FAIL() << "no exception, but " << prefix;
  } catch (const Kel::RangeException& error) {
    EXPECT_STREQ(error.what(),
                 "\"10.1.0.0\" is not an IP prefix: the length is missing; expected an address, a "
                 "slash and a length in bits, such as 10.1.0.0/16 or 2001:db8::/32");
  }
}

TEST(IpGenPrefix, NamesTheFaultOfALength) {
  EXPECT_EQ(faultOf("10.1.0.0"), "the length is missing");
  EXPECT_EQ(faultOf("2001:db8::"), "the length is missing");
  EXPECT_EQ(faultOf("10.1.0.0/"), "the length after the slash is missing");
  EXPECT_EQ(faultOf("10.1.0.0/33"), "IPv4 length 33 is above 32");
  EXPECT_EQ(faultOf("10.1.0.0/256"), "IPv4 length 256 is above 32");
  EXPECT_EQ(faultOf("10.1.0.0/4294967304"), "IPv4 length 4294967304 is above 32");
  EXPECT_EQ(faultOf("::/129"), "IPv6 length 129 is above 128");
  EXPECT_EQ(faultOf("10.1.0.0/08"), "IPv4 length 08 has a leading zero");
  EXPECT_EQ(faultOf("::/00"), "IPv6 length 00 has a leading zero");
  EXPECT_EQ(faultOf("10.1.0.0/+8"), "length \"+8\" is not a decimal number");
  EXPECT_EQ(faultOf("10.1.0.0/-1"), "length \"-1\" is not a decimal number");
  EXPECT_EQ(faultOf("10.1.0.0/8 "), "length \"8 \" is not a decimal number");
  EXPECT_EQ(faultOf("10.1.0.0/ 8"), "length \" 8\" is not a decimal number");
  EXPECT_EQ(faultOf("10.1.0.0/8/8"), "length \"8/8\" is not a decimal number");
  EXPECT_EQ(faultOf("10.1.0.0/x"), "length \"x\" is not a decimal number");
  EXPECT_EQ(faultOf("10.1.0.0/255.255.0.0"),
            "length \"255.255.0.0\" is not a decimal number; a mask is not allowed");
  EXPECT_EQ(faultOf("2001:db8::/ffff:ffff::"),
            "length \"ffff:ffff::\" is not a decimal number; a mask is not allowed");
}

TEST(IpGenPrefix, NamesTheFaultOfItsAddress) {
  EXPECT_EQ(faultOf(""), "the text is empty");
  EXPECT_EQ(faultOf("/8"), "the address before the slash is missing");
  EXPECT_EQ(faultOf("10.300.0.0/16"), "octet 300 is above 255");
  EXPECT_EQ(faultOf("10/8"), "only 1 of four octets given");
  EXPECT_EQ(faultOf("10.1.0/24"), "only 3 of four octets given");
  EXPECT_EQ(faultOf("010.0.0.0/8"), "octet 010 has a leading zero");
  EXPECT_EQ(faultOf("2001:db8:/32"), "a single colon stands at the end");
  EXPECT_EQ(faultOf("2001:db8/32"), "only 2 of eight groups given, and no \"::\"");
  EXPECT_EQ(faultOf("1::2::3/64"), "\"::\" is given more than once");
  EXPECT_EQ(faultOf("fe80::%eth0/64"), "the zone \"%eth0\" is not allowed");
  EXPECT_EQ(faultOf("any"), "it looks like neither IPv4 nor IPv6");
  EXPECT_EQ(faultOf("10.1.0.x"), "\"x\" at position 8 has no place in an IPv4 address");
}

TEST(IpGenPrefix, HashesEqualPrefixesEqually) {
  EXPECT_EQ(IpGenPrefix("10.1.2.3/8").hash(), IpGenPrefix("10.0.0.0/8").hash());
  EXPECT_EQ(std::hash<IpGenPrefix>()(IpGenPrefix("::/0")), IpGenPrefix("::/0").hash());
  const std::unordered_set<IpGenPrefix> set{IpGenPrefix("10.1.2.3/8"), IpGenPrefix("10.0.0.0/8"),
                                            IpGenPrefix("10.0.0.0/9")};
  EXPECT_EQ(set.size(), 2U);
}

TEST(IpGenPrefix, HashesThePrefixesOfOneAddressDifferently) {
  std::unordered_set<std::uint32_t> hashes;
  for (unsigned length = 0; length <= 32; ++length) {
    hashes.insert(IpGenPrefix(IpGenAddr("0.0.0.0"), length).hash());
  }
  for (unsigned length = 0; length <= 128; ++length) {
    hashes.insert(IpGenPrefix(IpGenAddr("::"), length).hash());
  }
  EXPECT_EQ(hashes.size(), 33U + 129U);
}

TEST(IpGenPrefix, SpreadsTheHashesOfNeighboursOverAllBits) {
  HashSpread::expectSpread("hosts", HashSpread::hashesOf([](std::uint32_t i) {
                             return IpGenPrefix(IpGenAddr::ipv4(0x0a010000U + i), 32);
                           }));
  HashSpread::expectSpread("networks of 256 hosts", HashSpread::hashesOf([](std::uint32_t i) {
                             return IpGenPrefix(IpGenAddr::ipv4(i << 8), 24);
                           }));
  HashSpread::expectSpread("networks of 65536 hosts", HashSpread::hashesOf([](std::uint32_t i) {
                             return IpGenPrefix(IpGenAddr::ipv4(i << 16), 16);
                           }));
  HashSpread::expectSpread("all lengths from 17 to 32", HashSpread::hashesOf([](std::uint32_t i) {
                             return IpGenPrefix(IpGenAddr::ipv4(i / 16 << 20 | 0x000fffffU),
                                                17 + i % 16);
                           }));
  for (const std::size_t byte : {2U, 4U, 6U, 7U, 14U}) {
    HashSpread::expectSpread("IPv6 networks", HashSpread::hashesOf([byte](std::uint32_t i) {
                               std::array<std::uint8_t, 16> bytes{0x20, 0x01};
                               bytes[byte] = static_cast<std::uint8_t>(i >> 8);
                               bytes[byte + 1] = static_cast<std::uint8_t>(i);
                               return IpGenPrefix(IpGenAddr::ipv6(bytes),
                                                  static_cast<unsigned>(byte + 2) * 8);
                             }));
  }
}

}  // namespace
}  // namespace Norv
