#include <gtest/gtest.h>

#include "Norv/Norv.h"
#include "policy/Conversions.h"

namespace VelaPolicyMonitor {
namespace {

TEST(Conversions, ActionsMapByOrdinal) {
  for (std::uint8_t ordinal = 0; ordinal < 3; ++ordinal) {
    EXPECT_EQ(static_cast<std::uint8_t>(toVelaL3V2Action(VelaL3::VelaAction{ordinal})), ordinal);
  }
}

TEST(Conversions, ActionsMapToTheActionsOfTheSameName) {
  EXPECT_EQ(toVelaL3V2Action(VelaL3::VelaAction::forward), VelaL3V2::VelaAction::forward);
  EXPECT_EQ(toVelaL3V2Action(VelaL3::VelaAction::drop), VelaL3V2::VelaAction::drop);
  EXPECT_EQ(toVelaL3V2Action(VelaL3::VelaAction::redirect), VelaL3V2::VelaAction::redirect);
}

TEST(Conversions, ModifiersMapByOrdinalBothWays) {
  for (std::uint8_t ordinal = 0; ordinal < 2; ++ordinal) {
    EXPECT_EQ(
        static_cast<std::uint8_t>(toVelaL3V2PolicyModifier(VelaL3::VelaPolicyModifier{ordinal})),
        ordinal);
    EXPECT_EQ(
        static_cast<std::uint8_t>(toVelaL3V1PolicyModifier(VelaL3V2::VelaPolicyModifier{ordinal})),
        ordinal);
  }
}

TEST(Conversions, ModifiersMapToTheModifiersOfTheSameName) {
  EXPECT_EQ(toVelaL3V2PolicyModifier(VelaL3::VelaPolicyModifier::symmetric),
            VelaL3V2::VelaPolicyModifier::symmetric);
  EXPECT_EQ(toVelaL3V1PolicyModifier(VelaL3V2::VelaPolicyModifier::stateless),
            VelaL3::VelaPolicyModifier::stateless);
}

TEST(ConversionsDeathTest, AnActionOutsideTheEnumerationStopsTheProcess) {
  for (unsigned ordinal = 3; ordinal != 256; ++ordinal) {
    EXPECT_DEATH(
        toVelaL3V2Action(static_cast<VelaL3::VelaAction>(ordinal)),
        "VelaL3V2::VelaAction VelaPolicyMonitor::toVelaL3V2Action\\(VelaL3::VelaAction\\): "
        "assertion \"false\" failed: Should not be here")
        << ordinal;
  }
}

TEST(ConversionsDeathTest, AVersionOneModifierOutsideTheEnumerationStopsTheProcess) {
  for (unsigned ordinal = 2; ordinal != 256; ++ordinal) {
    EXPECT_DEATH(toVelaL3V2PolicyModifier(static_cast<VelaL3::VelaPolicyModifier>(ordinal)),
                 "VelaL3V2::VelaPolicyModifier VelaPolicyMonitor::toVelaL3V2PolicyModifier"
                 "\\(VelaL3::VelaPolicyModifier\\): assertion \"false\" failed: Should not be here")
        << ordinal;
  }
}

TEST(ConversionsDeathTest, AVersionTwoModifierOutsideTheEnumerationStopsTheProcess) {
  for (unsigned ordinal = 2; ordinal != 256; ++ordinal) {
    EXPECT_DEATH(
        toVelaL3V1PolicyModifier(static_cast<VelaL3V2::VelaPolicyModifier>(ordinal)),
        "VelaL3::VelaPolicyModifier VelaPolicyMonitor::toVelaL3V1PolicyModifier"
        "\\(VelaL3V2::VelaPolicyModifier\\): assertion \"false\" failed: Should not be here")
        << ordinal;
  }
}

TEST(Conversions, AnAddressRangeIsCopiedUncheckedBothWays) {
  const Norv::IpGenAddr high("10.1.0.9");
  const Norv::IpGenAddr low("10.1.0.1");
  const VelaL3V2::VelaIpRange converted = toV2(VelaL3::VelaIpRange{high, low});
  EXPECT_EQ(converted.first, high);
  EXPECT_EQ(converted.last, low);
  const VelaL3::VelaIpRange back = toV1(converted);
  EXPECT_EQ(back.first, high);
  EXPECT_EQ(back.last, low);
}

TEST(Conversions, AnApplicationIsCopiedFieldByFieldBothWays) {
  const VelaL3V2::VelaL4App converted = toV2(VelaL3::VelaL4App{65535, 255});
  EXPECT_EQ(converted.port, 65535);
  EXPECT_EQ(converted.protocol, 255);
  const VelaL3::VelaL4App back = toV1(VelaL3V2::VelaL4App{0, 17});
  EXPECT_EQ(back.port, 0);
  EXPECT_EQ(back.protocol, 17);
}

TEST(Conversions, AnApplicationRangeIsCopiedFieldByFieldBothWays) {
  const VelaL3V2::VelaL4AppRange converted = toV2(VelaL3::VelaL4AppRange{9000, 80, 6});
  EXPECT_EQ(converted.first, 9000);
  EXPECT_EQ(converted.last, 80);
  EXPECT_EQ(converted.protocol, 6);
  const VelaL3::VelaL4AppRange back = toV1(VelaL3V2::VelaL4AppRange{1, 2, 3});
  EXPECT_EQ(back.first, 1);
  EXPECT_EQ(back.last, 2);
  EXPECT_EQ(back.protocol, 3);
}

TEST(Conversions, PrefixesAndProtocolsPassUnchanged) {
  const Norv::IpGenPrefix prefix("10.1.0.0/16");
  EXPECT_EQ(toV2(prefix), prefix);
  EXPECT_EQ(toV1(prefix), prefix);
  EXPECT_EQ(toV2(Norv::IpProto{6}), Norv::IpProto{6});
}

}  // namespace
}  // namespace VelaPolicyMonitor
