#include "Norv/IpGenAddr.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iomanip>
#include <sstream>
#include <type_traits>
#include <unordered_set>
#include <vector>

#include "Kel/Exception.h"
#include "model/Norv/HashSpread.h"

namespace Norv {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(const IpGenAddr& address) { return {address.bytes().begin(), address.bytes().end()}; }

std::string printed(std::string_view text) { return IpGenAddr(text).stringValue(); }

TEST(IpGenAddr, TakesSeventeenUnalignedBytesThatMayBeCopiedAsMemory) {
  EXPECT_EQ(sizeof(IpGenAddr), 17U);
  EXPECT_EQ(alignof(IpGenAddr), 1U);
  EXPECT_TRUE(std::is_trivially_copyable_v<IpGenAddr>);
  EXPECT_TRUE(std::is_standard_layout_v<IpGenAddr>);
}

TEST(IpGenAddr, IsTheIpv4AddressOfZerosByDefault) {
  const IpGenAddr address;
  EXPECT_TRUE(address.isIpv4());
  EXPECT_FALSE(address.isIpv6());
  EXPECT_EQ(address.family(), IpGenAddr::Family::ipv4);
  EXPECT_EQ(address.width(), 32U);
  EXPECT_EQ(bytesOf(address), (Bytes{0, 0, 0, 0}));
  EXPECT_EQ(address, IpGenAddr("0.0.0.0"));
  EXPECT_EQ(address.stringValue(), "0.0.0.0");
}

TEST(IpGenAddr, KeepsAnIpv4AddressAsFourBytesInNetworkOrder) {
  EXPECT_EQ(bytesOf(IpGenAddr("10.1.2.254")), (Bytes{10, 1, 2, 254}));
  EXPECT_EQ(IpGenAddr::ipv4(0x0a0102fe), IpGenAddr("10.1.2.254"));
  EXPECT_EQ(IpGenAddr::ipv4(0xffffffff), IpGenAddr("255.255.255.255"));
}

TEST(IpGenAddr, KeepsAnIpv6AddressAsSixteenBytesInNetworkOrder) {
  const std::array<std::uint8_t, 16> bytes{0x20, 0x01, 0x0d, 0xb8, 0, 1, 0, 2,
                                           0,    3,    0,    4,    0, 5, 0, 6};
  const IpGenAddr address = IpGenAddr::ipv6(bytes);
  EXPECT_TRUE(address.isIpv6());
  EXPECT_EQ(address.family(), IpGenAddr::Family::ipv6);
  EXPECT_EQ(address.width(), 128U);
  EXPECT_THAT(address.bytes(), testing::ElementsAreArray(bytes));
  EXPECT_EQ(address, IpGenAddr("2001:db8:1:2:3:4:5:6"));
}

TEST(IpGenAddr, ReadsEveryTextualFormOfAnIpv6Address) {
  EXPECT_EQ(bytesOf(IpGenAddr("::")), Bytes(16, 0));
  EXPECT_EQ(bytesOf(IpGenAddr("::1")), (Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}));
  EXPECT_EQ(bytesOf(IpGenAddr("1::")), (Bytes{0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(bytesOf(IpGenAddr("ABCD:EF01:2345:6789:abcd:ef01:2345:6789")),
            (Bytes{0xab, 0xcd, 0xef, 0x01, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd, 0xef, 0x01, 0x23,
                   0x45, 0x67, 0x89}));
  EXPECT_EQ(IpGenAddr("2001:DB8:0:0:8:800:200C:417A"), IpGenAddr("2001:db8::8:800:200c:417a"));
  EXPECT_EQ(IpGenAddr("FF01:0:0:0:0:0:0:101"), IpGenAddr("FF01::101"));
  EXPECT_EQ(IpGenAddr("0001:0002:0003:0004:0005:0006:0007:0008"), IpGenAddr("1:2:3:4:5:6:7:8"));
  EXPECT_EQ(IpGenAddr("1:2:3:4:5:6:7::"), IpGenAddr("1:2:3:4:5:6:7:0"));
  EXPECT_EQ(IpGenAddr("::2:3:4:5:6:7:8"), IpGenAddr("0:2:3:4:5:6:7:8"));
  EXPECT_EQ(IpGenAddr("1:2:3::5:6:7:8"), IpGenAddr("1:2:3:0:5:6:7:8"));
}

TEST(IpGenAddr, ReadsADottedQuadInTheLast32BitsOfAnIpv6Address) {
  EXPECT_EQ(IpGenAddr("0:0:0:0:0:0:13.1.68.3"), IpGenAddr("::d01:4403"));
  EXPECT_EQ(IpGenAddr("::13.1.68.3"), IpGenAddr("::d01:4403"));
  EXPECT_EQ(IpGenAddr("0:0:0:0:0:FFFF:129.144.52.38"), IpGenAddr("::ffff:8190:3426"));
  EXPECT_EQ(IpGenAddr("64:ff9b::192.0.2.33"), IpGenAddr("64:ff9b::c000:221"));
  EXPECT_EQ(IpGenAddr("1:2:3:4:5:6:255.255.255.255"), IpGenAddr("1:2:3:4:5:6:ffff:ffff"));
  EXPECT_EQ(IpGenAddr("1:2:3:4:5::1.2.3.4"), IpGenAddr("1:2:3:4:5:0:102:304"));
}

TEST(IpGenAddr, KeepsAnIpv4MappedAddressInTheIpv6Family) {
  const IpGenAddr mapped("::ffff:10.1.0.1");
  EXPECT_TRUE(mapped.isIpv6());
  EXPECT_NE(mapped, IpGenAddr("10.1.0.1"));
  EXPECT_NE(IpGenAddr("::"), IpGenAddr("0.0.0.0"));
}

TEST(IpGenAddr, PrintsAnIpv4AddressAsFourDecimalNumbers) {
  EXPECT_EQ(printed("10.1.0.1"), "10.1.0.1");
  EXPECT_EQ(printed("0.9.10.99"), "0.9.10.99");
  EXPECT_EQ(printed("100.199.200.255"), "100.199.200.255");
  EXPECT_EQ(printed("255.255.255.255"), "255.255.255.255");
}

TEST(IpGenAddr, PrintsEveryOctetAsItWasRead) {
  for (unsigned octet = 0; octet < 256; ++octet) {
    const std::string text = "1." + std::to_string(octet) + ".2." + std::to_string(255 - octet);
    EXPECT_EQ(printed(text), text);
  }
}

TEST(IpGenAddr, PrintsGroupsInLowerCaseWithoutLeadingZeros) {
  EXPECT_EQ(printed("2001:0DB8:0A0B:12F0:00F0:0001:FFFF:ABCD"), "2001:db8:a0b:12f0:f0:1:ffff:abcd");
  EXPECT_EQ(printed("2001:db8:aaaa:bbbb:cccc:dddd:eeee:AAAA"),
            "2001:db8:aaaa:bbbb:cccc:dddd:eeee:aaaa");
  EXPECT_EQ(printed("f:ff:fff:ffff:1:10:100:1000"), "f:ff:fff:ffff:1:10:100:1000");
}

TEST(IpGenAddr, ShortensTheLongestRunOfZeroGroups) {
  EXPECT_EQ(printed("2001:db8:0:0:0:0:2:1"), "2001:db8::2:1");
  EXPECT_EQ(printed("2001:0:0:1:0:0:0:1"), "2001:0:0:1::1");
  EXPECT_EQ(printed("0:0:1:0:0:0:0:1"), "0:0:1::1");
  EXPECT_EQ(printed("1:0:0:0:0:1:0:0"), "1::1:0:0");
  EXPECT_EQ(printed("1:2:3:4:0:0:0:0"), "1:2:3:4::");
  EXPECT_EQ(printed("0:0:0:0:0:0:0:0"), "::");
  EXPECT_EQ(printed("0:0:0:0:0:0:0:1"), "::1");
  EXPECT_EQ(printed("1:0:0:0:0:0:0:0"), "1::");
}

TEST(IpGenAddr, ShortensTheFirstOfEquallyLongRuns) {
  EXPECT_EQ(printed("2001:db8:0:0:1:0:0:1"), "2001:db8::1:0:0:1");
  EXPECT_EQ(printed("0:0:1:0:0:2:0:0"), "::1:0:0:2:0:0");
  EXPECT_EQ(printed("1:0:0:0:2:0:0:0"), "1::2:0:0:0");
}

TEST(IpGenAddr, NeverShortensASingleZeroGroup) {
  EXPECT_EQ(printed("2001:db8::1:1:1:1:1"), "2001:db8:0:1:1:1:1:1");
  EXPECT_EQ(printed("::2:3:4:5:6:7:8"), "0:2:3:4:5:6:7:8");
  EXPECT_EQ(printed("1:2:3:4:5:6:7::"), "1:2:3:4:5:6:7:0");
  EXPECT_EQ(printed("1:0:2:0:3:0:4:0"), "1:0:2:0:3:0:4:0");
}

TEST(IpGenAddr, PrintsTheLast32BitsOfAnIpv4MappedAddressDotted) {
  EXPECT_EQ(printed("::FFFF:C000:0201"), "::ffff:192.0.2.1");
  EXPECT_EQ(printed("::ffff:0:0"), "::ffff:0.0.0.0");
  EXPECT_EQ(printed("::ffff:255.255.255.255"), "::ffff:255.255.255.255");
}

TEST(IpGenAddr, PrintsNoOtherAddressDotted) {
  EXPECT_EQ(printed("::192.0.2.1"), "::c000:201");
  EXPECT_EQ(printed("64:ff9b::192.0.2.33"), "64:ff9b::c000:221");
  EXPECT_EQ(printed("::fffe:192.0.2.1"), "::fffe:c000:201");
  EXPECT_EQ(printed("1::ffff:192.0.2.1"), "1::ffff:c000:201");
  EXPECT_EQ(printed("::1:ffff:192.0.2.1"), "::1:ffff:c000:201");
  EXPECT_EQ(printed("::ffff:0:192.0.2.1"), "::ffff:0:c000:201");
}

TEST(IpGenAddr, AppendsBehindWhatStandsThere) {
  std::string out = "src ";
  kelAppend(out, IpGenAddr("10.1.0.1"));
  IpGenAddr("2001:db8::1").appendTo(out += '-');
  EXPECT_EQ(out, "src 10.1.0.1-2001:db8::1");
}

TEST(IpGenAddr, GoesToAStreamAsOneField) {
  std::ostringstream out;
  out << std::setw(10) << IpGenAddr("10.1.0.1") << '|' << IpGenAddr("::1");
  EXPECT_EQ(out.str(), "  10.1.0.1|::1");
}

TEST(IpGenAddr, StandsInOrderByFamilyThenByValue) {
  const std::vector<IpGenAddr> ascending{
      IpGenAddr("0.0.0.0"),   IpGenAddr("9.255.255.255"),   IpGenAddr("10.0.0.0"),
      IpGenAddr("10.0.1.0"),  IpGenAddr("10.1.0.0"),        IpGenAddr("127.255.0.0"),
      IpGenAddr("128.0.0.0"), IpGenAddr("255.255.255.255"), IpGenAddr("::"),
      IpGenAddr("::1"),       IpGenAddr("::1:0"),           IpGenAddr("::ffff:10.0.0.0"),
      IpGenAddr("7fff::"),    IpGenAddr("8000::"),          IpGenAddr("ffff::")};
  for (std::size_t i = 0; i < ascending.size(); ++i) {
    for (std::size_t j = 0; j < ascending.size(); ++j) {
      EXPECT_EQ(ascending[i] <=> ascending[j], i <=> j) << ascending[i] << ' ' << ascending[j];
      EXPECT_EQ(ascending[i] == ascending[j], i == j) << ascending[i] << ' ' << ascending[j];
    }
  }
}

TEST(IpGenAddr, HashesEqualAddressesEqually) {
  EXPECT_EQ(IpGenAddr("2001:DB8:0:0::1").hash(), IpGenAddr("2001:db8::1").hash());
  EXPECT_EQ(std::hash<IpGenAddr>()(IpGenAddr("10.1.0.1")), IpGenAddr("10.1.0.1").hash());
  EXPECT_NE(IpGenAddr("0.0.0.0").hash(), IpGenAddr("::").hash());
  const std::unordered_set<IpGenAddr> set{IpGenAddr("10.1.0.1"), IpGenAddr("10.1.0.1"),
                                          IpGenAddr("::1")};
  EXPECT_EQ(set.size(), 2U);
}

TEST(IpGenAddr, SpreadsTheHashesOfNeighboursOverAllBits) {
  for (const unsigned step : {0U, 8U, 16U}) {
    HashSpread::expectSpread("IPv4 neighbours", HashSpread::hashesOf([step](std::uint32_t i) {
                               return IpGenAddr::ipv4(0x0a000000U + (i << step));
                             }));
  }
  for (std::size_t byte = 0; byte < 15; ++byte) {
    HashSpread::expectSpread("IPv6 neighbours", HashSpread::hashesOf([byte](std::uint32_t i) {
                               std::array<std::uint8_t, 16> bytes{0x20, 0x01, 0x0d, 0xb8};
                               bytes[byte] = static_cast<std::uint8_t>(i >> 8);
                               bytes[byte + 1] = static_cast<std::uint8_t>(i);
                               return IpGenAddr::ipv6(bytes);
                             }));
  }
}

}  // namespace
}  // namespace Norv
