#include "policy/PolicyWorld.h"

namespace PolicyTests {
namespace {

/// The update cookie of a VRF and the time that is stamped when it has been marked.
class PolicyTranslatePerVrfCookie : public PolicyWorld {
 protected:
  PolicyTranslatePerVrfCookie() {
    rule->originIs("web");
    make();
  }
  void make() {
    sm = VelaPolicyMonitor::policyTranslatePerVrfSmFactory(VrfName("red"), "net-red", v1, v2);
  }
  /// The signal that a burst of changes is complete, at that time.
  void signalAt(Kel::Seconds time) {
    now = time;
    v1->timestampIs(time);
  }
  Ptr<PolicyTranslatePerRuleSm> child(std::uint32_t priority = 20000) const {
    return sm->perRuleSm(p1(priority));
  }

  Ptr<VelaL3::VelaPolicyConfig> v1 = policyV1();
  Ptr<VelaL3::VelaRuleConfig> rule = v1->ruleIs(p1(20000));
  Ptr<VelaL3V2::VelaPolicyConfig> v2 =
      sourceV2->policySetIs(Vela::DeviceName("fw1"))->policyIs("net-red");
  Ptr<PolicyTranslatePerVrfSm> sm;
};

TEST_F(PolicyTranslatePerVrfCookie, TheFirstWalkIsStampedInsideTheConstructor) {
  EXPECT_EQ(v2->timestamp(), 1000);
  EXPECT_FALSE(sm->cookie()->updated());
  EXPECT_TRUE(sm->cookie()->hasNotificationActive());
}

TEST_F(PolicyTranslatePerVrfCookie, AllMachinesBelowShareTheCookie) {
  rule->originIs("web")->matchIs();
  const auto origin = child()->perOriginSm("web");
  EXPECT_EQ(child()->cookie(), sm->cookie());
  EXPECT_EQ(origin->cookie(), sm->cookie());
  EXPECT_EQ(origin->matchSm()->cookie(), sm->cookie());
}

TEST_F(PolicyTranslatePerVrfCookie, ABurstOfChangesIsStampedOnceWithTheTimeOfItsSignal) {
  const Observer watch(*v2, [&](AttrId id, const void*) {
    if (id == VelaL3V2::VelaPolicyConfig::timestampAttr.id) {
      note(Kel::textOf(v2->timestamp()));
    }
  });
  rule->originIs("mail")->tagsIs("x");
  v1->ruleIs(p1(15000));
  EXPECT_EQ(noted(), Lines{});
  signalAt(2000.5);
  signalAt(3000);
  rule->originDel("mail");
  signalAt(4000);
  EXPECT_EQ(noted(), (Lines{"2000.500000", "4000.000000"}));
}

TEST_F(PolicyTranslatePerVrfCookie, TheTimeIsTheClocksAndNotTheSignals) {
  rule->originIs("mail");
  now = 7;
  v1->timestampIs(99);
  EXPECT_EQ(v2->timestamp(), 7);
}

TEST_F(PolicyTranslatePerVrfCookie, WhatAnObserverOfTheTimeChangesIsStampedAtTheNextSignal) {
  bool once = true;
  const Observer watch(*v2, [&](AttrId id, const void*) {
    if (id == VelaL3V2::VelaPolicyConfig::timestampAttr.id && std::exchange(once, false)) {
      rule->originIs("web")->tagsIs("changed while stamping");
    }
  });
  rule->originIs("mail");
  signalAt(2000);
  EXPECT_EQ(v2->timestamp(), 2000);
  EXPECT_TRUE(sm->cookie()->updated());
  signalAt(3000);
  EXPECT_EQ(v2->timestamp(), 3000);
  EXPECT_FALSE(sm->cookie()->updated());
}

TEST_F(PolicyTranslatePerVrfCookie, WithoutCookieNothingIsStampedAndNothingBreaks) {
  sm->cookieIs(nullptr);
  signalAt(2000);
  v1->ruleDel(p1(20000));
  signalAt(3000);
  EXPECT_TRUE(v2->rule().empty());
  EXPECT_EQ(v2->timestamp(), 1000);
}

TEST_F(PolicyTranslatePerVrfCookie, EveryInitializationTakesANewCookie) {
  const auto before = sm->cookie();
  sm->cleanup();
  sm->handleInitialized();
  EXPECT_NE(sm->cookie(), before);
  EXPECT_EQ(child()->cookie(), sm->cookie());
  EXPECT_TRUE(v2->rule(p2(20000))->origin("web"));
}

TEST_F(PolicyTranslatePerVrfCookie, ASecondInitializationWithoutCleanUpRaisesAndPutsTheCookieBack) {
  const auto before = sm->cookie();
  const auto childBefore = child();
  EXPECT_THROW(sm->handleInitialized(), Kel::ReinstantiationException);
  EXPECT_EQ(sm->cookie(), before);
  EXPECT_EQ(child(), childBefore);
  rule->originIs("mail");
  EXPECT_TRUE(sm->cookie()->updated());
  signalAt(2000);
  EXPECT_EQ(v2->timestamp(), 2000);
}

TEST_F(PolicyTranslatePerVrfCookie, ASecondInitializationWithTheLowestPriorityAloneIsHarmless) {
  v1->ruleDel(p1(20000));
  v1->ruleIs(p1(10000));
  const auto before = sm->cookie();
  const auto childBefore = child(10000);
  sm->handleInitialized();
  EXPECT_NE(sm->cookie(), before);
  EXPECT_EQ(child(10000), childBefore);
}

TEST_F(PolicyTranslatePerVrfCookie,
       AnInitializationThatFailsAfterCleanUpKeepsTheCookieOfItsChildren) {
  sm->cleanup();
  sm->hasNotificationActiveIs(false);
  v1->ruleIs(p1(9999));
  EXPECT_THROW(sm->handleInitialized(), Kel::RangeException);
  EXPECT_EQ(child()->cookie(), sm->cookie());
}

TEST_F(PolicyTranslatePerVrfCookie, ACookieFromOutsideStaysWithTheMachineAndNotWithItsChildren) {
  const auto before = sm->cookie();
  const auto other = UpdateCookie::UpdateCookieIs();
  sm->cookieIs(other);
  EXPECT_EQ(child()->cookie(), before);
  EXPECT_THROW(sm->handleRule(p1(20000)), Kel::ReinstantiationException);
  EXPECT_FALSE(other->updated());
  v1->ruleIs(p1(15000));
  EXPECT_EQ(child(15000)->cookie(), other);
  EXPECT_TRUE(other->updated());
}

TEST_F(PolicyTranslatePerVrfCookie, AChildIsKeptForTheSameObjectsOnly) {
  const auto ruleV2 = v2->rule(p2(20000));
  EXPECT_EQ(sm->perRuleSmIs(p1(20000), rule, ruleV2, sm->cookie()), child());
  const auto otherV1 = policyV1("other")->ruleIs(p1(20000));
  const auto otherV2 = setV2()->policyIs("other")->ruleIs(p2(20000));
  const auto before = child();
  EXPECT_THROW(sm->perRuleSmIs(p1(20000), otherV1, ruleV2, sm->cookie()),
               Kel::ReinstantiationException);
  EXPECT_THROW(sm->perRuleSmIs(p1(20000), rule, otherV2, sm->cookie()),
               Kel::ReinstantiationException);
  EXPECT_THROW(sm->perRuleSmIs(p1(20000), rule, ruleV2, nullptr), Kel::ReinstantiationException);
  EXPECT_EQ(child(), before);
}

TEST_F(PolicyTranslatePerVrfCookie, TheReinstantiationErrorNamesTheCollectionAndTheKey) {
  v2->ruleDel(p2(20000));
  try {
    sm->handleRule(p1(20000));
    FAIL() << "nothing was raised";
  } catch (const Kel::ReinstantiationException& error) {
    const std::string what = error.what();
    EXPECT_NE(what.find("PolicyTranslatePerVrfSm::perRuleSm[20000]"), std::string::npos) << what;
  }
}

TEST_F(PolicyTranslatePerVrfCookie, ARaisedReinstantiationDoesNotMark) {
  v2->ruleDel(p2(20000));
  EXPECT_THROW(sm->handleRule(p1(20000)), Kel::ReinstantiationException);
  EXPECT_FALSE(sm->cookie()->updated());
}

}  // namespace
}  // namespace PolicyTests
