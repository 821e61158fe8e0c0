#include "policy/PolicyWorld.h"

namespace PolicyTests {
namespace {

/// Network VRF names that several VRFs share, swap and shift. Each VRF has a rule of its own.
class NetworkVrfNames : public PolicyWorld {
 protected:
  NetworkVrfNames() {
    policyV1("a")->ruleIs(p1(10001));
    policyV1("b")->ruleIs(p1(10002));
  }
  Lines rules(const char* netVrf) const {
    return policyV2(netVrf) ? keys(policyV2(netVrf)->rule()) : Lines{"no such policy"};
  }
  Ptr<PolicyTranslatePerVrfSm> child(const char* vrf) const {
    return root->perDeviceSm("fw1")->perVrfSm(VrfName(vrf));
  }
  void handle(const char* vrf) const { root->perDeviceSm("fw1")->handleVrf(vrf); }

  Ptr<PolicyTranslateRootSm> root = makeRoot();
};

TEST_F(NetworkVrfNames, TheMachineBuiltLastPrunesTheRulesOfTheOtherVrf) {
  map("a", "n");
  EXPECT_EQ(rules("n"), Lines{"10001"});
  map("b", "n");
  EXPECT_EQ(rules("n"), Lines{"10002"});
}

TEST_F(NetworkVrfNames, ASharedEntryThatWentWithOneVrfIsBackAtTheNextNotificationOfTheOther) {
  map("a", "n");
  map("b", "n");
  record->netVrfNameByVrfDel("a");
  EXPECT_EQ(rules("n"), Lines{"no such policy"});
  const auto before = child("b");
  ASSERT_TRUE(before);
  handle("b");
  EXPECT_EQ(rules("n"), Lines{"10002"});
  EXPECT_NE(child("b"), before) << "its entry is another object now";
  EXPECT_EQ(child("b")->policyV2(), policyV2("n"));
}

TEST_F(NetworkVrfNames, UntilThenTheOtherVrfWritesToTheDeletedEntryWithoutHarm) {
  map("a", "n");
  map("b", "n");
  record->netVrfNameByVrfDel("a");
  policyV1("b")->ruleIs(p1(10003));
  EXPECT_EQ(rules("n"), Lines{"no such policy"});
  EXPECT_TRUE(child("b")->policyV2()->rule(p2(10003)));
}

TEST_F(NetworkVrfNames, ARenotifiedRuleWhoseEntryThePrunedSharingDeletedIsAnError) {
  map("a", "n");
  map("b", "n");  // prunes the rule of a; the machine of a keeps its child on it
  EXPECT_THROW(policyV1("a")->publisher().publish(VelaL3::VelaPolicyConfig::ruleAttr.id,
                                                  &policyV1("a")->rule(p1(10001))->priority()),
               Kel::ReinstantiationException);
  EXPECT_TRUE(child("a"));
}

TEST_F(NetworkVrfNames, RenamingOneOfTwoVrfsDeletesTheSharedEntry) {
  map("a", "n");
  map("b", "n");
  map("a", "m");
  EXPECT_EQ(rules("m"), Lines{"10001"});
  EXPECT_EQ(rules("n"), Lines{"no such policy"});
  handle("b");
  EXPECT_EQ(rules("n"), Lines{"10002"});
}

TEST_F(NetworkVrfNames, AShiftOntoAnOccupiedNameEndsRightAfterTheLastNotification) {
  map("a", "n1");
  map("b", "n2");
  map("a", "n2");
  EXPECT_EQ(rules("n1"), Lines{"no such policy"});
  EXPECT_EQ(rules("n2"), Lines{"10001"});
  map("b", "n3");  // deletes n2, its old name, although a lives there now
  EXPECT_EQ(rules("n3"), Lines{"10002"});
  EXPECT_EQ(rules("n2"), Lines{"no such policy"});
  handle("a");
  EXPECT_EQ(rules("n2"), Lines{"10001"});
}

TEST_F(NetworkVrfNames, ASwapLosesOneEntryUntilItsNextNotification) {
  map("a", "n1");
  map("b", "n2");
  map("a", "n2");
  map("b", "n1");
  EXPECT_EQ(rules("n1"), Lines{"10002"});
  EXPECT_EQ(rules("n2"), Lines{"no such policy"});
  handle("a");
  EXPECT_EQ(rules("n1"), Lines{"10002"});
  EXPECT_EQ(rules("n2"), Lines{"10001"});
}

TEST_F(NetworkVrfNames, AFullWalkBringsALostEntryBackAsWell) {
  map("a", "n1");
  map("b", "n2");
  map("a", "n2");
  map("b", "n1");
  root->perDeviceSm("fw1")->handleVrf();
  EXPECT_EQ(rules("n1"), Lines{"10002"});
  EXPECT_EQ(rules("n2"), Lines{"10001"});
}

TEST_F(NetworkVrfNames, AMappingWithoutPolicyDeletesNothingPerKeyAndTheWalkPrunes) {
  map("a", "n");
  root->perDeviceSm("fw1")->policySetV2()->policyIs("left over");
  map("ghost", "left over");
  record->netVrfNameByVrfDel("ghost");
  EXPECT_EQ(keys(setV2()->policy()), (Lines{"left over", "n"}));
  root->perDeviceSm("fw1")->handleVrf();
  EXPECT_EQ(keys(setV2()->policy()), Lines{"n"});
}

TEST_F(NetworkVrfNames, AnEmptyVrfNameIsAVrfLikeAnyOther) {
  policyV1("");
  map("", "net-default");
  EXPECT_TRUE(policyV2("net-default"));
  setV1()->policyDel(VrfName(""));
  EXPECT_FALSE(policyV2("net-default"));
}

}  // namespace
}  // namespace PolicyTests
