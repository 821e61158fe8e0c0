#include "policy/PolicyTranslatePerRuleSm.h"
#include "policy/PolicyWorld.h"

namespace PolicyTests {
namespace {

/// A machine between the rules of one priority, without the levels above.
class PolicyTranslatePerRule : public PolicyWorld {
 protected:
  void make(const Ptr<UpdateCookie>& shared) {
    sm = VelaPolicyMonitor::policyTranslatePerRuleSmFactory(p1(20000), v1, v2, shared);
  }
  void make() { make(cookie); }
  /// Whether the cookie was marked since the last call.
  bool marked() const {
    const bool was = cookie->updated();
    cookie->updatedIs(false);
    return was;
  }

  Ptr<VelaL3::VelaRuleConfig> v1 = ruleV1();
  Ptr<VelaL3V2::VelaRuleConfig> v2 =
      sourceV2->policySetIs(Vela::DeviceName("fw1"))->policyIs("net-red")->ruleIs(p2(20000));
  Ptr<UpdateCookie> cookie = VelaPolicyMonitor::updateCookieFactory();
  Ptr<PolicyTranslatePerRuleSm> sm;
};
using PolicyTranslatePerRuleDeathTest = PolicyTranslatePerRule;

TEST_F(PolicyTranslatePerRule, TheStartDeletesStaleOriginsBeforeItAddsMissingOnes) {
  v1->originIs("a");
  v1->originIs("b");
  v2->originIs("b");
  v2->originIs("c");
  const Observer watch(*v2, [&](AttrId, const void* key) {
    const auto& name = keyOf<Kel::String>(key);
    note((v2->origin(name) ? "add " : "delete ") + Kel::textOf(name));
  });
  make();
  EXPECT_EQ(noted(), (Lines{"delete c", "add a"}));
  EXPECT_EQ(keys(v2->origin()), (Lines{"a", "b"}));
  EXPECT_EQ(keys(sm->perOriginSm()), (Lines{"a", "b"}));
  EXPECT_TRUE(cookie->updated());
}

TEST_F(PolicyTranslatePerRule, GivesItsChildTheEntitiesOfBothSidesAndItsCookie) {
  v1->originIs("web");
  make();
  const auto child = sm->perOriginSm("web");
  EXPECT_EQ(child->policyName(), "web");
  EXPECT_EQ(child->originPolicyV1(), v1->origin("web"));
  EXPECT_EQ(child->originPolicyV2(), v2->origin("web"));
  EXPECT_EQ(child->cookie(), cookie);
  EXPECT_EQ(sm->priority(), p1(20000));
}

TEST_F(PolicyTranslatePerRule, CreatesTheEntryBeforeTheChild) {
  make();
  const Observer watch(
      *v2, [&](AttrId, const void*) { note(sm->perOriginSm("web") ? "child" : "no child"); });
  v1->originIs("web");
  EXPECT_EQ(noted(), Lines{"no child"});
  EXPECT_TRUE(sm->perOriginSm("web"));
}

TEST_F(PolicyTranslatePerRule, RemovesTheChildBeforeItDeletesTheEntryAndMarks) {
  v1->originIs("a")->matchIs();
  make();
  marked();
  const Observer below(*v2->origin("a"), [&](AttrId id, const void*) {
    EXPECT_EQ(id, VelaL3V2::VelaRuleOriginConfig::matchAttr.id);
    note("match deleted by the child");
  });
  const Observer watch(*v2, [&](AttrId, const void*) {
    EXPECT_FALSE(sm->perOriginSm("a"));
    note(cookie->updated() ? "entry deleted, marked" : "entry deleted");
  });
  v1->originDel("a");
  EXPECT_EQ(noted(), (Lines{"match deleted by the child", "entry deleted"}));
  EXPECT_TRUE(marked());
}

TEST_F(PolicyTranslatePerRule, WithoutCookieAdditionsAndRemovalsWorkAsUsual) {
  v2->originIs("stale");
  v1->originIs("a");
  make(nullptr);
  v1->originIs("b")->tagsIs("t");
  v1->originDel("a");
  EXPECT_EQ(keys(v2->origin()), Lines{"b"});
  EXPECT_EQ(v2->origin("b")->tags(), "t");
  EXPECT_FALSE(sm->perOriginSm("b")->cookie());
  EXPECT_FALSE(cookie->updated());
}

TEST_F(PolicyTranslatePerRule, CleanUpLeavesNoOriginsAndNoChildrenAndDoesNotMark) {
  v1->originIs("a")->matchIs();
  v1->originIs("b");
  make();
  v2->originIs("foreign");
  marked();
  sm->cleanup();
  EXPECT_TRUE(v2->origin().empty());
  EXPECT_TRUE(sm->perOriginSm().empty());
  EXPECT_FALSE(sm->initialized());
  EXPECT_FALSE(marked());
}

TEST_F(PolicyTranslatePerRule, ANotificationMarksAlthoughAllIsInPlace) {
  v1->originIs("a");
  make();
  marked();
  const auto child = sm->perOriginSm("a");
  sm->handleOrigin("a");
  EXPECT_TRUE(marked());
  EXPECT_EQ(sm->perOriginSm("a"), child);
  sm->handleOrigin("stranger");
  EXPECT_TRUE(marked());
}

TEST_F(PolicyTranslatePerRule, AWalkOverNothingDoesNotMarkAndOneThatDeletesDoes) {
  make();
  sm->handleOrigin();
  EXPECT_FALSE(marked());
  v2->originIs("stale");
  sm->handleOrigin();
  EXPECT_TRUE(v2->origin().empty());
  EXPECT_TRUE(marked());
}

TEST_F(PolicyTranslatePerRule, HandlesAnOriginAlsoWhileNotInitialized) {
  make();
  sm->cleanup();
  v1->originIs("web");
  EXPECT_TRUE(v2->origin("web"));
  EXPECT_TRUE(sm->perOriginSm("web"));
}

TEST_F(PolicyTranslatePerRule, TheRemovalPassLeavesChildrenAlone) {
  v1->originIs("web");
  make();
  const auto child = sm->perOriginSm("web");
  sm->hasNotificationActiveIs(false);
  v1->originDel("web");
  sm->handleOrigin();
  EXPECT_FALSE(v2->origin("web"));
  EXPECT_EQ(sm->perOriginSm("web"), child);
}

TEST_F(PolicyTranslatePerRule, AChildIsKeptForTheSameObjectsOnly) {
  const auto originOfV1 = v1->originIs("web");
  make();
  const auto originOfV2 = v2->origin("web");
  const auto child = sm->perOriginSm("web");
  EXPECT_EQ(sm->perOriginSmIs("web", originOfV1, originOfV2, cookie), child);
  EXPECT_THROW(sm->perOriginSmIs("web", ruleV1(15000)->originIs("web"), originOfV2, cookie),
               Kel::ReinstantiationException);
  EXPECT_THROW(sm->perOriginSmIs("web", originOfV1, v2->originIs("other"), cookie),
               Kel::ReinstantiationException);
  EXPECT_THROW(sm->perOriginSmIs("web", originOfV1, originOfV2, nullptr),
               Kel::ReinstantiationException);
  EXPECT_EQ(sm->perOriginSm("web"), child);
}

TEST_F(PolicyTranslatePerRule, DelReturnsTheRemovedChildOrNull) {
  v1->originIs("a");
  v1->originIs("b");
  make();
  const auto child = sm->perOriginSm("a");
  EXPECT_EQ(sm->perOriginSmDel("a"), child);
  EXPECT_FALSE(sm->perOriginSmDel("a"));
  sm->perOriginSmDelAll();
  EXPECT_TRUE(sm->perOriginSm().empty());
  EXPECT_EQ(keys(v2->origin()), (Lines{"a", "b"})) << "entries are the handlers' business";
}

TEST_F(PolicyTranslatePerRule, ASecondInitializationIsAHarmlessWalk) {
  v1->originIs("web");
  make();
  const auto child = sm->perOriginSm("web");
  sm->handleInitialized();
  EXPECT_EQ(sm->perOriginSm("web"), child);
}

TEST_F(PolicyTranslatePerRule, WithoutVersionOneItDeletesAllOrigins) {
  v2->originIs("stale");
  sm = VelaPolicyMonitor::policyTranslatePerRuleSmFactory(p1(20000), nullptr, v2, cookie);
  EXPECT_TRUE(v2->origin().empty());
  EXPECT_TRUE(sm->perOriginSm().empty());
  v2->originIs("mail");
  sm->handleOrigin("mail");
  EXPECT_TRUE(v2->origin().empty());
}

TEST_F(PolicyTranslatePerRule, WithoutVersionTwoRemovesAndCleansUpWithoutHarm) {
  sm = VelaPolicyMonitor::policyTranslatePerRuleSmFactory(p1(20000), v1, nullptr, cookie);
  sm->handleOrigin("stranger");
  sm->handleOrigin();
  sm->cleanup();
  EXPECT_FALSE(sm->initialized());
}

TEST_F(PolicyTranslatePerRuleDeathTest, WithoutVersionTwoAnAdditionStopsTheProcess) {
  v1->originIs("web");
  EXPECT_DEATH(
      VelaPolicyMonitor::policyTranslatePerRuleSmFactory(p1(20000), v1, nullptr, cookie),
      "handleOrigin\\(const String&\\): assertion \"entity != nullptr\" failed: .*built without");
}

TEST_F(PolicyTranslatePerRule, TheAttributesHaveTheirFixedIds) {
  EXPECT_EQ(PolicyTranslatePerRuleSm::priorityAttr.id, 130);
  EXPECT_EQ(PolicyTranslatePerRuleSm::ruleV1Attr.id, 131);
  EXPECT_EQ(PolicyTranslatePerRuleSm::ruleV2Attr.id, 132);
  EXPECT_EQ(PolicyTranslatePerRuleSm::cookieAttr.id, 133);
  EXPECT_EQ(PolicyTranslatePerRuleSm::perOriginSmAttr.id, 134);
  EXPECT_EQ(PolicyTranslatePerRuleSm::initializedAttr.id, 137);
}

}  // namespace
}  // namespace PolicyTests
