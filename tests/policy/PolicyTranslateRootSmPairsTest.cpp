#include "policy/PolicyWorld.h"

namespace PolicyTests {
namespace {

/// Which record serves a device that is a pair of firewalls. The backslash keeps the colon inside
/// the pair's id from separating components.
class PolicyTranslateRootPairs : public PolicyWorld {
 protected:
  static constexpr const char* kPair = "fwA\\:fwB_HAPair";

  Ptr<PolicyTranslateRootSm> root = makeRoot();
};

TEST_F(PolicyTranslateRootPairs, APlainDeviceIsServedByTheRecordOfItsOwnName) {
  EXPECT_EQ(root->getPolicyList("fw1"), record);
  EXPECT_FALSE(root->getPolicyList("fw2"));
  EXPECT_FALSE(root->getPolicyList(""));
}

TEST_F(PolicyTranslateRootPairs, APlainCompoundNameIsLookedUpAsItStands) {
  const auto compound = status->devicePolicyListIs("fw1:ctx:");
  EXPECT_EQ(root->getPolicyList("fw1:ctx:"), compound);
  EXPECT_FALSE(root->getPolicyList("fw1:ctx"));
}

TEST_F(PolicyTranslateRootPairs, AMarkerInTheMiddleDoesNotMakeAPair) {
  const auto odd = status->devicePolicyListIs("a_HAPairb");
  EXPECT_EQ(root->getPolicyList("a_HAPairb"), odd);
}

TEST_F(PolicyTranslateRootPairs, TheFirstMembersRecordIsUsedWhenBothMembersHaveOne) {
  const auto second = status->devicePolicyListIs("fwB::");
  const auto first = status->devicePolicyListIs("fwA::");
  EXPECT_EQ(root->getPolicyList(kPair), first);
  setV1(kPair);
  EXPECT_EQ(root->perDeviceSm(kPair)->policyList(), first);
  EXPECT_TRUE(first->policyConverge());
  EXPECT_FALSE(second->policyConverge());
}

TEST_F(PolicyTranslateRootPairs, TheSecondMembersRecordIsUsedWhenTheFirstHasNone) {
  const auto second = status->devicePolicyListIs("fwB::");
  EXPECT_EQ(root->getPolicyList(kPair), second);
  setV1(kPair);
  EXPECT_TRUE(setV2(kPair));
}

TEST_F(PolicyTranslateRootPairs, APairWithoutMemberRecordsIsNotAddedEvenIfItsOwnNameHasARecord) {
  status->devicePolicyListIs(kPair);
  setV1(kPair);
  EXPECT_FALSE(root->getPolicyList(kPair));
  EXPECT_FALSE(setV2(kPair));
}

TEST_F(PolicyTranslateRootPairs, APairIsRemovedWhenItsMembersRecordsHaveGone) {
  status->devicePolicyListIs(kPair);
  status->devicePolicyListIs("fwA::");
  setV1(kPair);
  EXPECT_TRUE(setV2(kPair));
  status->devicePolicyListDel("fwA::");
  root->handlePolicySet(kPair);
  EXPECT_FALSE(setV2(kPair));
}

TEST_F(PolicyTranslateRootPairs, TheKeyOfAMemberKeepsTheSecondAndThirdComponentOfThePair) {
  const auto first = status->devicePolicyListIs("fwA:ctx:area");
  EXPECT_EQ(root->getPolicyList("fwA\\:fwB_HAPair:ctx:area"), first);
  EXPECT_FALSE(root->getPolicyList("fwA\\:fwB_HAPair:ctx:other"));
}

TEST_F(PolicyTranslateRootPairs, AnEscapedColonInsideAComponentIsEscapedAgain) {
  const auto first = status->devicePolicyListIs("fwA:c\\:x:");
  EXPECT_EQ(root->getPolicyList("fwA\\:fwB_HAPair:c\\:x"), first);
}

TEST_F(PolicyTranslateRootPairs, AnUnescapedPairIdIsLookedUpAsItStands) {
  status->devicePolicyListIs("fwA::");
  EXPECT_FALSE(root->getPolicyList("fwA:fwB_HAPair"));
  const auto itself = status->devicePolicyListIs("fwA:fwB_HAPair");
  EXPECT_EQ(root->getPolicyList("fwA:fwB_HAPair"), itself);
}

TEST_F(PolicyTranslateRootPairs, ComponentsBehindTheThirdAreDroppedFromTheKeyOfAMember) {
  const auto first = status->devicePolicyListIs("fwA:ctx:area");
  EXPECT_EQ(root->getPolicyList("fwA\\:fwB_HAPair:ctx:area:more"), first);
}

TEST_F(PolicyTranslateRootPairs, APairIdOfOneNameTriesThatNameAndThenTheEmptyOne) {
  const auto empty = status->devicePolicyListIs("::");
  EXPECT_EQ(root->getPolicyList("x_HAPair"), empty);
  const auto named = status->devicePolicyListIs("x::");
  EXPECT_EQ(root->getPolicyList("x_HAPair"), named);
}

TEST_F(PolicyTranslateRootPairs, TheMarkerAloneIsAPairOfEmptyNames) {
  EXPECT_FALSE(root->getPolicyList("_HAPair"));
  const auto empty = status->devicePolicyListIs("::");
  EXPECT_EQ(root->getPolicyList("_HAPair"), empty);
}

TEST_F(PolicyTranslateRootPairs, TheFirstMembersRecordTakesOverAtTheNextNotificationOfThePair) {
  const auto second = status->devicePolicyListIs("fwB::");
  second->netVrfNameByVrfIs("red", "net-b");
  setV1(kPair)->policyIs(VrfName("red"));
  EXPECT_EQ(keys(setV2(kPair)->policy()), Lines{"net-b"});
  const auto first = status->devicePolicyListIs("fwA::");
  first->netVrfNameByVrfIs("red", "net-a");
  EXPECT_EQ(keys(setV2(kPair)->policy()), Lines{"net-b"});
  root->handlePolicySet(kPair);
  EXPECT_EQ(keys(setV2(kPair)->policy()), Lines{"net-a"});
  EXPECT_EQ(second->publisher().subscriberCount(), 0U);
}

TEST_F(PolicyTranslateRootPairs, APairAndASingleDeviceMayShareOneRecord) {
  const auto shared = status->devicePolicyListIs("fwA::");
  setV1(kPair)->policyIs(VrfName("red"));
  setV1("fwA::")->policyIs(VrfName("red"));
  EXPECT_EQ(shared->publisher().subscriberCount(), 2U);
  shared->netVrfNameByVrfIs("red", "n");
  EXPECT_EQ(keys(setV2(kPair)->policy()), Lines{"n"});
  EXPECT_EQ(keys(setV2("fwA::")->policy()), Lines{"n"});
}

}  // namespace
}  // namespace PolicyTests
