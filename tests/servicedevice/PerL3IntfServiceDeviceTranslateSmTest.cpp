#include "servicedevice/PerL3IntfServiceDeviceTranslateSm.h"
#include "servicedevice/ServiceDeviceTest.h"

namespace ServiceDeviceTests {
namespace {

class PerL3IntfServiceDevice : public ServiceDeviceTest {
 protected:
  /// A machine of its own, without a VRF.
  Ptr<PerL3IntfServiceDeviceTranslateSm> makeIntf() const {
    return VelaPolicyMonitor::perL3IntfServiceDeviceTranslateSmFactory(address, v1, v2, cookie);
  }
  bool takeMark() const {
    const bool was = cookie->updated();
    cookie->updatedIs(false);
    return was;
  }
  const IpGenAddr address{"10.0.0.1"};
  const IpGenPrefix one{"10.1.0.0/16"};
  const IpGenPrefix two{"2001:db8::/32"};
  Ptr<VelaL3::L3IntfConfig> v1 = deviceV1()->vrfIs(VrfName("red"))->l3IntfIs(address);
  Ptr<VelaL3V2::L3IntfConfig> v2 =
      sourceV2->serviceDeviceIs("fw1")->netVrfIs("net-red")->l3IntfIs(address);
  Ptr<UpdateCookie> cookie = VelaPolicyMonitor::updateCookieFactory();
};

TEST_F(PerL3IntfServiceDevice, MirrorsWhatIsThereWhenItIsMade) {
  v1->reachableSubnetIs(one);
  v1->reachableSubnetIs(two);
  const auto intf = makeIntf();
  EXPECT_TRUE(intf->initialized());
  EXPECT_TRUE(intf->hasNotificationActive());
  EXPECT_EQ(v2->reachableSubnet().size(), 2U);
  EXPECT_TRUE(v2->reachableSubnet(one));
  EXPECT_TRUE(v2->reachableSubnet(two));
}

TEST_F(PerL3IntfServiceDevice, KeepsWhatItWasGiven) {
  const auto intf = makeIntf();
  EXPECT_EQ(intf->l3IntfAddr(), address);
  EXPECT_EQ(intf->l3IntfConfigV1(), v1);
  EXPECT_EQ(intf->l3IntfConfigV2(), v2);
  EXPECT_EQ(intf->cookie(), cookie);
}

TEST_F(PerL3IntfServiceDevice, NumbersItsAttributesInTheOrderOfItsTable) {
  EXPECT_EQ(PerL3IntfServiceDeviceTranslateSm::l3IntfAddrAttr.id, 130);
  EXPECT_EQ(PerL3IntfServiceDeviceTranslateSm::l3IntfConfigV1Attr.id, 131);
  EXPECT_EQ(PerL3IntfServiceDeviceTranslateSm::l3IntfConfigV2Attr.id, 132);
  EXPECT_EQ(PerL3IntfServiceDeviceTranslateSm::cookieAttr.id, 133);
  EXPECT_EQ(PerL3IntfServiceDeviceTranslateSm::initializedAttr.id, 134);
}

TEST_F(PerL3IntfServiceDevice, FollowsSubnetsThatComeAndGoAndMarksTheCookie) {
  const auto intf = makeIntf();
  EXPECT_FALSE(takeMark());
  v1->reachableSubnetIs(one);
  EXPECT_TRUE(v2->reachableSubnet(one));
  EXPECT_TRUE(takeMark());
  v1->reachableSubnetDel(one);
  EXPECT_FALSE(v2->reachableSubnet(one));
  EXPECT_TRUE(takeMark());
}

TEST_F(PerL3IntfServiceDevice, AKeyedCallForAPresentSubnetMarksTheCookieAllTheSame) {
  v1->reachableSubnetIs(one);
  const auto intf = makeIntf();
  takeMark();
  intf->handleSubnet(one);
  EXPECT_TRUE(takeMark());
}

TEST_F(PerL3IntfServiceDevice, AKeyedCallForAnAbsentSubnetMarksTheCookieAllTheSame) {
  const auto intf = makeIntf();
  intf->handleSubnet(one);
  EXPECT_TRUE(takeMark());
}

TEST_F(PerL3IntfServiceDevice, AWalkOverTwoEqualSetsMarksTheCookie) {
  v1->reachableSubnetIs(one);
  const auto intf = makeIntf();
  takeMark();
  intf->handleSubnet();
  EXPECT_TRUE(takeMark());
}

TEST_F(PerL3IntfServiceDevice, AWalkOverTwoEmptySetsLeavesTheCookie) {
  const auto intf = makeIntf();
  intf->handleSubnet();
  EXPECT_FALSE(takeMark());
}

TEST_F(PerL3IntfServiceDevice, AWalkWithoutVersion1SubnetsDeletesAllAndMarksTheCookie) {
  const auto intf = makeIntf();
  v2->reachableSubnetIs(one);
  v2->reachableSubnetIs(two);
  intf->handleSubnet();
  EXPECT_TRUE(v2->reachableSubnet().empty());
  EXPECT_TRUE(takeMark());
}

TEST_F(PerL3IntfServiceDevice, AWalkMarksTheCookieForDeletionsAtItsEndOnly) {
  const auto intf = makeIntf();
  v2->reachableSubnetIs(one);
  bool marked = true;
  const Kel::Observer watch(*v2, [&](AttrId, const void*) { marked = cookie->updated(); });
  intf->handleSubnet();
  EXPECT_FALSE(marked);
  EXPECT_TRUE(cookie->updated());
}

TEST_F(PerL3IntfServiceDevice, AWalkDeletesBeforeItAdds) {
  v1->reachableSubnetIs(one);
  v2->reachableSubnetIs(two);
  const Kel::Observer watch(*v2, [&](AttrId, const void* key) {
    const auto& subnet = keyOf<IpGenPrefix>(key);
    note((v2->reachableSubnet(subnet) ? "added " : "deleted ") + subnet.stringValue());
  });
  const auto intf = makeIntf();
  EXPECT_EQ(noted(), (Lines{"deleted 2001:db8::/32", "added 10.1.0.0/16"}));
}

TEST_F(PerL3IntfServiceDevice, MarksTheCookieAfterTheChange) {
  const auto intf = makeIntf();
  bool marked = true;
  const Kel::Observer watch(*v2, [&](AttrId, const void*) { marked = cookie->updated(); });
  v1->reachableSubnetIs(one);
  EXPECT_FALSE(marked);
  EXPECT_TRUE(cookie->updated());
}

TEST_F(PerL3IntfServiceDevice, WorksWithoutACookie) {
  cookie.reset();
  v2->reachableSubnetIs(two);
  const auto intf = makeIntf();
  v1->reachableSubnetIs(one);
  EXPECT_TRUE(v2->reachableSubnet(one));
  EXPECT_FALSE(v2->reachableSubnet(two));
  v1->reachableSubnetDel(one);
  EXPECT_TRUE(v2->reachableSubnet().empty());
}

TEST_F(PerL3IntfServiceDevice, ItsEndLeavesTheSubnetsInVersion2) {
  v1->reachableSubnetIs(one);
  auto intf = makeIntf();
  takeMark();
  intf.reset();
  EXPECT_TRUE(v2->reachableSubnet(one));
  EXPECT_FALSE(takeMark());
  EXPECT_EQ(v1->publisher().subscriberCount(), 0U);
  EXPECT_EQ(cookie->refCount(), 1U);
  EXPECT_EQ(live<PerL3IntfServiceDeviceTranslateSm>(), 0U);
}

TEST_F(PerL3IntfServiceDevice, ItsOwnerDeletesTheWholeInterfaceInstead) {
  fillVrf();
  const auto root = makeRoot();
  ASSERT_EQ(netVrf()->l3Intf().size(), 1U);
  deviceV1()->vrf(VrfName("red"))->l3IntfDel(address);
  EXPECT_TRUE(netVrf()->l3Intf().empty());
  EXPECT_EQ(live<PerL3IntfServiceDeviceTranslateSm>(), 0U);
}

}  // namespace
}  // namespace ServiceDeviceTests
