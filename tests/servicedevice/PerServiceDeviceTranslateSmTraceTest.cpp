#include "servicedevice/ServiceDeviceTest.h"

namespace ServiceDeviceTests {
namespace {

/// Every line that a per-device machine writes, branch by branch, byte for byte, on both
/// facilities. VRFs have no interfaces here, so that the lines of the level below are few.
class PerServiceDeviceTrace : public ServiceDeviceTest {
 protected:
  Ptr<PerServiceDeviceTranslateSm> makeDevice() const {
    return VelaPolicyMonitor::perServiceDeviceTranslateSmFactory("fw1", v1, v2, record);
  }
  /// The lines of a handler's branch with those of another machine in the middle.
  static Lines around(const Lines& before, const Lines& inside, const Lines& after) {
    Lines all = before;
    all.insert(all.end(), inside.begin(), inside.end());
    all.insert(all.end(), after.begin(), after.end());
    return all;
  }
  Ptr<VelaL3::ServiceDeviceConfig> v1 = deviceV1();
  Ptr<VelaL3V2::ServiceDeviceConfig> v2 = sourceV2->serviceDeviceIs("fw1");

  const Lines linesOfAnEmptyVrf{kVrf(8, "handleInitialized() VRF name: red"),
                                kVrf(8, "handleL3Intf()"), kVrf(7, "handleL3Intf()return"),
                                kVrf(7, "handleInitialized()return")};
  const Lines linesOfItsEnd{kVrf(8, "cleanup() VRF name: red"), kVrf(7, "cleanup()return")};
};

TEST_F(PerServiceDeviceTrace, OfMakingADeviceWithoutVrfs) {
  record->trafficInspectionIs(Vela::TrafficInspection{0x02});
  BothTraces traces;
  const auto device = makeDevice();
  EXPECT_EQ(traces.take(),
            (Lines{kDevice(8, "handleInitialized()"), kDevice(8, "handleVrf()Device name: fw1"),
                   kDevice(7, "handleVrf()return"),
                   kDevice(8, "handleTrafficInspection()Device name: fw1 unified: true"),
                   kDevice(7, "handleTrafficInspection()return"),
                   kDevice(7, "handleInitialized()return")}));
}

TEST_F(PerServiceDeviceTrace, OfAddingAVrf) {
  const auto device = makeDevice();
  record->netVrfNameByVrfIs("red", "net-red");
  BothTraces traces;
  v1->vrfIs(VrfName("red"));
  EXPECT_EQ(traces.take(),
            around({kDevice(8, "handleVrf(const String&) Device: fw1VRF name: red"),
                    kDevice(6, "handleVrf(const String&) Device: fw1 add VRF red/net-red")},
                   linesOfAnEmptyVrf, {kDevice(7, "handleVrf(const String&)return")}));
}

TEST_F(PerServiceDeviceTrace, OfRemovingAVrf) {
  record->netVrfNameByVrfIs("red", "net-red");
  v1->vrfIs(VrfName("red"));
  const auto device = makeDevice();
  BothTraces traces;
  v1->vrfDel(VrfName("red"));
  EXPECT_EQ(traces.take(),
            around({kDevice(8, "handleVrf(const String&) Device: fw1VRF name: red"),
                    kDevice(6, "handleVrf(const String&) Device: fw1 remove VRF red")},
                   linesOfItsEnd, {kDevice(7, "handleVrf(const String&)return")}));
}

TEST_F(PerServiceDeviceTrace, OfAVrfWithoutAMapping) {
  const auto device = makeDevice();
  BothTraces traces;
  v1->vrfIs(VrfName("red"));
  EXPECT_EQ(traces.take(), (Lines{kDevice(8, "handleVrf(const String&) Device: fw1VRF name: red"),
                                  kDevice(6, "handleVrf(const String&) Device: fw1 remove VRF red"),
                                  kDevice(7, "handleVrf(const String&)return")}));
}

TEST_F(PerServiceDeviceTrace, OfAMappingWithoutAVrf) {
  const auto device = makeDevice();
  BothTraces traces;
  record->netVrfNameByVrfIs("red", "net-red");
  EXPECT_EQ(traces.take(), (Lines{kDevice(8, "handleVrf(const String&) Device: fw1VRF name: red"),
                                  kDevice(6, "handleVrf(const String&) Device: fw1 remove VRF red"),
                                  kDevice(7, "handleVrf(const String&)return")}));
}

TEST_F(PerServiceDeviceTrace, OfARename) {
  record->netVrfNameByVrfIs("red", "A");
  v1->vrfIs(VrfName("red"));
  const auto device = makeDevice();
  BothTraces traces;
  record->netVrfNameByVrfIs("red", "B");
  EXPECT_EQ(traces.take(),
            around(around({kDevice(8, "handleVrf(const String&) Device: fw1VRF name: red"),
                           kDevice(6, "handleVrf(const String&) Device: fw1 add VRF red/B")},
                          linesOfItsEnd, linesOfAnEmptyVrf),
                   {}, {kDevice(7, "handleVrf(const String&)return")}));
}

TEST_F(PerServiceDeviceTrace, OfANameThatIsTooLongEndsWithTheEntryLine) {
  const auto device = makeDevice();
  const std::string longName(101, 'v');
  BothTraces traces;
  EXPECT_THROW(device->handleVrf(longName), Kel::RangeException);
  EXPECT_EQ(traces.take(),
            Lines{kDevice(8, "handleVrf(const String&) Device: fw1VRF name: " + longName)});
}

TEST_F(PerServiceDeviceTrace, OfAWalkThatDeletesAndAdds) {
  record->netVrfNameByVrfIs("red", "net-red");
  v1->vrfIs(VrfName("red"));
  const auto device = makeDevice();
  v2->netVrfIs("stray");
  BothTraces traces;
  device->handleVrf();
  EXPECT_EQ(traces.take(),
            (Lines{kDevice(8, "handleVrf()Device name: fw1"),
                   kDevice(6, "handleVrf() Device: fw1 remove network VRF stray"),
                   kDevice(8, "handleVrf(const String&) Device: fw1VRF name: red"),
                   kDevice(6, "handleVrf(const String&) Device: fw1 add VRF red/net-red"),
                   kDevice(7, "handleVrf(const String&)return"), kDevice(7, "handleVrf()return")}));
}

TEST_F(PerServiceDeviceTrace, OfTheTrafficInspectionShowsTheUnifiedBitOnly) {
  const auto device = makeDevice();
  BothTraces traces;
  record->trafficInspectionIs(Vela::TrafficInspection{0xfd});
  EXPECT_EQ(traces.take(),
            (Lines{kDevice(8, "handleTrafficInspection()Device name: fw1 unified: false"),
                   kDevice(7, "handleTrafficInspection()return")}));
  record->trafficInspectionIs(Vela::TrafficInspection{0x03});
  EXPECT_EQ(traces.take(),
            (Lines{kDevice(8, "handleTrafficInspection()Device name: fw1 unified: true"),
                   kDevice(7, "handleTrafficInspection()return")}));
}

TEST_F(PerServiceDeviceTrace, OfCleanup) {
  record->netVrfNameByVrfIs("red", "net-red");
  v1->vrfIs(VrfName("red"));
  const auto device = makeDevice();
  BothTraces traces;
  device->cleanup();
  EXPECT_EQ(traces.take(), around({kDevice(8, "cleanup() Device name: fw1")}, linesOfItsEnd,
                                  {kDevice(7, "cleanup()return")}));
}

TEST_F(PerServiceDeviceTrace, OfItsEndIsThatOfCleanup) {
  auto device = makeDevice();
  BothTraces traces;
  device.reset();
  EXPECT_EQ(traces.take(),
            (Lines{kDevice(8, "cleanup() Device name: fw1"), kDevice(7, "cleanup()return")}));
}

TEST_F(PerServiceDeviceTrace, NamesTheHandlerAndTheSourceOfEachLine) {
  TestSupport::TraceCapture text;
  makeDevice()->handleVrf("red");
  std::vector<std::string> handlers;
  for (const auto& line : text.lines()) {
    handlers.push_back(line.handler);
    EXPECT_NE(line.text.find(" PerServiceDeviceTranslateSm.cpp:"), std::string::npos) << line.text;
  }
  EXPECT_EQ(handlers,
            (Lines{"handleInitialized", "handleVrf", "handleVrf", "handleTrafficInspection",
                   "handleTrafficInspection", "handleInitialized", "handleVrf", "handleVrf",
                   "handleVrf", "cleanup", "cleanup"}));
}

}  // namespace
}  // namespace ServiceDeviceTests
