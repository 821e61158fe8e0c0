#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "contract/Contract.h"

namespace Contract {
namespace {

/// Calls of collection operations from outside, with observers that answer by changes of version 1.
class ChildCollection : public ::testing::Test {
 protected:
  World world;
  Ptr<PolicyTranslatePerRuleSm> rule =
      Machine<PolicyTranslatePerRuleSm>::args(world, &policyTranslatePerRuleSmFactory);
};

TEST_F(ChildCollection, HandsOutTheChildThatItHolds) {
  const auto v1 = world.ruleV1()->origin("web");
  const auto v2 = world.ruleV2()->origin("web");
  const auto child = rule->perOriginSmIs("web", v1, v2, rule->cookie());
  EXPECT_EQ(child, rule->perOriginSm("web"));
  EXPECT_EQ(child->refCount(), 2U);
}

TEST_F(ChildCollection, RefusesOtherObjectsForAChildThatIsThere) {
  const auto v1 = world.ruleV1()->origin("web");
  const auto v2 = world.ruleV2()->origin("web");
  const auto before = rule->perOriginSm("web");
  try {
    rule->perOriginSmIs("web", v1, v2, updateCookieFactory());
    FAIL() << "nothing was raised";
  } catch (const Kel::ReinstantiationException& error) {
    EXPECT_STREQ(error.what(),
                 "VelaPolicyMonitor::PolicyTranslatePerRuleSm::perOriginSm[web] exists and was "
                 "built from other objects than those given; remove it before creating it anew");
  }
  EXPECT_EQ(rule->perOriginSm("web"), before);
}

TEST_F(ChildCollection, OwnsNothingTwiceWhenWhatWasPostponedRaisesAtTheEndOfTheCall) {
  const auto v1 = world.ruleV1()->origin("web");
  const auto v2 = world.ruleV2()->origin("web");
  rule->perOriginSmDel("web");
  int number = 0;
  // The child's first write makes the machine postpone a change whose handler then fails.
  const Kel::Observer own(*v2, [&](Kel::AttrId, const void*) {
    if (++number == 1) {
      world.ruleV1()->originIs("late");
    }
  });
  const auto whole = world.ruleV2();
  const Kel::Observer refusing(
      *whole, [](Kel::AttrId, const void*) { throw std::runtime_error("refused"); });
  EXPECT_THROW(rule->perOriginSmIs("web", v1, v2, rule->cookie()), std::runtime_error);
  ASSERT_NE(rule->perOriginSm("web"), nullptr);
  EXPECT_EQ(rule->perOriginSm("web")->refCount(), 2U);  // the collection's, and this call's own
}

TEST_F(ChildCollection, RemovesOneChildOrAll) {
  EXPECT_EQ(rule->perOriginSmDel("nobody"), nullptr);
  const auto gone = rule->perOriginSmDel("web");
  ASSERT_NE(gone, nullptr);
  EXPECT_EQ(gone->refCount(), 1U);
  EXPECT_EQ(rule->perOriginSm().size(), 0U);
  world.ruleV1()->originIs("a");
  world.ruleV1()->originIs("b");
  EXPECT_EQ(rule->perOriginSm().size(), 2U);
  rule->perOriginSmDelAll();
  EXPECT_EQ(rule->perOriginSm().size(), 0U);
}

TEST_F(ChildCollection, MayBeChangedWhileItIsWalked) {
  for (const char* name : {"a", "b", "c", "d"}) {
    world.ruleV1()->originIs(name);
  }
  std::size_t visited = 0;
  for (const auto& [name, child] : rule->perOriginSm()) {
    ++visited;
    EXPECT_EQ(child->policyName(), name);
    rule->perOriginSmDelAll();
    EXPECT_EQ(child->policyName(), name);
  }
  EXPECT_EQ(visited, 1U);
}

/// The end of the child that gives way is seen by an observer, who does something about it.
class ChildThatGivesWay : public ::testing::Test {
 protected:
  /// Puts another record into the place of that of fw1.
  Ptr<DevicePolicyList> renewedRecord() {
    world.status->devicePolicyListDel("fw1");
    const auto record = world.status->devicePolicyListIs("fw1");
    record->netVrfNameByVrfIs("red", "net-red");
    return record;
  }
  /// Has the child give way; `act` runs when it ends.
  void giveWay(const std::function<void()>& act) {
    int asked = 0;
    const Kel::Observer asking(*policySetV2, [&](Kel::AttrId, const void*) {
      if (++asked == 1) {
        act();
      }
    });
    root->handlePolicySet();
    EXPECT_GE(asked, 1);
  }

  World world;
  Ptr<PolicyTranslateRootSm> root =
      policyTranslateRootSmFactory(world.policySrcV1, world.policySrcV2, world.status);
  Ptr<PolicyTranslatePerDeviceSm> before = root->perDeviceSm("fw1");
  Ptr<VelaL3V2::VelaPolicySetConfig> policySetV2 = world.policySrcV2->policySet("fw1");
};

TEST_F(ChildThatGivesWay, IsFollowedByOneChildAlthoughAnObserverOfItsEndAsksForItToo) {
  const auto record = renewedRecord();
  giveWay([&] { root->handlePolicySet(); });
  EXPECT_EQ(root->perDeviceSm().size(), 1U);
  const auto after = root->perDeviceSm("fw1");
  ASSERT_NE(after, nullptr);
  EXPECT_NE(after, before);
  EXPECT_EQ(after->policyList(), record);
  EXPECT_EQ(policySetV2->policy().size(), 1U);
}

TEST_F(ChildThatGivesWay, IsFollowedByTheVeryChildThatAnObserverOfItsEndHasHadMade) {
  const auto record = renewedRecord();
  Ptr<PolicyTranslatePerDeviceSm> made;
  int asked = 0;
  const Kel::Observer asking(*policySetV2, [&](Kel::AttrId, const void*) {
    if (++asked == 1) {
      root->handlePolicySet();
      made = root->perDeviceSm("fw1");
    }
  });
  EXPECT_EQ(root->perDeviceSmIs("fw1", world.policySetV1(), policySetV2, record), made);
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(root->perDeviceSm("fw1"), made);
  EXPECT_FALSE(made->retired());
}

TEST_F(ChildThatGivesWay, IsFollowedByTheChildOfTheCallAlthoughAnObserverMakesOneOfOtherObjects) {
  const auto record = renewedRecord();
  giveWay([&] {
    const auto other = renewedRecord();
    root->handlePolicySet();
    EXPECT_EQ(root->perDeviceSm("fw1")->policyList(), other);
  });
  EXPECT_EQ(root->perDeviceSm().size(), 1U);
  EXPECT_EQ(root->perDeviceSm("fw1")->policyList(), record);
  EXPECT_EQ(policySetV2->policy().size(), 1U);
}

TEST_F(ChildThatGivesWay, IsFollowedByNoneWhenAnObserverBringsItsOwnerToItsEnd) {
  renewedRecord();
  giveWay([&] { root->retire(); });
  EXPECT_TRUE(root->perDeviceSm().empty());
  EXPECT_TRUE(world.policySrcV2->policySet().empty());
  EXPECT_TRUE(policySetV2->policy().empty());
}

}  // namespace
}  // namespace Contract
