#include "servicedevice/ServiceDeviceTest.h"

namespace ServiceDeviceTests {
namespace {

/// Every line that the root writes, branch by branch, byte for byte, on both facilities.
class ServiceDeviceTranslateRootTrace : public ServiceDeviceTest {
 protected:
  /// What a device without VRFs writes while it is made.
  static Lines linesOfAnEmptyDevice() {
    return {kDevice(8, "handleInitialized()"),
            kDevice(8, "handleVrf()Device name: fw1"),
            kDevice(7, "handleVrf()return"),
            kDevice(8, "handleTrafficInspection()Device name: fw1 unified: false"),
            kDevice(7, "handleTrafficInspection()return"),
            kDevice(7, "handleInitialized()return")};
  }
  static Lines joined(std::initializer_list<Lines> parts) {
    Lines all;
    for (const Lines& part : parts) {
      all.insert(all.end(), part.begin(), part.end());
    }
    return all;
  }
};

TEST_F(ServiceDeviceTranslateRootTrace, OfMakingARootWithNothingToTranslate) {
  BothTraces traces;
  const auto root = makeRoot();
  EXPECT_EQ(traces.take(),
            (Lines{kRoot(8, "handleInitialized()"), kRoot(8, "handleDevice()"),
                   kRoot(7, "handleDevice()return"), kRoot(7, "handleInitialized()return")}));
}

TEST_F(ServiceDeviceTranslateRootTrace, OfAddingADevice) {
  const auto root = makeRoot();
  BothTraces traces;
  deviceV1();
  EXPECT_EQ(traces.take(), joined({{kRoot(8, "handleDevice(const String&) Device name: fw1"),
                                    kRoot(6, "handleDevice(const String&) add device fw1")},
                                   linesOfAnEmptyDevice(),
                                   {kRoot(7, "handleDevice(const String&)return")}}));
}

TEST_F(ServiceDeviceTranslateRootTrace, OfADeviceThatIsThereAlready) {
  deviceV1();
  const auto root = makeRoot();
  BothTraces traces;
  root->handleDevice("fw1");
  EXPECT_EQ(traces.take(), (Lines{kRoot(8, "handleDevice(const String&) Device name: fw1"),
                                  kRoot(6, "handleDevice(const String&) add device fw1"),
                                  kRoot(7, "handleDevice(const String&)return")}));
}

TEST_F(ServiceDeviceTranslateRootTrace, OfRemovingADevice) {
  deviceV1();
  const auto root = makeRoot();
  BothTraces traces;
  sourceV1->serviceDeviceDel("fw1");
  EXPECT_EQ(traces.take(),
            (Lines{kRoot(8, "handleDevice(const String&) Device name: fw1"),
                   kRoot(6, "handleDevice(const String&) remove device fw1"),
                   kDevice(8, "cleanup() Device name: fw1"), kDevice(7, "cleanup()return"),
                   kRoot(7, "handleDevice(const String&)return")}));
}

TEST_F(ServiceDeviceTranslateRootTrace, OfADeviceWithoutARecord) {
  const auto root = makeRoot();
  BothTraces traces;
  deviceV1("fw2");
  EXPECT_EQ(traces.take(), (Lines{kRoot(8, "handleDevice(const String&) Device name: fw2"),
                                  kRoot(6, "handleDevice(const String&) remove device fw2"),
                                  kRoot(7, "handleDevice(const String&)return")}));
}

TEST_F(ServiceDeviceTranslateRootTrace, OfADeviceThatNobodyKnows) {
  const auto root = makeRoot();
  BothTraces traces;
  root->handleDevice("");
  EXPECT_EQ(traces.take(), (Lines{kRoot(8, "handleDevice(const String&) Device name: "),
                                  kRoot(6, "handleDevice(const String&) remove device "),
                                  kRoot(7, "handleDevice(const String&)return")}));
}

TEST_F(ServiceDeviceTranslateRootTrace, OfAWalkThatDeletesAndAdds) {
  const auto root = makeRoot();
  root->hasNotificationActiveIs(false);
  sourceV2->serviceDeviceIs("stray");
  deviceV1();
  BothTraces traces;
  root->handleDevice();
  EXPECT_EQ(
      traces.take(),
      joined({{kRoot(8, "handleDevice()"), kRoot(6, "handleDevice() remove device stray"),
               kRoot(8, "handleDevice(const String&) Device name: fw1"),
               kRoot(6, "handleDevice(const String&) add device fw1")},
              linesOfAnEmptyDevice(),
              {kRoot(7, "handleDevice(const String&)return"), kRoot(7, "handleDevice()return")}}));
}

TEST_F(ServiceDeviceTranslateRootTrace, OfCleanupHasAnExitLine) {
  deviceV1();
  const auto root = makeRoot();
  BothTraces traces;
  root->cleanup();
  EXPECT_EQ(traces.take(), (Lines{kRoot(8, "cleanup()"), kDevice(8, "cleanup() Device name: fw1"),
                                  kDevice(7, "cleanup()return"), kRoot(7, "cleanup()return")}));
}

TEST_F(ServiceDeviceTranslateRootTrace, OfDroppingTheRootIsThatOfCleanup) {
  deviceV1();
  auto root = makeRoot();
  BothTraces traces;
  root.reset();
  EXPECT_EQ(traces.take(), (Lines{kRoot(8, "cleanup()"), kDevice(8, "cleanup() Device name: fw1"),
                                  kDevice(7, "cleanup()return"), kRoot(7, "cleanup()return")}));
}

TEST_F(ServiceDeviceTranslateRootTrace, IsSilentForLookUpsSwitchesAndChildOperations) {
  const auto v1 = deviceV1();
  const auto root = makeRoot();
  const auto child = root->perDeviceSm("fw1");
  BothTraces traces;
  root->getPolicyList("fw1");
  root->hasNotificationActiveIs(false);
  root->hasNotificationActiveIs(true);
  root->kelDoZombieReactors(true);
  sourceV1->publisher().publish(258, &v1->deviceName());
  root->kelDoZombieReactors(false);
  root->perDeviceSmIs("fw1", v1, deviceV2(), record);
  root->perDeviceSmDel("fw1");
  EXPECT_EQ(traces.take(), Lines{});
}

TEST_F(ServiceDeviceTranslateRootTrace, OfAWholeTreeIsThatOfEachLevelInsideTheLevelAbove) {
  fillVrf();
  BothTraces traces;
  const auto root = makeRoot();
  EXPECT_EQ(
      traces.take(),
      (Lines{
          kRoot(8, "handleInitialized()"),
          kRoot(8, "handleDevice()"),
          kRoot(8, "handleDevice(const String&) Device name: fw1"),
          kRoot(6, "handleDevice(const String&) add device fw1"),
          kDevice(8, "handleInitialized()"),
          kDevice(8, "handleVrf()Device name: fw1"),
          kDevice(8, "handleVrf(const String&) Device: fw1VRF name: red"),
          kDevice(6, "handleVrf(const String&) Device: fw1 add VRF red/net-red"),
          kVrf(8, "handleInitialized() VRF name: red"),
          kVrf(8, "handleL3Intf()"),
          kVrf(8, "handleL3Intf(const Norv::IpGenAddr&) VRF: red l3 intf: 10.0.0.1"),
          kVrf(6, "handleL3Intf(const Norv::IpGenAddr&) VRF: red add l3 intf 10.0.0.1"),
          kIntf(8, "handleInitialized() l3 intf: 10.0.0.1"),
          kIntf(8, "handleSubnet() l3 intf: 10.0.0.1"),
          kIntf(8, "handleSubnet(const Norv::IpGenPrefix&) l3 intf: 10.0.0.1 subnet: 10.1.0.0/16"),
          kIntf(6,
                "handleSubnet(const Norv::IpGenPrefix&) l3 intf: 10.0.0.1"
                " add subnet 10.1.0.0/16"),
          kIntf(7, "handleSubnet(const Norv::IpGenPrefix&)return"),
          kIntf(7, "handleSubnet()return"),
          kIntf(7, "handleInitialized()return"),
          kVrf(7, "handleL3Intf(const Norv::IpGenAddr&)return"),
          kVrf(7, "handleL3Intf()return"),
          kVrf(8, "doUpdate() VRF name: red"),
          kVrf(7, "handleInitialized()return"),
          kDevice(7, "handleVrf(const String&)return"),
          kDevice(7, "handleVrf()return"),
          kDevice(8, "handleTrafficInspection()Device name: fw1 unified: false"),
          kDevice(7, "handleTrafficInspection()return"),
          kDevice(7, "handleInitialized()return"),
          kRoot(7, "handleDevice(const String&)return"),
          kRoot(7, "handleDevice()return"),
          kRoot(7, "handleInitialized()return")}));
}

TEST_F(ServiceDeviceTranslateRootTrace, NamesTheHandlerAndTheSourceOfEachLine) {
  TestSupport::TraceCapture text;
  const auto root = makeRoot();
  root->handleDevice("fw2");
  root->cleanup();
  std::vector<std::string> handlers;
  for (const auto& line : text.lines()) {
    handlers.push_back(line.handler);
    EXPECT_NE(line.text.find(" ServiceDeviceTranslateRootSm.cpp:"), std::string::npos) << line.text;
  }
  EXPECT_EQ(handlers,
            (Lines{"handleInitialized", "handleDevice", "handleDevice", "handleInitialized",
                   "handleDevice", "handleDevice", "handleDevice", "cleanup", "cleanup"}));
}

}  // namespace
}  // namespace ServiceDeviceTests
