#include "policy/PolicyWorld.h"

namespace PolicyTests {
namespace {

/// Every line that the root writes, branch by branch, byte for byte, on both facilities.
class PolicyTranslateRootTrace : public PolicyWorld {
 protected:
  /// What a device without policies writes while it is made.
  const Lines emptyDeviceMade{kDevice(8, "handleInitialized()"), kDevice(8, "handleVrf()"),
                              kDevice(7, "handleVrf()return"),
                              kDevice(7, "handleInitialized()return")};
};

TEST_F(PolicyTranslateRootTrace, TheLinesAreMadeOfTheWholeSignatureAndThePieces) {
  const auto root = makeRoot();
  BothTraces traces;
  root->handlePolicySet("gone");
  EXPECT_EQ(traces.take(),
            (Lines{"8 void VelaPolicyMonitor::PolicyTranslateRootSm::handlePolicySet(const String&)"
                   " Device name: gone",
                   "6 void VelaPolicyMonitor::PolicyTranslateRootSm::handlePolicySet(const String&)"
                   " remove device gone",
                   "7 void VelaPolicyMonitor::PolicyTranslateRootSm::handlePolicySet(const String&)"
                   "return"}));
}

TEST_F(PolicyTranslateRootTrace, OfMakingARootWithNothingToTranslate) {
  BothTraces traces;
  const auto root = makeRoot();
  EXPECT_EQ(traces.take(),
            (Lines{kRoot(8, "handleInitialized()"), kRoot(8, "handlePolicySet()"),
                   kRoot(7, "handlePolicySet()return"), kRoot(7, "handleInitialized()return")}));
}

TEST_F(PolicyTranslateRootTrace, OfAWalkThatDeletesOneEntryAndAddsOne) {
  setV1();
  sourceV2->policySetIs(Vela::DeviceName("stale"));
  BothTraces traces;
  const auto root = makeRoot();
  EXPECT_EQ(traces.take(),
            joined({{kRoot(8, "handleInitialized()"), kRoot(8, "handlePolicySet()"),
                     kRoot(6, "handlePolicySet() remove device stale"),
                     kRoot(8, "handlePolicySet(const String&) Device name: fw1"),
                     kRoot(6, "handlePolicySet(const String&) add device fw1")},
                    emptyDeviceMade,
                    {kRoot(7, "handlePolicySet(const String&)return"),
                     kRoot(7, "handlePolicySet()return"), kRoot(7, "handleInitialized()return")}}));
}

TEST_F(PolicyTranslateRootTrace, OfADeviceThatIsThereAlready) {
  setV1();
  const auto root = makeRoot();
  BothTraces traces;
  root->handlePolicySet("fw1");
  EXPECT_EQ(traces.take(), (Lines{kRoot(8, "handlePolicySet(const String&) Device name: fw1"),
                                  kRoot(6, "handlePolicySet(const String&) add device fw1"),
                                  kRoot(7, "handlePolicySet(const String&)return")}));
}

TEST_F(PolicyTranslateRootTrace, OfRemovingADeviceTheChildsCleanUpLiesBetween) {
  setV1();
  const auto root = makeRoot();
  BothTraces traces;
  sourceV1->policySetDel("fw1");
  EXPECT_EQ(traces.take(),
            (Lines{kRoot(8, "handlePolicySet(const String&) Device name: fw1"),
                   kRoot(6, "handlePolicySet(const String&) remove device fw1"),
                   kDevice(8, "cleanup()"), kRoot(7, "handlePolicySet(const String&)return")}));
}

TEST_F(PolicyTranslateRootTrace, OfADeviceWithoutRecordIsThatOfARemoval) {
  const auto root = makeRoot();
  BothTraces traces;
  setV1("fw2");
  EXPECT_EQ(traces.take(), (Lines{kRoot(8, "handlePolicySet(const String&) Device name: fw2"),
                                  kRoot(6, "handlePolicySet(const String&) remove device fw2"),
                                  kRoot(7, "handlePolicySet(const String&)return")}));
}

TEST_F(PolicyTranslateRootTrace, OfReplacingAChildTheOldOneEndsBeforeTheNewOneIsMade) {
  setV1();
  const auto root = makeRoot();
  status->devicePolicyListDel("fw1");
  status->devicePolicyListIs("fw1");
  BothTraces traces;
  root->handlePolicySet("fw1");
  EXPECT_EQ(traces.take(), joined({{kRoot(8, "handlePolicySet(const String&) Device name: fw1"),
                                    kRoot(6, "handlePolicySet(const String&) add device fw1"),
                                    kDevice(8, "cleanup()")},
                                   emptyDeviceMade,
                                   {kRoot(7, "handlePolicySet(const String&)return")}}));
}

TEST_F(PolicyTranslateRootTrace, OfCleanUpHasNoExitLine) {
  const auto root = makeRoot();
  BothTraces traces;
  root->cleanup();
  EXPECT_EQ(traces.take(), Lines{kRoot(8, "cleanup()")});
}

TEST_F(PolicyTranslateRootTrace, OfDroppingTheRootIsOneCleanUpPerLevelFromTheTop) {
  setV1();
  auto root = makeRoot();
  BothTraces traces;
  root.reset();
  EXPECT_EQ(traces.take(), (Lines{kRoot(8, "cleanup()"), kDevice(8, "cleanup()")}));
}

TEST_F(PolicyTranslateRootTrace, OfAWalkThatAnExceptionEndsHasNoExitLines) {
  policyV1()->ruleIs(p1(9999));
  map();
  BothTraces traces;
  EXPECT_THROW(makeRoot(), Kel::RangeException);
  EXPECT_EQ(
      traces.take(),
      (Lines{kRoot(8, "handleInitialized()"), kRoot(8, "handlePolicySet()"),
             kRoot(8, "handlePolicySet(const String&) Device name: fw1"),
             kRoot(6, "handlePolicySet(const String&) add device fw1"),
             kDevice(8, "handleInitialized()"), kDevice(8, "handleVrf()"),
             kDevice(8, "handleVrf(const String&) Device: fw1 VRF name: red"),
             kDevice(6, "handleVrf(const String&) Device: fw1 add VRF red/net-red"),
             kVrf(8, "handleInitialized() VRF name: red"), kVrf(8, "handleRule() VRF name: red"),
             kVrf(8, "handleRule(VelaL3::VelaPriority) Rule: red priority: 9999")}));
}

TEST_F(PolicyTranslateRootTrace, OfCollectionOperationsAndLookUpsIsNothing) {
  setV1();
  const auto root = makeRoot();
  BothTraces traces;
  root->getPolicyList("fw1");
  root->perDeviceSmIs("fw1", setV1(), setV2(), record);
  root->perDeviceSmDel("stranger");
  root->hasNotificationActiveIs(false);
  root->hasNotificationActiveIs(true);
  EXPECT_EQ(traces.take(), Lines{});
}

}  // namespace
}  // namespace PolicyTests
