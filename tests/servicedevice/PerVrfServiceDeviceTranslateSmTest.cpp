#include "servicedevice/PerVrfServiceDeviceTranslateSm.h"
#include "servicedevice/ServiceDeviceTest.h"

namespace ServiceDeviceTests {
namespace {

class PerVrfServiceDevice : public ServiceDeviceTest {
 protected:
  /// A machine of its own, without a device.
  Ptr<PerVrfServiceDeviceTranslateSm> makeVrf() const {
    return VelaPolicyMonitor::perVrfServiceDeviceTranslateSmFactory(VrfName("red"), "net-red", v1,
                                                                    v2);
  }
  /// Fires the change signal; returns how often that has written the time stamp.
  int signal() const {
    int stamps = 0;
    const Kel::Observer watch(*v2, [&](AttrId id, const void*) { stamps += id == 260; });
    v1->timestampIs(1);
    return stamps;
  }
  Ptr<VelaL3::VrfConfig> v1 = deviceV1()->vrfIs(VrfName("red"));
  Ptr<VelaL3V2::NetVrfConfig> v2 = sourceV2->serviceDeviceIs("fw1")->netVrfIs("net-red");
  const IpGenAddr one{"10.0.0.1"};
  const IpGenAddr two{"10.0.0.2"};
  const IpGenAddr three{"2001:db8::3"};
};

TEST_F(PerVrfServiceDevice, MirrorsAndStampsWhatIsThereWhenItIsMade) {
  v1->l3IntfIs(one);
  const auto vrf = makeVrf();
  EXPECT_TRUE(vrf->initialized());
  EXPECT_TRUE(vrf->initComplete());
  EXPECT_TRUE(vrf->hasNotificationActive());
  EXPECT_EQ(v2->vrfName(), "red");
  EXPECT_NE(v2->l3Intf(one), nullptr);
  EXPECT_EQ(v2->timestamp(), 1000.0);
  EXPECT_FALSE(vrf->cookie()->updated());
}

TEST_F(PerVrfServiceDevice, DoesNotStampAnEmptyVrfWhenItIsMade) {
  const auto vrf = makeVrf();
  EXPECT_TRUE(Kel::isNoTime(v2->timestamp()));
  EXPECT_TRUE(vrf->initComplete());
}

TEST_F(PerVrfServiceDevice, KeepsWhatItWasGiven) {
  const auto vrf = makeVrf();
  EXPECT_EQ(vrf->vrfName(), "red");
  EXPECT_EQ(vrf->netVrfName(), "net-red");
  EXPECT_EQ(vrf->vrfConfigV1(), v1);
  EXPECT_EQ(vrf->vrfConfigV2(), v2);
}

TEST_F(PerVrfServiceDevice, NumbersItsAttributesInTheOrderOfItsTable) {
  EXPECT_EQ(PerVrfServiceDeviceTranslateSm::vrfNameAttr.id, 130);
  EXPECT_EQ(PerVrfServiceDeviceTranslateSm::netVrfNameAttr.id, 131);
  EXPECT_EQ(PerVrfServiceDeviceTranslateSm::vrfConfigV1Attr.id, 132);
  EXPECT_EQ(PerVrfServiceDeviceTranslateSm::vrfConfigV2Attr.id, 133);
  EXPECT_EQ(PerVrfServiceDeviceTranslateSm::perL3IntfSmAttr.id, 134);
  EXPECT_EQ(PerVrfServiceDeviceTranslateSm::cookieAttr.id, 135);
  EXPECT_EQ(PerVrfServiceDeviceTranslateSm::initializedAttr.id, 136);
  EXPECT_EQ(PerVrfServiceDeviceTranslateSm::initCompleteAttr.id, 137);
}

TEST_F(PerVrfServiceDevice, NamesTheVrfThenWalksThenStampsWhenItIsMade) {
  v1->l3IntfIs(one);
  const Kel::Observer watch(*v2, [&](AttrId id, const void*) { note(std::to_string(id)); });
  const auto vrf = makeVrf();
  EXPECT_EQ(noted(), (Lines{"258", "259", "260"}));
}

TEST_F(PerVrfServiceDevice, StampsThreeNewInterfacesOnceAtTheSignal) {
  const auto vrf = makeVrf();
  now = 2000;
  v1->l3IntfIs(one);
  v1->l3IntfIs(two);
  v1->l3IntfIs(three);
  EXPECT_TRUE(Kel::isNoTime(v2->timestamp()));
  EXPECT_EQ(v2->l3Intf().size(), 3U);
  EXPECT_EQ(signal(), 1);
  EXPECT_EQ(v2->timestamp(), 2000.0);
}

TEST_F(PerVrfServiceDevice, WritesNothingAtASignalWithoutAChange) {
  v1->l3IntfIs(one);
  const auto vrf = makeVrf();
  now = 2000;
  EXPECT_EQ(signal(), 0);
  EXPECT_EQ(signal(), 0);
  EXPECT_EQ(v2->timestamp(), 1000.0);
}

TEST_F(PerVrfServiceDevice, StampsASubnetThatChangedBelow) {
  const auto intfV1 = v1->l3IntfIs(one);
  const auto vrf = makeVrf();
  now = 2000;
  intfV1->reachableSubnetIs(IpGenPrefix("10.1.0.0/16"));
  EXPECT_TRUE(vrf->cookie()->updated());
  EXPECT_EQ(signal(), 1);
  EXPECT_FALSE(vrf->cookie()->updated());
  EXPECT_EQ(v2->timestamp(), 2000.0);
}

TEST_F(PerVrfServiceDevice, MarksTheCookieWhenAnInterfaceIsAddedOrRemovedAlsoForNothing) {
  const auto vrf = makeVrf();
  v1->l3IntfIs(one);
  EXPECT_EQ(signal(), 1);
  vrf->handleL3Intf(one);  // there already
  EXPECT_EQ(signal(), 1);
  v1->l3IntfDel(one);
  EXPECT_EQ(signal(), 1);
  vrf->handleL3Intf(one);  // gone already
  EXPECT_EQ(signal(), 1);
}

TEST_F(PerVrfServiceDevice, TheWalkDeletesAStrayInterfaceAndTheNextUpdateStampsIt) {
  const auto vrf = makeVrf();
  v2->l3IntfIs(one);
  now = 2000;
  vrf->handleL3Intf();
  EXPECT_TRUE(v2->l3Intf().empty());
  EXPECT_TRUE(vrf->cookie()->updated());
  vrf->doUpdate();
  EXPECT_EQ(v2->timestamp(), 2000.0);
}

TEST_F(PerVrfServiceDevice, TheWalkOverTwoEmptySidesLeavesTheCookie) {
  const auto vrf = makeVrf();
  vrf->handleL3Intf();
  EXPECT_FALSE(vrf->cookie()->updated());
}

TEST_F(PerVrfServiceDevice, TheWalkMarksTheCookieForDeletionsAtItsEndOnly) {
  const auto vrf = makeVrf();
  v2->l3IntfIs(one);
  bool marked = true;
  const Kel::Observer watch(*v2, [&](AttrId, const void*) { marked = vrf->cookie()->updated(); });
  vrf->handleL3Intf();
  EXPECT_FALSE(marked);
  EXPECT_TRUE(vrf->cookie()->updated());
}

TEST_F(PerVrfServiceDevice, TheWalkDeletesBeforeItAddsAndLeavesChildren) {
  v1->l3IntfIs(one);
  const auto vrf = makeVrf();
  vrf->hasNotificationActiveIs(false);
  v1->l3IntfDel(one);
  v1->l3IntfIs(two);
  const Kel::Observer watch(*v2, [&](AttrId, const void* key) {
    const auto& address = keyOf<IpGenAddr>(key);
    note((v2->l3Intf(address) ? "added " : "deleted ") + address.stringValue());
  });
  vrf->handleL3Intf();
  EXPECT_EQ(noted(), (Lines{"deleted 10.0.0.1", "added 10.0.0.2"}));
  EXPECT_NE(vrf->perL3IntfSm(one), nullptr);
  EXPECT_NE(vrf->perL3IntfSm(two), nullptr);
}

TEST_F(PerVrfServiceDevice, AddsTheEntryBeforeTheChildAndRemovesItAfter) {
  const auto vrf = makeVrf();
  const Kel::Observer watch(*v2, [&](AttrId, const void* key) {
    note(std::string(v2->l3Intf(keyOf<IpGenAddr>(key)) ? "added, " : "deleted, ") +
         std::to_string(live<PerL3IntfServiceDeviceTranslateSm>()) + " children");
  });
  v1->l3IntfIs(one);
  v1->l3IntfDel(one);
  EXPECT_EQ(noted(), (Lines{"added, 0 children", "deleted, 0 children"}));
}

TEST_F(PerVrfServiceDevice, RemovingDeletesTheEntryAlsoWithoutAChild) {
  const auto vrf = makeVrf();
  v2->l3IntfIs(one);
  vrf->handleL3Intf(one);
  EXPECT_TRUE(v2->l3Intf().empty());
}

TEST_F(PerVrfServiceDevice, RemovesTheInterfaceWhoseAddressIsReadFromTheChildThatGoes) {
  v1->l3IntfIs(one);
  const auto vrf = makeVrf();
  vrf->hasNotificationActiveIs(false);
  v1->l3IntfDel(one);
  vrf->handleL3Intf(vrf->perL3IntfSm().find(one)->l3IntfAddr());
  EXPECT_TRUE(vrf->perL3IntfSm().empty());
  EXPECT_TRUE(v2->l3Intf().empty());
}

TEST_F(PerVrfServiceDevice, GivesItsChildrenItsCookie) {
  v1->l3IntfIs(one);
  const auto vrf = makeVrf();
  EXPECT_EQ(vrf->perL3IntfSm(one)->cookie(), vrf->cookie());
  EXPECT_EQ(vrf->perL3IntfSm(one)->l3IntfAddr(), one);
  EXPECT_EQ(vrf->perL3IntfSm(one)->l3IntfConfigV1(), v1->l3Intf(one));
  EXPECT_EQ(vrf->perL3IntfSm(one)->l3IntfConfigV2(), v2->l3Intf(one));
}

TEST_F(PerVrfServiceDevice, HandleInitializedAgainSharesANewCookieWithNewChildren) {
  v1->l3IntfIs(one);
  const auto vrf = makeVrf();
  const auto before = vrf->cookie();
  auto child = vrf->perL3IntfSm(one);
  vrf->handleInitialized();
  EXPECT_NE(vrf->cookie(), before);
  EXPECT_NE(vrf->perL3IntfSm(one), child);
  EXPECT_EQ(v1->l3Intf(one)->publisher().subscriberCount(), 1U);
  child.reset();
  EXPECT_EQ(vrf->perL3IntfSm(one)->cookie(), vrf->cookie());
  EXPECT_EQ(live<PerL3IntfServiceDeviceTranslateSm>(), 1U);
  EXPECT_EQ(before->refCount(), 1U);
}

TEST_F(PerVrfServiceDevice, ReplacesTheChildOfAnInterfaceThatWasReplaced) {
  const Ptr<VelaL3::L3IntfConfig> old = v1->l3IntfIs(one);
  const auto vrf = makeVrf();
  vrf->hasNotificationActiveIs(false);
  v1->l3IntfDel(one);
  const auto fresh = v1->l3IntfIs(one);
  fresh->reachableSubnetIs(IpGenPrefix("10.9.0.0/16"));
  vrf->hasNotificationActiveIs(true);
  v1->publisher().publish(259, &one);
  EXPECT_EQ(vrf->perL3IntfSm(one)->l3IntfConfigV1(), fresh);
  EXPECT_TRUE(v2->l3Intf(one)->reachableSubnet(IpGenPrefix("10.9.0.0/16")));
  EXPECT_EQ(old->publisher().subscriberCount(), 0U);
}

TEST_F(PerVrfServiceDevice, ReplacesAChildThatIsToWriteToAnotherInterface) {
  const auto intfV1 = v1->l3IntfIs(one);
  const auto vrf = makeVrf();
  const auto other = sourceV2->serviceDeviceIs("fw2")->netVrfIs("n")->l3IntfIs(one);
  const auto child = vrf->perL3IntfSmIs(one, intfV1, other, vrf->cookie());
  EXPECT_EQ(child->l3IntfConfigV2(), other);
  EXPECT_EQ(vrf->perL3IntfSm(one), child);
}

TEST_F(PerVrfServiceDevice, CleanupKeepsInitCompleteTheNameAndTheTimeStamp) {
  v1->l3IntfIs(one);
  const auto vrf = makeVrf();
  v2->l3IntfIs(two);
  vrf->cleanup();
  EXPECT_FALSE(vrf->initialized());
  EXPECT_TRUE(vrf->initComplete());
  EXPECT_TRUE(vrf->perL3IntfSm().empty());
  EXPECT_TRUE(v2->l3Intf().empty());
  EXPECT_EQ(v2->timestamp(), 1000.0);
  EXPECT_EQ(v2->vrfName(), "red");
}

TEST_F(PerVrfServiceDevice, DoUpdateWritesNothingBetweenCleanupAndHandleInitialized) {
  v1->l3IntfIs(one);
  const auto vrf = makeVrf();
  vrf->cleanup();
  now = 2000;
  vrf->cookie()->updatedIs(true);
  EXPECT_EQ(signal(), 0);
  EXPECT_EQ(v2->timestamp(), 1000.0);
  vrf->handleInitialized();
  EXPECT_EQ(v2->timestamp(), 2000.0);
  v1->l3IntfIs(two);
  EXPECT_EQ(signal(), 1);
}

TEST_F(PerVrfServiceDevice, HandlesInterfacesAlsoWhileNotInitialized) {
  const auto vrf = makeVrf();
  vrf->cleanup();
  v1->l3IntfIs(one);
  EXPECT_NE(v2->l3Intf(one), nullptr);
  vrf->handleL3Intf();
  EXPECT_FALSE(vrf->initialized());
}

}  // namespace
}  // namespace ServiceDeviceTests
