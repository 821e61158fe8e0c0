#include "policy/PolicyWorld.h"

namespace PolicyTests {
namespace {

using ModifierV1 = VelaL3::VelaPolicyModifier;
using ModifierV2 = VelaL3V2::VelaPolicyModifier;

/// The policy modifiers of an origin. Every change of version 2 is noted.
class PolicyTranslatePerOriginModifiers : public PolicyWorld {
 protected:
  void make() {
    sm = VelaPolicyMonitor::policyTranslatePerOriginSmFactory("web", v1, v2, cookie);
    cookie->updatedIs(false);
    noted();
  }

  Ptr<VelaL3::VelaRuleOriginConfig> v1 = originV1();
  Ptr<VelaL3V2::VelaRuleOriginConfig> v2 = sourceV2->policySetIs(Vela::DeviceName("fw1"))
                                               ->policyIs("net-red")
                                               ->ruleIs(p2(20000))
                                               ->originIs("web");
  Ptr<UpdateCookie> cookie = VelaPolicyMonitor::updateCookieFactory();
  Ptr<PolicyTranslatePerOriginSm> sm;
  Observer watch{*v2, [this](AttrId id, const void* key) {
                   if (id == VelaL3V2::VelaRuleOriginConfig::policyModifierSetAttr.id) {
                     const auto modifier = keyOf<ModifierV2>(key);
                     note((v2->policyModifierSet(modifier) ? "+" : "-") + Kel::textOf(modifier));
                   }
                 }};
};
using PolicyTranslatePerOriginModifiersDeathTest = PolicyTranslatePerOriginModifiers;

TEST_F(PolicyTranslatePerOriginModifiers, AreFollowedOneByOne) {
  make();
  v1->policyModifierSetIs(ModifierV1::symmetric);
  v1->policyModifierSetIs(ModifierV1::stateless);
  v1->policyModifierSetDel(ModifierV1::symmetric);
  EXPECT_EQ(noted(), (Lines{"+symmetric", "+stateless", "-symmetric"}));
  EXPECT_TRUE(cookie->updated());
}

TEST_F(PolicyTranslatePerOriginModifiers, RemovingAllRemovesEach) {
  v1->policyModifierSetIs(ModifierV1::symmetric);
  v1->policyModifierSetIs(ModifierV1::stateless);
  make();
  v1->policyModifierSetDelAll();
  EXPECT_TRUE(v2->policyModifierSet().empty());
}

TEST_F(PolicyTranslatePerOriginModifiers, AKeyThatIsOnBothSidesMarksAllTheSame) {
  v1->policyModifierSetIs(ModifierV1::stateless);
  make();
  sm->handleModifier(ModifierV1::stateless);
  EXPECT_EQ(keys(v2->policyModifierSet()), Lines{"stateless"});
  EXPECT_TRUE(cookie->updated());
}

TEST_F(PolicyTranslatePerOriginModifiers, AKeyThatIsOnNeitherSideMarksAllTheSame) {
  make();
  sm->handleModifier(ModifierV1::stateless);
  EXPECT_TRUE(v2->policyModifierSet().empty());
  EXPECT_TRUE(cookie->updated());
}

TEST_F(PolicyTranslatePerOriginModifiers,
       AKeyInVersionOneAloneIsInsertedAndInVersionTwoAloneRemoved) {
  make();
  sm->hasNotificationActiveIs(false);
  v1->policyModifierSetIs(ModifierV1::stateless);
  v2->policyModifierSetIs(ModifierV2::symmetric);
  noted();
  sm->handleModifier(ModifierV1::stateless);
  sm->handleModifier(ModifierV1::symmetric);
  EXPECT_EQ(noted(), (Lines{"+stateless", "-symmetric"}));
}

TEST_F(PolicyTranslatePerOriginModifiers, AWalkThatOnlyAddsDoesNotMark) {
  make();
  sm->hasNotificationActiveIs(false);
  v1->policyModifierSetIs(ModifierV1::stateless);
  sm->handleModifier();
  EXPECT_EQ(keys(v2->policyModifierSet()), Lines{"stateless"});
  EXPECT_FALSE(cookie->updated());
}

TEST_F(PolicyTranslatePerOriginModifiers, AWalkThatRemovesMarksOnce) {
  make();
  v2->policyModifierSetIs(ModifierV2::symmetric);
  v2->policyModifierSetIs(ModifierV2::stateless);
  const auto marks = cookie->marks();
  sm->handleModifier();
  EXPECT_TRUE(v2->policyModifierSet().empty());
  EXPECT_TRUE(cookie->updated());
  EXPECT_EQ(cookie->marks(), marks + 1);
}

TEST_F(PolicyTranslatePerOriginModifiers, AWalkOverEqualSetsChangesAndMarksNothing) {
  v1->policyModifierSetIs(ModifierV1::stateless);
  make();
  sm->handleModifier();
  EXPECT_EQ(noted(), Lines{});
  EXPECT_FALSE(cookie->updated());
}

TEST_F(PolicyTranslatePerOriginModifiers, AWalkRemovesBeforeItAddsAndTracesTheRemovalAlone) {
  make();
  sm->hasNotificationActiveIs(false);
  v1->policyModifierSetIs(ModifierV1::symmetric);
  v2->policyModifierSetIs(ModifierV2::stateless);
  noted();
  BothTraces traces;
  sm->handleModifier();
  EXPECT_EQ(noted(), (Lines{"-stateless", "+symmetric"}));
  EXPECT_EQ(traces.take(),
            (Lines{kOrigin(8, "handleModifier() policy: web"),
                   kOrigin(6, "handleModifier() policy: web remove modifier stateless"),
                   kOrigin(7, "handleModifier() return")}));
}

TEST_F(PolicyTranslatePerOriginModifiers, NothingIsChangedBeforeTheMachineIsInitialized) {
  make();
  sm->cleanup();
  v1->policyModifierSetIs(ModifierV1::symmetric);
  v2->policyModifierSetIs(ModifierV2::stateless);
  noted();
  sm->handleModifier(ModifierV1::symmetric);
  sm->handleModifier();
  EXPECT_EQ(noted(), Lines{});
  EXPECT_FALSE(cookie->updated());
}

TEST_F(PolicyTranslatePerOriginModifiers, WithoutCookieAWalkThatRemovesIsHarmless) {
  v2->policyModifierSetIs(ModifierV2::stateless);
  sm = VelaPolicyMonitor::policyTranslatePerOriginSmFactory("web", v1, v2, nullptr);
  EXPECT_TRUE(v2->policyModifierSet().empty());
}

TEST_F(PolicyTranslatePerOriginModifiersDeathTest, AKeyOutsideTheEnumerationIsTracedAndStops) {
  make();
  EXPECT_DEATH(
      {
        Kel::TextTrace::facility("VelaPolicyMonitor").levelsAre(Kel::TextTrace::kAllLevels);
        v1->policyModifierSetIs(ModifierV1{2});
      },
      "handleModifier\\(VelaL3::VelaPolicyModifier\\) policy: web modifier: 2\n"
      ".*handleModifier\\(VelaL3::VelaPolicyModifier\\) policy: web add modifier 2\n"
      ".*VelaL3V2::VelaPolicyModifier VelaPolicyMonitor::toVelaL3V2PolicyModifier"
      "\\(VelaL3::VelaPolicyModifier\\): assertion \"false\" failed: Should not be here");
}

TEST_F(PolicyTranslatePerOriginModifiersDeathTest, AnAbsentKeyOutsideTheEnumerationStopsAsWell) {
  make();
  EXPECT_DEATH(sm->handleModifier(ModifierV1{255}),
               "toVelaL3V2PolicyModifier.*assertion \"false\" failed: Should not be here");
}

TEST_F(PolicyTranslatePerOriginModifiersDeathTest,
       AVersionTwoEntryOutsideTheEnumerationStopsAWalk) {
  make();
  v2->policyModifierSetIs(ModifierV2{2});
  EXPECT_DEATH(
      sm->handleModifier(),
      "VelaL3::VelaPolicyModifier VelaPolicyMonitor::toVelaL3V1PolicyModifier"
      "\\(VelaL3V2::VelaPolicyModifier\\): assertion \"false\" failed: Should not be here");
}

}  // namespace
}  // namespace PolicyTests
