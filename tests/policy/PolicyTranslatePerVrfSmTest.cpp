#include "policy/PolicyTranslatePerVrfSm.h"
#include "policy/PolicyWorld.h"

namespace PolicyTests {
namespace {

/// A machine between the policies of one VRF, without the levels above.
class PolicyTranslatePerVrf : public PolicyWorld {
 protected:
  void make() {
    sm = VelaPolicyMonitor::policyTranslatePerVrfSmFactory(VrfName("red"), "net-red", v1, v2);
  }
  /// The signal that a burst of changes is complete.
  void signal() const { v1->timestampIs(v1->timestamp()); }

  Ptr<VelaL3::VelaPolicyConfig> v1 = policyV1();
  Ptr<VelaL3V2::VelaPolicyConfig> v2 =
      sourceV2->policySetIs(Vela::DeviceName("fw1"))->policyIs("net-red");
  Ptr<PolicyTranslatePerVrfSm> sm;
};
using PolicyTranslatePerVrfDeathTest = PolicyTranslatePerVrf;

constexpr const char* kRangeV1 =
    "VelaL3::VelaPriority::value < VelaL3::VelaPriority::min or > VelaL3::VelaPriority::max not "
    "allowed";
constexpr const char* kRangeV2 =
    "VelaL3V2::VelaPriority::value < VelaL3V2::VelaPriority::min or > VelaL3V2::VelaPriority::max "
    "not allowed";

/// The text of the range error that `call` raises.
std::string rangeErrorOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const Kel::RangeException& error) {
    return error.what();
  }
  return "nothing was raised";
}

TEST_F(PolicyTranslatePerVrf, MirrorsTheRulesAndOwnsAChildPerPriority) {
  v1->ruleIs(p1(10001));
  v1->ruleIs(p1(30000));
  make();
  EXPECT_EQ(keys(v2->rule()), (Lines{"10001", "30000"}));
  EXPECT_EQ(keys(sm->perRuleSm()), (Lines{"10001", "30000"}));
  const auto child = sm->perRuleSm(p1(30000));
  EXPECT_EQ(child->ruleV1(), v1->rule(p1(30000)));
  EXPECT_EQ(child->ruleV2(), v2->rule(p2(30000)));
  EXPECT_EQ(child->cookie(), sm->cookie());
}

TEST_F(PolicyTranslatePerVrf, TheLowestPriorityGetsAChildWithoutCookieAndStillMarks) {
  make();
  EXPECT_FALSE(sm->cookie()->updated());
  v1->ruleIs(p1(10000));
  EXPECT_TRUE(v2->rule(p2(10000)));
  EXPECT_FALSE(sm->perRuleSm(p1(10000))->cookie());
  EXPECT_TRUE(sm->cookie()->updated());
}

TEST_F(PolicyTranslatePerVrf, ChangesBelowTheLowestPriorityDoNotMarkButAreMirrored) {
  make();
  const auto rule = v1->ruleIs(p1(10000));
  signal();
  const auto origin = rule->originIs("web");
  origin->tagsIs("tag");
  origin->policyModifierSetIs(VelaL3::VelaPolicyModifier::stateless);
  origin->matchIs()->l3AppIs(6);
  const auto mirrored = v2->rule(p2(10000))->origin("web");
  EXPECT_EQ(mirrored->tags(), "tag");
  EXPECT_EQ(keys(mirrored->policyModifierSet()), Lines{"stateless"});
  EXPECT_TRUE(mirrored->match()->l3App(6));
  rule->originDel("web");
  EXPECT_TRUE(v2->rule(p2(10000))->origin().empty());
  EXPECT_FALSE(sm->cookie()->updated());
  v1->ruleDel(p1(10000));
  EXPECT_TRUE(v2->rule().empty());
  EXPECT_TRUE(sm->cookie()->updated());
}

TEST_F(PolicyTranslatePerVrf,
       ANotificationOutsideTheRangeRaisesTheVersionTwoErrorAndChangesNothing) {
  make();
  for (const std::uint32_t value : {0U, 9999U, 30001U, 0xffffffffU}) {
    EXPECT_EQ(rangeErrorOf([&] { v1->ruleIs(p1(value)); }), kRangeV2);
    EXPECT_EQ(rangeErrorOf([&] { v1->ruleDel(p1(value)); }), kRangeV2);
  }
  EXPECT_TRUE(v2->rule().empty());
  EXPECT_TRUE(sm->perRuleSm().empty());
  EXPECT_FALSE(sm->cookie()->updated());
}

TEST_F(PolicyTranslatePerVrf, AStaleRuleIsDeletedAtTheStartAndTheTimeIsStamped) {
  v2->ruleIs(p2(20000));
  make();
  EXPECT_TRUE(v2->rule().empty());
  EXPECT_EQ(v2->timestamp(), 1000);
  EXPECT_FALSE(sm->cookie()->updated());
}

TEST_F(PolicyTranslatePerVrf, AWalkThatDeletesAStaleRuleMarksAndTheNextSignalStampsOnce) {
  make();
  v2->ruleIs(p2(20000));
  sm->handleRule();
  EXPECT_TRUE(v2->rule().empty());
  EXPECT_TRUE(sm->cookie()->updated());
  const Observer watch(*v2, [&](AttrId id, const void*) {
    note(id == VelaL3V2::VelaPolicyConfig::timestampAttr.id ? "stamp" : "other");
  });
  now = 2000;
  signal();
  EXPECT_EQ(v2->timestamp(), 2000);
  EXPECT_FALSE(sm->cookie()->updated());
  now = 3000;
  signal();
  EXPECT_EQ(v2->timestamp(), 2000);
  EXPECT_EQ(noted(), Lines{"stamp"});
}

TEST_F(PolicyTranslatePerVrf, AnEmptyVrfIsNotStampedAtTheStart) {
  const Observer watch(*v2, [&](AttrId, const void*) { note("changed"); });
  make();
  EXPECT_FALSE(sm->cookie()->updated());
  signal();
  EXPECT_EQ(noted(), Lines{});
}

TEST_F(PolicyTranslatePerVrf, AWalkOverEqualRulesMarksThroughTheKeyedHandlers) {
  v1->ruleIs(p1(20000));
  make();
  EXPECT_FALSE(sm->cookie()->updated());
  sm->handleRule();
  EXPECT_TRUE(sm->cookie()->updated());
}

TEST_F(PolicyTranslatePerVrf, ANotificationOfAnExistingRuleMarksAlthoughAllIsInPlace) {
  v1->ruleIs(p1(20000));
  make();
  const auto child = sm->perRuleSm(p1(20000));
  sm->handleRule(p1(20000));
  EXPECT_TRUE(sm->cookie()->updated());
  EXPECT_EQ(sm->perRuleSm(p1(20000)), child);
}

TEST_F(PolicyTranslatePerVrf, BothWalksGoFromTheHighestPriorityToTheLowest) {
  for (const std::uint32_t value : {15000U, 30000U, 10001U}) {
    v2->ruleIs(p2(value + 1 > 30000 ? value - 2 : value + 1));
    v1->ruleIs(p1(value));
  }
  const Observer watch(*v2, [&](AttrId id, const void* key) {
    if (id == VelaL3V2::VelaPolicyConfig::ruleAttr.id) {
      const auto priority = keyOf<VelaL3V2::VelaPriority>(key);
      note((v2->rule(priority) ? "+" : "-") + Kel::textOf(priority));
    }
  });
  make();
  EXPECT_EQ(noted(), (Lines{"-29998", "-15001", "-10002", "+30000", "+15000", "+10001"}));
}

TEST_F(PolicyTranslatePerVrf, AVersionTwoPriorityOutOfRangeEndsTheWalkAndEarlierDeletionsStay) {
  v1->ruleIs(p1(15000));
  v2->ruleIs(p2(20000));
  v2->ruleIs(p2(5000));
  EXPECT_EQ(rangeErrorOf([&] { make(); }), kRangeV1);
  EXPECT_EQ(keys(v2->rule()), Lines{"5000"});
  EXPECT_EQ(v1->publisher().subscriberCount(), 0U);
  EXPECT_EQ(live<PolicyTranslatePerVrfSm>(), 0U);
}

TEST_F(PolicyTranslatePerVrf, TheFirstPriorityOutOfRangeStopsTheWalkBeforeAnyDeletion) {
  v2->ruleIs(p2(40000));
  v2->ruleIs(p2(20000));
  EXPECT_EQ(rangeErrorOf([&] { make(); }), kRangeV1);
  EXPECT_EQ(keys(v2->rule()), (Lines{"20000", "40000"}));
}

TEST_F(PolicyTranslatePerVrf, CreatesTheRuleBeforeTheChildAndRemovesTheChildBeforeTheRule) {
  make();
  const Observer watch(*v2, [&](AttrId, const void*) {
    note(std::string(v2->rule(p2(20000)) ? "rule, " : "no rule, ") +
         (sm->perRuleSm(p1(20000)) ? "child" : "no child"));
  });
  v1->ruleIs(p1(20000))->originIs("web");
  EXPECT_EQ(noted(), Lines{"rule, no child"});
  const Observer below(*v2->rule(p2(20000)), [&](AttrId, const void*) { note("origin deleted"); });
  v1->ruleDel(p1(20000));
  EXPECT_EQ(noted(), (Lines{"origin deleted", "no rule, no child"}));
}

TEST_F(PolicyTranslatePerVrf, TheRemovalPassLeavesChildrenAlone) {
  v1->ruleIs(p1(20000));
  make();
  const auto child = sm->perRuleSm(p1(20000));
  sm->hasNotificationActiveIs(false);
  v1->ruleDel(p1(20000));
  sm->handleRule();
  EXPECT_TRUE(v2->rule().empty());
  EXPECT_EQ(sm->perRuleSm(p1(20000)), child);
}

TEST_F(PolicyTranslatePerVrf, CleanUpLeavesNoRulesAndNoChildrenButInitCompleteAndCookie) {
  v1->ruleIs(p1(20000));
  make();
  v2->ruleIs(p2(12345));
  const auto cookie = sm->cookie();
  sm->cleanup();
  EXPECT_TRUE(v2->rule().empty());
  EXPECT_TRUE(sm->perRuleSm().empty());
  EXPECT_FALSE(sm->initialized());
  EXPECT_TRUE(sm->initComplete());
  EXPECT_EQ(sm->cookie(), cookie);
}

TEST_F(PolicyTranslatePerVrf, ARuleIsHandledAlsoWhileNotInitialized) {
  make();
  sm->cleanup();
  v1->ruleIs(p1(20000));
  EXPECT_TRUE(v2->rule(p2(20000)));
  EXPECT_TRUE(sm->cookie()->updated());
  signal();
  EXPECT_TRUE(sm->cookie()->updated()) << "no update while not initialized";
}

TEST_F(PolicyTranslatePerVrf, WithoutVersionOneItDeletesAllRules) {
  v2->ruleIs(p2(20000));
  sm = VelaPolicyMonitor::policyTranslatePerVrfSmFactory(VrfName("red"), "net-red", nullptr, v2);
  EXPECT_TRUE(v2->rule().empty());
  EXPECT_TRUE(sm->initComplete());
  v2->ruleIs(p2(15000));
  sm->handleRule(p1(15000));
  EXPECT_TRUE(v2->rule().empty());
}

TEST_F(PolicyTranslatePerVrf, WithoutVersionTwoRemovesAndCleansUpWithoutHarm) {
  sm = VelaPolicyMonitor::policyTranslatePerVrfSmFactory(VrfName("red"), "net-red", v1, nullptr);
  sm->handleRule(p1(20000));
  sm->handleRule();
  sm->cleanup();
  EXPECT_FALSE(sm->initialized());
}

TEST_F(PolicyTranslatePerVrfDeathTest, WithoutVersionTwoAnAdditionStopsTheProcess) {
  v1->ruleIs(p1(20000));
  EXPECT_DEATH(
      VelaPolicyMonitor::policyTranslatePerVrfSmFactory(VrfName("red"), "net-red", v1, nullptr),
      "handleRule\\(VelaL3::VelaPriority\\): assertion \"entity != nullptr\" failed: .*built "
      "without");
}

}  // namespace
}  // namespace PolicyTests
