#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "Kel/Text.h"
#include "VelaL3/VelaPriority.h"
#include "VelaL3/VelaRuleOriginConfig.h"

namespace {

using Norv::IpGenAddr;
using VelaL3::VelaAction;
using VelaL3::VelaIpRange;
using VelaL3::VelaL4App;
using VelaL3::VelaL4AppRange;
using VelaL3::VelaPolicyModifier;

TEST(VelaL3IpRange, PrintsItsLabelItsFirstAndItsLastAddress) {
  const VelaIpRange range{IpGenAddr("10.1.0.1"), IpGenAddr("10.1.0.9")};
  EXPECT_EQ(range.stringValue(), " IP range: 10.1.0.1-10.1.0.9");
  EXPECT_EQ(Kel::textOf(range), " IP range: 10.1.0.1-10.1.0.9");
  const VelaIpRange v6{IpGenAddr("2001:db8::1"), IpGenAddr("2001:db8::ff")};
  EXPECT_EQ(v6.stringValue(), " IP range: 2001:db8::1-2001:db8::ff");
}

TEST(VelaL3IpRange, KeepsTheOrderThatItWasGiven) {
  const VelaIpRange range{IpGenAddr("10.1.0.9"), IpGenAddr("10.1.0.1")};
  EXPECT_EQ(range.stringValue(), " IP range: 10.1.0.9-10.1.0.1");
}

TEST(VelaL3IpRange, ComparesByFirstAndThenByLast) {
  const VelaIpRange a{IpGenAddr("10.0.0.1"), IpGenAddr("10.0.0.9")};
  const VelaIpRange b{IpGenAddr("10.0.0.1"), IpGenAddr("10.0.0.10")};
  const VelaIpRange c{IpGenAddr("10.0.0.2"), IpGenAddr("10.0.0.2")};
  EXPECT_EQ(a, (VelaIpRange{IpGenAddr("10.0.0.1"), IpGenAddr("10.0.0.9")}));
  EXPECT_LT(a, b);
  EXPECT_LT(b, c);
  EXPECT_NE(a.hash(), (VelaIpRange{a.last, a.first}.hash()));
}

TEST(VelaL3L4App, HoldsPortAndProtocolInThisOrder) {
  const VelaL4App app{443, 6};
  EXPECT_EQ(app.port, 443);
  EXPECT_EQ(app.protocol, 6);
  EXPECT_EQ(Kel::textOf(app), "443/6");
  EXPECT_NE(app, (VelaL4App{443, 17}));
  EXPECT_NE(app, (VelaL4App{444, 6}));
  EXPECT_EQ(app.hash(), (VelaL4App{443, 6}.hash()));
  EXPECT_NE(app.hash(), (VelaL4App{443, 17}.hash()));
  EXPECT_EQ(Kel::textOf(VelaL4App{65535, 255}), "65535/255");
}

TEST(VelaL3L4App, ComparesByPortAndThenByProtocol) {
  EXPECT_LT((VelaL4App{80, 17}), (VelaL4App{443, 6}));
  EXPECT_LT((VelaL4App{443, 6}), (VelaL4App{443, 17}));
  EXPECT_FALSE((VelaL4App{443, 6}) < (VelaL4App{443, 6}));
}

TEST(VelaL3L4AppRange, ComparesByFirstThenLastThenProtocol) {
  EXPECT_LT((VelaL4AppRange{1, 9, 9}), (VelaL4AppRange{2, 3, 4}));
  EXPECT_LT((VelaL4AppRange{2, 3, 9}), (VelaL4AppRange{2, 4, 5}));
  EXPECT_LT((VelaL4AppRange{2, 4, 5}), (VelaL4AppRange{2, 4, 6}));
  EXPECT_FALSE((VelaL4AppRange{2, 4, 6}) < (VelaL4AppRange{2, 4, 6}));
}

TEST(VelaL3L4AppRange, HoldsFirstLastAndProtocolInThisOrder) {
  const VelaL4AppRange range{8000, 8080, 6};
  EXPECT_EQ(range.first, 8000);
  EXPECT_EQ(range.last, 8080);
  EXPECT_EQ(range.protocol, 6);
  EXPECT_EQ(Kel::textOf(range), "8000-8080/6");
  EXPECT_NE(range, (VelaL4AppRange{8080, 8000, 6}));
  EXPECT_NE(range.hash(), (VelaL4AppRange{8080, 8000, 6}.hash()));
  EXPECT_NE(range.hash(), (VelaL4AppRange{8000, 8080, 17}.hash()));
}

TEST(VelaL3Action, IsPrintedAndReadByName) {
  EXPECT_EQ(Kel::textOf(VelaAction::forward), "forward");
  EXPECT_EQ(Kel::textOf(VelaAction::drop), "drop");
  EXPECT_EQ(Kel::textOf(VelaAction::redirect), "redirect");
  EXPECT_EQ(static_cast<int>(VelaAction::redirect), 2);
  VelaAction action = VelaAction::forward;
  std::string why;
  EXPECT_TRUE(Kel::parseValue("drop", action, why));
  EXPECT_EQ(action, VelaAction::drop);
  EXPECT_FALSE(Kel::parseValue("Drop", action, why));
}

TEST(VelaL3PolicyModifier, IsPrintedByName) {
  EXPECT_EQ(Kel::textOf(VelaPolicyModifier::symmetric), "symmetric");
  EXPECT_EQ(Kel::textOf(VelaPolicyModifier::stateless), "stateless");
  EXPECT_EQ(static_cast<int>(VelaPolicyModifier::stateless), 1);
}

TEST(VelaL3Enumerations, AnOrdinalOutsideIsPrintedAsItsNumber) {
  EXPECT_EQ(sizeof(VelaAction), 1U);
  EXPECT_EQ(sizeof(VelaPolicyModifier), 1U);
  EXPECT_EQ(Kel::textOf(static_cast<VelaAction>(3)), "3");
  EXPECT_EQ(Kel::textOf(static_cast<VelaPolicyModifier>(255)), "255");
}

TEST(VelaL3Values, AreWrittenToStreamsAsTheyArePrinted) {
  std::ostringstream out;
  out << VelaAction::drop << ' ' << static_cast<VelaAction>(3) << ' '
      << VelaPolicyModifier::stateless << ' ' << VelaL3::VelaPriority(20000) << ' '
      << VelaL4App{443, 6} << ' ' << VelaL4AppRange{8000, 8080, 17}
      << VelaIpRange{IpGenAddr("10.1.0.1"), IpGenAddr("::1")};
  EXPECT_EQ(out.str(), "drop 3 stateless 20000 443/6 8000-8080/17 IP range: 10.1.0.1-::1");
}

}  // namespace
