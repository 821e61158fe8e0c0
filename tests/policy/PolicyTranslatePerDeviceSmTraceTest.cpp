#include "policy/PolicyWorld.h"

namespace PolicyTests {
namespace {

/// Every line that the per-device machine writes, branch by branch, byte for byte, on both
/// facilities.
class PolicyTranslatePerDeviceTrace : public PolicyWorld {
 protected:
  Ptr<PolicyTranslatePerDeviceSm> make() const {
    sourceV2->policySetIs(Vela::DeviceName("fw1"));
    return VelaPolicyMonitor::policyTranslatePerDeviceSmFactory("fw1", setV1(), setV2(), record);
  }
  /// What a VRF without rules writes while it is made: nothing was marked, so there is no update.
  const Lines emptyVrfMade{kVrf(8, "handleInitialized() VRF name: red"),
                           kVrf(8, "handleRule() VRF name: red"), kVrf(7, "handleRule()return"),
                           kVrf(7, "handleInitialized()return")};
  const Lines vrfCleanedUp{kVrf(8, "cleanup() VRF name: red"), kVrf(7, "cleanup()return")};
};

TEST_F(PolicyTranslatePerDeviceTrace, TheLinesAreMadeOfTheWholeSignatureAndThePieces) {
  const auto sm = make();
  BothTraces traces;
  sm->handleVrf("gone");
  EXPECT_EQ(traces.take(),
            (Lines{"8 void VelaPolicyMonitor::PolicyTranslatePerDeviceSm::handleVrf(const String&)"
                   " Device: fw1 VRF name: gone",
                   "6 void VelaPolicyMonitor::PolicyTranslatePerDeviceSm::handleVrf(const String&)"
                   " Device: fw1 remove VRF gone",
                   "7 void VelaPolicyMonitor::PolicyTranslatePerDeviceSm::handleVrf(const String&)"
                   "return"}));
}

TEST_F(PolicyTranslatePerDeviceTrace, OfAWalkThatDeletesOneEntryAndAddsOne) {
  sourceV2->policySetIs(Vela::DeviceName("fw1"))->policyIs("stale");
  map();
  policyV1();
  BothTraces traces;
  const auto sm = make();
  EXPECT_EQ(traces.take(),
            joined({{kDevice(8, "handleInitialized()"), kDevice(8, "handleVrf()"),
                     kDevice(6, "handleVrf() remove network VRF stale"),
                     kDevice(8, "handleVrf(const String&) Device: fw1 VRF name: red"),
                     kDevice(6, "handleVrf(const String&) Device: fw1 add VRF red/net-red")},
                    emptyVrfMade,
                    {kDevice(7, "handleVrf(const String&)return"), kDevice(7, "handleVrf()return"),
                     kDevice(7, "handleInitialized()return")}}));
}

TEST_F(PolicyTranslatePerDeviceTrace, OfAVrfThatIsThereAlready) {
  map();
  policyV1();
  const auto sm = make();
  BothTraces traces;
  map();
  EXPECT_EQ(traces.take(),
            (Lines{kDevice(8, "handleVrf(const String&) Device: fw1 VRF name: red"),
                   kDevice(6, "handleVrf(const String&) Device: fw1 add VRF red/net-red"),
                   kDevice(7, "handleVrf(const String&)return")}));
}

TEST_F(PolicyTranslatePerDeviceTrace, OfRemovingAVrf) {
  map();
  policyV1();
  const auto sm = make();
  BothTraces traces;
  setV1()->policyDel(VrfName("red"));
  EXPECT_EQ(traces.take(),
            joined({{kDevice(8, "handleVrf(const String&) Device: fw1 VRF name: red"),
                     kDevice(6, "handleVrf(const String&) Device: fw1 remove VRF red")},
                    vrfCleanedUp,
                    {kDevice(7, "handleVrf(const String&)return")}}));
}

TEST_F(PolicyTranslatePerDeviceTrace, OfAnUnmappedVrfIsThatOfARemoval) {
  const auto sm = make();
  BothTraces traces;
  policyV1();
  EXPECT_EQ(traces.take(), (Lines{kDevice(8, "handleVrf(const String&) Device: fw1 VRF name: red"),
                                  kDevice(6, "handleVrf(const String&) Device: fw1 remove VRF red"),
                                  kDevice(7, "handleVrf(const String&)return")}));
}

TEST_F(PolicyTranslatePerDeviceTrace, OfANewNetworkNameHasNoLineForTheOldOne) {
  map();
  policyV1();
  const auto sm = make();
  BothTraces traces;
  map("red", "net-new");
  EXPECT_EQ(traces.take(),
            joined({{kDevice(8, "handleVrf(const String&) Device: fw1 VRF name: red"),
                     kDevice(6, "handleVrf(const String&) Device: fw1 add VRF red/net-new")},
                    vrfCleanedUp,
                    emptyVrfMade,
                    {kDevice(7, "handleVrf(const String&)return")}}));
}

TEST_F(PolicyTranslatePerDeviceTrace, OfATooLongVrfNameIsTheEntryLineAlone) {
  const auto sm = make();
  const std::string name(101, 'v');
  BothTraces traces;
  EXPECT_THROW(map(name, "n"), Kel::RangeException);
  EXPECT_EQ(traces.take(),
            Lines{kDevice(8, "handleVrf(const String&) Device: fw1 VRF name: " + name)});
}

TEST_F(PolicyTranslatePerDeviceTrace, OfCleanUpHasNoExitLine) {
  map();
  policyV1();
  const auto sm = make();
  BothTraces traces;
  sm->cleanup();
  EXPECT_EQ(traces.take(), joined({{kDevice(8, "cleanup()")}, vrfCleanedUp}));
}

TEST_F(PolicyTranslatePerDeviceTrace, OfTheOtherAttributesOfTheRecordIsNothing) {
  const auto sm = make();
  BothTraces traces;
  record->trafficInspectionIs(Vela::TrafficInspection{0x02});
  record->serviceDeviceConvergeIs(true);
  record->policyConvergeIs(true);
  EXPECT_EQ(traces.take(), Lines{});
}

}  // namespace
}  // namespace PolicyTests
