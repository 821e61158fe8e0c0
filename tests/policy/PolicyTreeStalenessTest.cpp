#include "policy/PolicyWorld.h"

namespace PolicyTests {
namespace {

/// Entities and records that are deleted and made anew under a key that a machine has a child for.
class PolicyTreeStaleness : public PolicyWorld {
 protected:
  PolicyTreeStaleness() {
    map();
    originV1()->tagsIs("old");
    matchV1()->l3AppIs(6);
    root = makeRoot();
  }
  Ptr<PolicyTranslatePerDeviceSm> device() const { return root->perDeviceSm("fw1"); }
  Ptr<PolicyTranslatePerVrfSm> vrf() const { return device()->perVrfSm(VrfName("red")); }
  Ptr<PolicyTranslatePerRuleSm> rule() const { return vrf()->perRuleSm(p1(20000)); }
  /// Runs `change` while the machines do not listen.
  void silently(const std::function<void()>& change) const {
    root->hasNotificationActiveIs(false);
    change();
    root->hasNotificationActiveIs(true);
  }

  Ptr<PolicyTranslateRootSm> root;
};

TEST_F(PolicyTreeStaleness, ANewRecordChangesNothingUntilItsDeviceIsNotified) {
  const Ptr<DevicePolicyList> old = record;
  status->devicePolicyListDel("fw1");
  record = status->devicePolicyListIs("fw1");
  map("red", "net-new");
  EXPECT_TRUE(policyV2("net-red"));
  EXPECT_FALSE(record->policyConverge());
  old->netVrfNameByVrfIs("red", "net-old");
  EXPECT_TRUE(policyV2("net-old")) << "the machine follows the record that it was built with";
}

TEST_F(PolicyTreeStaleness, ANewRecordReplacesTheMachineOfItsDeviceAtTheNextNotification) {
  const Ptr<DevicePolicyList> old = record;
  status->devicePolicyListDel("fw1");
  record = status->devicePolicyListIs("fw1");
  map();
  root->handlePolicySet("fw1");
  EXPECT_EQ(device()->policyList(), record);
  EXPECT_TRUE(record->policyConverge());
  EXPECT_EQ(originV2()->tags(), "old");
  EXPECT_EQ(keys(matchV2()->l3App()), Lines{"6"});
  EXPECT_EQ(old->publisher().subscriberCount(), 0U);
  EXPECT_EQ(record->publisher().subscriberCount(), 1U);
  EXPECT_EQ(live<PolicyTranslatePerDeviceSm>(), 1U);
  EXPECT_EQ(live<PolicyTranslateMatchSm>(), 1U);
}

TEST_F(PolicyTreeStaleness, APolicySetMadeAnewUnheardReplacesTheMachineAtItsNextNotification) {
  const auto before = device();
  silently([&] {
    sourceV1->policySetDel("fw1");
    policyV1()->ruleIs(p1(15000));
  });
  root->handlePolicySet("fw1");
  EXPECT_NE(device(), before);
  EXPECT_EQ(device()->policySetV1(), setV1());
  EXPECT_EQ(keys(policyV2()->rule()), Lines{"15000"});
}

TEST_F(PolicyTreeStaleness, APolicyMadeAnewUnheardReplacesTheMachineAtItsNextNotification) {
  const auto before = vrf();
  silently([&] {
    setV1()->policyDel(VrfName("red"));
    policyV1()->ruleIs(p1(15000));
  });
  device()->handleVrf("red");
  EXPECT_NE(vrf(), before);
  EXPECT_EQ(vrf()->policyV1(), policyV1());
  EXPECT_EQ(keys(policyV2()->rule()), Lines{"15000"});
}

TEST_F(PolicyTreeStaleness, ARuleMadeAnewUnheardIsAnErrorAndVersionTwoStays) {
  const auto old = ruleV1();
  silently([&] {
    policyV1()->ruleDel(p1(20000));
    ruleV1()->originIs("new");
  });
  EXPECT_THROW(vrf()->handleRule(p1(20000)), Kel::ReinstantiationException);
  EXPECT_EQ(keys(ruleV2()->origin()), Lines{"web"});
  EXPECT_EQ(rule()->ruleV1(), old);
}

TEST_F(PolicyTreeStaleness, ARuleMadeAnewUnheardRecoversByItsRemoval) {
  silently([&] {
    policyV1()->ruleDel(p1(20000));
    ruleV1()->originIs("new");
  });
  policyV1()->ruleDel(p1(20000));
  ruleV1()->originIs("newest");
  EXPECT_EQ(keys(ruleV2()->origin()), Lines{"newest"});
}

TEST_F(PolicyTreeStaleness, ARuleMadeAnewUnheardRecoversByCleanUpAndInitialization) {
  silently([&] {
    policyV1()->ruleDel(p1(20000));
    ruleV1()->originIs("new");
  });
  vrf()->cleanup();
  vrf()->handleInitialized();
  EXPECT_EQ(keys(ruleV2()->origin()), Lines{"new"});
}

TEST_F(PolicyTreeStaleness, AnOriginMadeAnewUnheardIsAnErrorAndVersionTwoStays) {
  silently([&] {
    ruleV1()->originDel("web");
    originV1()->tagsIs("new");
  });
  EXPECT_THROW(rule()->handleOrigin("web"), Kel::ReinstantiationException);
  EXPECT_EQ(originV2()->tags(), "old");
}

TEST_F(PolicyTreeStaleness, AMatchMadeAnewUnheardReplacesTheMachineAtItsNextNotification) {
  silently([&] {
    originV1()->matchDel();
    matchV1()->l3AppIs(17);
  });
  rule()->perOriginSm("web")->handleMatch();
  EXPECT_EQ(keys(matchV2()->l3App()), Lines{"17"});
}

TEST_F(PolicyTreeStaleness, AVersionTwoRuleDeletedByOthersIsAnErrorAtTheNextNotification) {
  policyV2()->ruleDel(p2(20000));
  EXPECT_THROW(vrf()->handleRule(p1(20000)), Kel::ReinstantiationException);
}

TEST_F(PolicyTreeStaleness, AVersionTwoOriginDeletedByOthersIsAnErrorAtTheNextNotification) {
  ruleV2()->originDel("web");
  EXPECT_THROW(rule()->handleOrigin("web"), Kel::ReinstantiationException);
}

TEST_F(PolicyTreeStaleness, AVersionTwoPolicyDeletedByOthersIsBackAtTheNextNotification) {
  setV2()->policyDel("net-red");
  device()->handleVrf("red");
  EXPECT_EQ(originV2()->tags(), "old");
  EXPECT_EQ(vrf()->policyV2(), policyV2());
}

TEST_F(PolicyTreeStaleness, AVersionTwoPolicySetDeletedByOthersIsBackAtTheNextNotification) {
  sourceV2->policySetDel(Vela::DeviceName("fw1"));
  root->handlePolicySet("fw1");
  EXPECT_EQ(originV2()->tags(), "old");
}

TEST_F(PolicyTreeStaleness, AVersionTwoMatchDeletedByOthersIsBackAtTheNextNotification) {
  originV2()->matchDel();
  rule()->perOriginSm("web")->handleMatch();
  EXPECT_EQ(keys(matchV2()->l3App()), Lines{"6"});
}

TEST_F(PolicyTreeStaleness, AChildThatOutlivedItsRuleInAWalkMakesItsReturnAnError) {
  silently([&] { policyV1()->ruleDel(p1(20000)); });
  vrf()->handleRule();
  EXPECT_FALSE(ruleV2());
  EXPECT_THROW(ruleV1(), Kel::ReinstantiationException);
}

TEST_F(PolicyTreeStaleness, AnInitializationOfTheRootDoesNotReadDeeperLevelsAnew) {
  silently([&] { policyV1()->ruleIs(p1(15000)); });
  root->handleInitialized();
  EXPECT_FALSE(ruleV2(15000));
  root->cleanup();
  root->handleInitialized();
  EXPECT_TRUE(ruleV2(15000));
}

TEST_F(PolicyTreeStaleness, AChildMadeUnderASilentRootListensAndASecondSwitchOffMissesIt) {
  root->hasNotificationActiveIs(false);
  status->devicePolicyListIs("fw2")->netVrfNameByVrfIs("red", "n");
  setV1("fw2");
  root->handlePolicySet("fw2");
  EXPECT_TRUE(root->perDeviceSm("fw2")->hasNotificationActive());
  root->hasNotificationActiveIs(false);
  setV1("fw2")->policyIs(VrfName("red"));
  EXPECT_EQ(keys(setV2("fw2")->policy()), Lines{"n"});
}

}  // namespace
}  // namespace PolicyTests
