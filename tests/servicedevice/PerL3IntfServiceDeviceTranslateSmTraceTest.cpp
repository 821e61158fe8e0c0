#include "servicedevice/ServiceDeviceTest.h"

namespace ServiceDeviceTests {
namespace {

/// Every line that a per-interface machine writes, branch by branch, byte for byte, on both
/// facilities.
class PerL3IntfServiceDeviceTrace : public ServiceDeviceTest {
 protected:
  Ptr<PerL3IntfServiceDeviceTranslateSm> makeIntf() const {
    return VelaPolicyMonitor::perL3IntfServiceDeviceTranslateSmFactory(address, v1, v2, nullptr);
  }
  const IpGenAddr address{"10.0.0.1"};
  const IpGenPrefix subnet{"10.1.0.0/16"};
  Ptr<VelaL3::L3IntfConfig> v1 = deviceV1()->vrfIs(VrfName("red"))->l3IntfIs(address);
  Ptr<VelaL3V2::L3IntfConfig> v2 =
      sourceV2->serviceDeviceIs("fw1")->netVrfIs("net-red")->l3IntfIs(address);
  const std::string keyed = "handleSubnet(const Norv::IpGenPrefix&)";
};

TEST_F(PerL3IntfServiceDeviceTrace, OfMakingAnEmptyInterface) {
  BothTraces traces;
  const auto intf = makeIntf();
  EXPECT_EQ(traces.take(),
            (Lines{kIntf(8, "handleInitialized() l3 intf: 10.0.0.1"),
                   kIntf(8, "handleSubnet() l3 intf: 10.0.0.1"), kIntf(7, "handleSubnet()return"),
                   kIntf(7, "handleInitialized()return")}));
}

TEST_F(PerL3IntfServiceDeviceTrace, OfAddingASubnet) {
  const auto intf = makeIntf();
  BothTraces traces;
  v1->reachableSubnetIs(subnet);
  const Lines added{kIntf(8, keyed + " l3 intf: 10.0.0.1 subnet: 10.1.0.0/16"),
                    kIntf(6, keyed + " l3 intf: 10.0.0.1 add subnet 10.1.0.0/16"),
                    kIntf(7, keyed + "return")};
  EXPECT_EQ(traces.take(), added);
  intf->handleSubnet(subnet);  // there already
  EXPECT_EQ(traces.take(), added);
}

TEST_F(PerL3IntfServiceDeviceTrace, OfRemovingASubnet) {
  v1->reachableSubnetIs(subnet);
  const auto intf = makeIntf();
  BothTraces traces;
  v1->reachableSubnetDel(subnet);
  const Lines removed{kIntf(8, keyed + " l3 intf: 10.0.0.1 subnet: 10.1.0.0/16"),
                      kIntf(6, keyed + " l3 intf: 10.0.0.1 remove subnet 10.1.0.0/16"),
                      kIntf(7, keyed + "return")};
  EXPECT_EQ(traces.take(), removed);
  intf->handleSubnet(subnet);  // gone already
  EXPECT_EQ(traces.take(), removed);
}

TEST_F(PerL3IntfServiceDeviceTrace, OfAWalkThatDeletesAndAdds) {
  const auto intf = makeIntf();
  intf->hasNotificationActiveIs(false);
  v1->reachableSubnetIs(subnet);
  v2->reachableSubnetIs(IpGenPrefix("2001:db8::/32"));
  BothTraces traces;
  intf->handleSubnet();
  EXPECT_EQ(traces.take(),
            (Lines{kIntf(8, "handleSubnet() l3 intf: 10.0.0.1"),
                   kIntf(6, "handleSubnet() l3 intf: 10.0.0.1 remove subnet 2001:db8::/32"),
                   kIntf(8, keyed + " l3 intf: 10.0.0.1 subnet: 10.1.0.0/16"),
                   kIntf(6, keyed + " l3 intf: 10.0.0.1 add subnet 10.1.0.0/16"),
                   kIntf(7, keyed + "return"), kIntf(7, "handleSubnet()return")}));
}

TEST_F(PerL3IntfServiceDeviceTrace, OfItsEndIsEmpty) {
  v1->reachableSubnetIs(subnet);
  auto intf = makeIntf();
  BothTraces traces;
  intf.reset();
  EXPECT_EQ(traces.take(), Lines{});
}

TEST_F(PerL3IntfServiceDeviceTrace, OfTheEmptyAddress) {
  const auto intf =
      VelaPolicyMonitor::perL3IntfServiceDeviceTranslateSmFactory(IpGenAddr(), v1, v2, nullptr);
  BothTraces traces;
  intf->handleSubnet();
  const std::string shown = IpGenAddr().stringValue();
  EXPECT_EQ(traces.take(), (Lines{kIntf(8, "handleSubnet() l3 intf: " + shown),
                                  kIntf(7, "handleSubnet()return")}));
}

TEST_F(PerL3IntfServiceDeviceTrace, NamesTheHandlerAndTheSourceOfEachLine) {
  TestSupport::TraceCapture text;
  const auto intf = makeIntf();
  intf->handleSubnet(subnet);
  std::vector<std::string> handlers;
  for (const auto& line : text.lines()) {
    handlers.push_back(line.handler);
    EXPECT_NE(line.text.find(" PerL3IntfServiceDeviceTranslateSm.cpp:"), std::string::npos)
        << line.text;
  }
  EXPECT_EQ(handlers, (Lines{"handleInitialized", "handleSubnet", "handleSubnet",
                             "handleInitialized", "handleSubnet", "handleSubnet", "handleSubnet"}));
}

}  // namespace
}  // namespace ServiceDeviceTests
