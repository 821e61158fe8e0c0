#include <memory>

#include "policy/PolicyWorld.h"

namespace PolicyTests {
namespace {

/// Observers of version 2 that change version 1, or drop machines, from inside a handler.
class PolicyTreeReentrancy : public PolicyWorld {
 protected:
  PolicyTreeReentrancy() { map(); }

  Ptr<PolicyTranslatePerDeviceSm> device() const { return root->perDeviceSm("fw1"); }
  Ptr<PolicyTranslatePerVrfSm> vrf() const { return device()->perVrfSm(VrfName("red")); }
  Ptr<PolicyTranslatePerRuleSm> rule() const { return vrf()->perRuleSm(p1(20000)); }
  /// An observer that acts at the first notification only.
  template <class Entity>
  static Observer onceOf(const Entity& entity, const std::function<void()>& act) {
    return Observer(entity, [act, done = std::make_shared<bool>(false)](AttrId, const void*) {
      if (!std::exchange(*done, true)) {
        act();
      }
    });
  }
  static std::size_t liveMachines() {
    return live<PolicyTranslateRootSm>() + live<PolicyTranslatePerDeviceSm>() +
           live<PolicyTranslatePerVrfSm>() + live<PolicyTranslatePerRuleSm>() +
           live<PolicyTranslatePerOriginSm>() + live<PolicyTranslateMatchSm>();
  }

  Ptr<PolicyTranslateRootSm> root = makeRoot();
};

TEST_F(PolicyTreeReentrancy, AChangeForABusyMachineIsServedWhenItsHandlerIsDone) {
  ruleV1();
  const Observer watch = onceOf(*ruleV2(), [&] { ruleV1()->originIs("mail"); });
  BothTraces traces;
  ruleV1()->originIs("web");
  EXPECT_EQ(keys(ruleV2()->origin()), (Lines{"mail", "web"}));
  Lines decisions;
  for (const std::string& line : traces.take()) {
    if (line.find("handleOrigin(const String&)") != std::string::npos) {
      decisions.push_back(line.substr(line.find(')') + 1));
    }
  }
  EXPECT_EQ(
      decisions,
      (Lines{" Rule priority: 20000 policy: web", " priority: 20000 add policy web", "return",
             " Rule priority: 20000 policy: mail", " priority: 20000 add policy mail", "return"}));
}

TEST_F(PolicyTreeReentrancy, AnotherKeyThatIsHandledWhileAChildIsBeingMadeGetsItsChild) {
  policyV1();
  vrf()->hasNotificationActiveIs(false);
  originV1();
  ruleV1(15000);
  vrf()->hasNotificationActiveIs(true);
  bool made = false;
  std::unique_ptr<Observer> below;
  const Observer watch(*policyV2(), [&](AttrId, const void*) {
    if (!below && ruleV2()) {
      below = std::make_unique<Observer>(*ruleV2(), [&](AttrId, const void*) {
        vrf()->handleRule(p1(15000));
        made = vrf()->perRuleSm(p1(15000)) != nullptr;
      });
    }
  });
  vrf()->handleRule(p1(20000));
  EXPECT_TRUE(made);
  EXPECT_EQ(vrf()->perRuleSm().size(), 2U);
}

TEST_F(PolicyTreeReentrancy, AKeyNotifiedWhileItsChildIsBeingMadeGetsNoSecondChild) {
  policyV1();
  const auto key = p1(20000);
  const Observer watch = onceOf(*policyV2(), [&] {
    policyV1()->publisher().publish(VelaL3::VelaPolicyConfig::ruleAttr.id, &key);
  });
  ruleV1()->originIs("web");
  EXPECT_EQ(live<PolicyTranslatePerRuleSm>(), 1U);
  EXPECT_EQ(keys(ruleV2()->origin()), Lines{"web"});
}

TEST_F(PolicyTreeReentrancy, ARuleRemovedWhileItsChildIsBeingMadeIsGoneInTheEnd) {
  policyV1();
  const Observer watch = onceOf(*policyV2(), [&] { policyV1()->ruleDel(p1(20000)); });
  ruleV1();
  EXPECT_TRUE(policyV2()->rule().empty());
  EXPECT_TRUE(vrf()->perRuleSm().empty());
}

TEST_F(PolicyTreeReentrancy, ARuleMadeAnewWhileItsChildIsBeingMadeIsMirroredInTheEnd) {
  policyV1();
  const Observer watch = onceOf(*policyV2(), [&] {
    policyV1()->ruleDel(p1(20000));
    ruleV1()->originIs("second");
  });
  ruleV1()->originIs("first");
  ASSERT_TRUE(ruleV2());
  EXPECT_EQ(keys(ruleV2()->origin()), keys(ruleV1()->origin()));
  EXPECT_EQ(rule()->ruleV1(), ruleV1());
}

TEST_F(PolicyTreeReentrancy, AnOriginRemovedFromInsideItsOwnHandlerEndsWithTheHandler) {
  originV1();
  const Observer watch = onceOf(*originV2(), [&] { ruleV1()->originDel("web"); });
  originV1()->tagsIs("t");
  EXPECT_TRUE(ruleV2()->origin().empty());
  EXPECT_TRUE(rule()->perOriginSm().empty());
  EXPECT_EQ(live<PolicyTranslatePerOriginSm>(), 0U);
}

TEST_F(PolicyTreeReentrancy, ADeviceRemovedFromInsideTheHandlerOfItsVrfEndsWithTheHandler) {
  setV1();
  const Observer watch = onceOf(*setV2(), [&] { sourceV1->policySetDel("fw1"); });
  policyV1();
  EXPECT_TRUE(sourceV2->policySet().empty());
  EXPECT_TRUE(root->perDeviceSm().empty());
  EXPECT_EQ(liveMachines(), 1U) << "the root alone";
}

TEST_F(PolicyTreeReentrancy, ADeviceMadeAnewFromInsideTheHandlerOfItsVrfIsMirrored) {
  setV1();
  const Observer watch = onceOf(*setV2(), [&] {
    sourceV1->policySetDel("fw1");
    policyV1()->ruleIs(p1(15000));
  });
  policyV1()->ruleIs(p1(20000));
  EXPECT_EQ(keys(policyV2()->rule()), keys(policyV1()->rule()));
  EXPECT_EQ(live<PolicyTranslatePerDeviceSm>(), 1U);
}

TEST_F(PolicyTreeReentrancy, TheRootDroppedFromInsideAHandlerLeavesVersionTwoEmpty) {
  setV1();
  const Observer watch = onceOf(*setV2(), [&] { root.reset(); });
  ruleV1();
  EXPECT_TRUE(sourceV2->policySet().empty());
  EXPECT_EQ(liveMachines(), 0U);
  EXPECT_EQ(policyV1()->publisher().subscriberCount(), 0U);
}

TEST_F(PolicyTreeReentrancy, TheRootDroppedFromInsideTheDeepestHandlerLeavesVersionTwoEmpty) {
  matchV1();
  const Observer watch = onceOf(*matchV2(), [&] { root.reset(); });
  matchV1()->srcIpIs(IpGenPrefix("10.0.0.0/8"));
  EXPECT_TRUE(sourceV2->policySet().empty());
  EXPECT_EQ(liveMachines(), 0U);
}

TEST_F(PolicyTreeReentrancy, TheRootDroppedFromInsideItsOwnHandlerLeavesVersionTwoEmpty) {
  const Observer watch = onceOf(*sourceV2, [&] { root.reset(); });
  setV1();
  EXPECT_TRUE(sourceV2->policySet().empty());
  EXPECT_EQ(liveMachines(), 0U);
}

TEST_F(PolicyTreeReentrancy, AMatchReplacedFromInsideItsHandlerIsReconciledByItsSuccessor) {
  matchV1();
  const Observer watch = onceOf(*matchV2(), [&] {
    originV1()->matchDel();
    matchV1()->dstIpIs(IpGenPrefix("11.0.0.0/8"));
  });
  matchV1()->srcIpIs(IpGenPrefix("10.0.0.0/8"));
  EXPECT_TRUE(matchV2()->srcIp().empty());
  EXPECT_EQ(keys(matchV2()->dstIp()), Lines{"11.0.0.0/8"});
  EXPECT_EQ(live<PolicyTranslateMatchSm>(), 1U);
}

TEST_F(PolicyTreeReentrancy, AMatchReplacedWhileItsOwnerIsBusyIsReplacedAfterwards) {
  ruleV1();
  std::unique_ptr<Observer> inner;
  const Observer watch = onceOf(*ruleV2(), [&] {
    inner = std::make_unique<Observer>(*originV2(), [&](AttrId id, const void*) {
      if (id == VelaL3V2::VelaRuleOriginConfig::matchAttr.id && originV1()->match() &&
          !originV1()->match()->l3App(99)) {
        originV1()->matchDel();
        matchV1()->l3AppIs(99);
      }
    });
  });
  const auto origin = ruleV1()->originIs("web");
  origin->matchIs()->l3AppIs(6);
  EXPECT_EQ(keys(matchV2()->l3App()), Lines{"99"});
}

TEST_F(PolicyTreeReentrancy, CleanUpOfAnEndingDeviceIsNotRefilledByAnObserver) {
  ruleV1();
  const Observer watch(*setV2(), [&](AttrId, const void*) { map("red", "again"); });
  const auto kept = setV2();
  sourceV1->policySetDel("fw1");
  EXPECT_TRUE(kept->policy().empty());
  EXPECT_EQ(liveMachines(), 1U) << "the root alone";
}

TEST_F(PolicyTreeReentrancy, WhatAnObserverMapsDuringACleanUpIsServedAfterIt) {
  ruleV1();
  const Observer watch = onceOf(*setV2(), [&] {
    map("red", "again");
    note(std::to_string(device()->perVrfSm().size()));
  });
  device()->cleanup();
  EXPECT_EQ(noted(), Lines{"0"});
  EXPECT_EQ(keys(setV2()->policy()), Lines{"again"});
  EXPECT_FALSE(device()->initialized());
}

TEST_F(PolicyTreeReentrancy, AnExceptionOfAHandlerDoesNotLoseWhatWasPostponed) {
  policyV1();
  const Observer watch = onceOf(*policyV2(), [&] {
    policyV1()->ruleIs(p1(15000));
    throw Kel::Exception("first");
  });
  try {
    ruleV1();
    FAIL() << "nothing was raised";
  } catch (const Kel::Exception& error) {
    EXPECT_STREQ(error.what(), "first");
  }
  EXPECT_TRUE(ruleV2(15000));
  EXPECT_TRUE(vrf()->perRuleSm(p1(15000)));
  EXPECT_FALSE(rule()) << "the handler ended before it made the child";
  vrf()->handleRule(p1(20000));
  EXPECT_TRUE(rule());
}

TEST_F(PolicyTreeReentrancy, AnExceptionOfAMachineReachesTheWriterAfterAllOthersWereServed) {
  policyV1();
  const Observer after(*policyV1(), [&](AttrId, const void*) { note("served"); });
  EXPECT_THROW(policyV1()->ruleIs(p1(9999)), Kel::RangeException);
  EXPECT_EQ(noted(), Lines{"served"});
  ruleV1();
  EXPECT_TRUE(ruleV2());
}

TEST_F(PolicyTreeReentrancy, KeysDeletedDuringAWalkAreSkippedAndNotReportedAsRemovals) {
  ruleV1(20000);
  ruleV1(15000);
  root->hasNotificationActiveIs(false);
  policyV2()->ruleDelAll();
  vrf()->perRuleSmDelAll();
  const Observer watch = onceOf(*policyV2(), [&] { policyV1()->ruleDel(p1(15000)); });
  BothTraces traces;
  vrf()->handleRule();
  for (const std::string& line : traces.take()) {
    EXPECT_EQ(line.find("15000"), std::string::npos) << line;
  }
  EXPECT_EQ(keys(policyV2()->rule()), Lines{"20000"});
}

TEST_F(PolicyTreeReentrancy, AHandlerMayBeGivenTheNameThatLiesInTheChildThatItRemoves) {
  originV1();
  root->hasNotificationActiveIs(false);
  ruleV1()->originDel("web");
  rule()->handleOrigin(rule()->perOriginSm().find("web")->policyName());
  EXPECT_TRUE(ruleV2()->origin().empty());
  sourceV1->policySetDel("fw1");
  root->handlePolicySet(root->perDeviceSm().find("fw1")->deviceName());
  EXPECT_TRUE(sourceV2->policySet().empty());
}

}  // namespace
}  // namespace PolicyTests
