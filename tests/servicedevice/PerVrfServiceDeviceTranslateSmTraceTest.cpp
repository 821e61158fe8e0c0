#include "servicedevice/ServiceDeviceTest.h"

namespace ServiceDeviceTests {
namespace {

/// Every line that a per-VRF machine writes, branch by branch, byte for byte, on both facilities.
class PerVrfServiceDeviceTrace : public ServiceDeviceTest {
 protected:
  Ptr<PerVrfServiceDeviceTranslateSm> makeVrf() const {
    return VelaPolicyMonitor::perVrfServiceDeviceTranslateSmFactory(VrfName("red"), "net-red", v1,
                                                                    v2);
  }
  static Lines linesOfAnEmptyInterface(const std::string& address) {
    return {kIntf(8, "handleInitialized() l3 intf: " + address),
            kIntf(8, "handleSubnet() l3 intf: " + address), kIntf(7, "handleSubnet()return"),
            kIntf(7, "handleInitialized()return")};
  }
  static Lines around(const Lines& before, const Lines& inside, const Lines& after) {
    Lines all = before;
    all.insert(all.end(), inside.begin(), inside.end());
    all.insert(all.end(), after.begin(), after.end());
    return all;
  }
  Ptr<VelaL3::VrfConfig> v1 = deviceV1()->vrfIs(VrfName("red"));
  Ptr<VelaL3V2::NetVrfConfig> v2 = sourceV2->serviceDeviceIs("fw1")->netVrfIs("net-red");
  const IpGenAddr one{"10.0.0.1"};
};

TEST_F(PerVrfServiceDeviceTrace, OfMakingAnEmptyVrf) {
  BothTraces traces;
  const auto vrf = makeVrf();
  EXPECT_EQ(traces.take(),
            (Lines{kVrf(8, "handleInitialized() VRF name: red"), kVrf(8, "handleL3Intf()"),
                   kVrf(7, "handleL3Intf()return"), kVrf(7, "handleInitialized()return")}));
}

TEST_F(PerVrfServiceDeviceTrace, OfMakingAVrfThatIsStamped) {
  v2->l3IntfIs(one);
  BothTraces traces;
  const auto vrf = makeVrf();
  EXPECT_EQ(
      traces.take(),
      (Lines{kVrf(8, "handleInitialized() VRF name: red"), kVrf(8, "handleL3Intf()"),
             kVrf(6, "handleL3Intf() remove l3 intf 10.0.0.1"), kVrf(7, "handleL3Intf()return"),
             kVrf(8, "doUpdate() VRF name: red"), kVrf(7, "handleInitialized()return")}));
}

TEST_F(PerVrfServiceDeviceTrace, OfAddingAnInterface) {
  const auto vrf = makeVrf();
  BothTraces traces;
  v1->l3IntfIs(IpGenAddr("2001:db8::3"));
  EXPECT_EQ(
      traces.take(),
      around({kVrf(8, "handleL3Intf(const Norv::IpGenAddr&) VRF: red l3 intf: 2001:db8::3"),
              kVrf(6, "handleL3Intf(const Norv::IpGenAddr&) VRF: red add l3 intf 2001:db8::3")},
             linesOfAnEmptyInterface("2001:db8::3"),
             {kVrf(7, "handleL3Intf(const Norv::IpGenAddr&)return")}));
}

TEST_F(PerVrfServiceDeviceTrace, OfRemovingAnInterface) {
  v1->l3IntfIs(one);
  const auto vrf = makeVrf();
  BothTraces traces;
  v1->l3IntfDel(one);
  EXPECT_EQ(traces.take(),
            (Lines{kVrf(8, "handleL3Intf(const Norv::IpGenAddr&) VRF: red l3 intf: 10.0.0.1"),
                   kVrf(6, "handleL3Intf(const Norv::IpGenAddr&) VRF: red remove l3 intf 10.0.0.1"),
                   kVrf(7, "handleL3Intf(const Norv::IpGenAddr&)return")}));
}

TEST_F(PerVrfServiceDeviceTrace, OfAWalkThatDeletesAndAdds) {
  const auto vrf = makeVrf();
  vrf->hasNotificationActiveIs(false);
  v2->l3IntfIs(IpGenAddr("10.0.0.9"));
  v1->l3IntfIs(one);
  BothTraces traces;
  vrf->handleL3Intf();
  EXPECT_EQ(traces.take(),
            around({kVrf(8, "handleL3Intf()"), kVrf(6, "handleL3Intf() remove l3 intf 10.0.0.9"),
                    kVrf(8, "handleL3Intf(const Norv::IpGenAddr&) VRF: red l3 intf: 10.0.0.1"),
                    kVrf(6, "handleL3Intf(const Norv::IpGenAddr&) VRF: red add l3 intf 10.0.0.1")},
                   linesOfAnEmptyInterface("10.0.0.1"),
                   {kVrf(7, "handleL3Intf(const Norv::IpGenAddr&)return"),
                    kVrf(7, "handleL3Intf()return")}));
}

TEST_F(PerVrfServiceDeviceTrace, OfAnUpdateHasNoExitLine) {
  const auto vrf = makeVrf();
  vrf->cookie()->updatedIs(true);
  BothTraces traces;
  v1->timestampIs(1);
  EXPECT_EQ(traces.take(), Lines{kVrf(8, "doUpdate() VRF name: red")});
}

TEST_F(PerVrfServiceDeviceTrace, OfAnUpdateWithNothingToStampIsEmpty) {
  const auto vrf = makeVrf();
  BothTraces traces;
  v1->timestampIs(1);
  EXPECT_EQ(traces.take(), Lines{});
  vrf->cookieIs(nullptr);
  vrf->doUpdate();
  EXPECT_EQ(traces.take(), Lines{});
}

TEST_F(PerVrfServiceDeviceTrace, OfAnUpdateWhileNotInitializedIsEmpty) {
  const auto vrf = makeVrf();
  vrf->cleanup();
  vrf->cookie()->updatedIs(true);
  BothTraces traces;
  vrf->doUpdate();
  EXPECT_EQ(traces.take(), Lines{});
}

TEST_F(PerVrfServiceDeviceTrace, OfCleanupAndOfItsEnd) {
  v1->l3IntfIs(one);
  auto vrf = makeVrf();
  const Lines cleanup{kVrf(8, "cleanup() VRF name: red"), kVrf(7, "cleanup()return")};
  BothTraces traces;
  vrf->cleanup();
  EXPECT_EQ(traces.take(), cleanup);
  vrf.reset();
  EXPECT_EQ(traces.take(), cleanup);
}

TEST_F(PerVrfServiceDeviceTrace, IsSilentForSettersAndChildOperations) {
  v1->l3IntfIs(one);
  const auto vrf = makeVrf();
  BothTraces traces;
  vrf->cookieIs(VelaPolicyMonitor::updateCookieFactory());
  vrf->initializedIs(false);
  vrf->initCompleteIs(false);
  vrf->perL3IntfSmDel(one);
  vrf->perL3IntfSmDelAll();
  EXPECT_EQ(traces.take(), Lines{});
}

TEST_F(PerVrfServiceDeviceTrace, NamesTheHandlerAndTheSourceOfEachLine) {
  v2->l3IntfIs(one);
  TestSupport::TraceCapture text;
  const auto vrf = makeVrf();
  vrf->handleL3Intf(one);
  vrf->cleanup();
  std::vector<std::string> handlers;
  for (const auto& line : text.lines()) {
    handlers.push_back(line.handler);
    EXPECT_NE(line.text.find(" PerVrfServiceDeviceTranslateSm.cpp:"), std::string::npos)
        << line.text;
  }
  EXPECT_EQ(handlers, (Lines{"handleInitialized", "handleL3Intf", "handleL3Intf", "handleL3Intf",
                             "doUpdate", "handleInitialized", "handleL3Intf", "handleL3Intf",
                             "handleL3Intf", "cleanup", "cleanup"}));
}

}  // namespace
}  // namespace ServiceDeviceTests
