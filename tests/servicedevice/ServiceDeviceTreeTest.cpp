#include <algorithm>

#include "servicedevice/ServiceDeviceTest.h"

namespace ServiceDeviceTests {
namespace {

/// What only the whole tree shows: shared and swapped network VRF names, replaced records and
/// entities, switching, and observers of version 2 that write version 1.
class ServiceDeviceTree : public ServiceDeviceTest {
 protected:
  Ptr<PerVrfServiceDeviceTranslateSm> vrfSm(const char* vrf) const {
    return root->perDeviceSm("fw1")->perVrfSm(VrfName(vrf));
  }
  void notifyVrf(const char* vrf) const {
    const VrfName name(vrf);
    deviceV1()->publisher().publish(259, &name);
  }
  /// The interfaces of a network VRF, sorted; "(none)" when the VRF is not there.
  std::string interfaces(const char* netVrfName) const {
    const auto there = netVrf(netVrfName);
    if (!there) {
      return "(none)";
    }
    std::vector<IpGenAddr> addresses;
    for (const auto& [address, intf] : there->l3Intf()) {
      addresses.push_back(address);
    }
    std::sort(addresses.begin(), addresses.end());
    std::string all;
    for (const IpGenAddr& address : addresses) {
      all += (all.empty() ? "" : " ") + address.stringValue();
    }
    return all;
  }
  Ptr<ServiceDeviceTranslateRootSm> root;
};

TEST_F(ServiceDeviceTree, RemovingOneOfTwoVrfsDeletesTheirSharedEntryUntilTheOtherIsNotified) {
  fillVrf("A", "n", "10.0.0.1");
  root = makeRoot();
  fillVrf("B", "n", "10.0.0.2");  // built last, and so the one that prunes
  EXPECT_EQ(interfaces("n"), "10.0.0.2");
  deviceV1()->vrfDel(VrfName("A"));
  EXPECT_EQ(interfaces("n"), "(none)");
  const auto stale = vrfSm("B");
  ASSERT_NE(stale, nullptr);
  deviceV1()->vrf(VrfName("B"))->l3IntfIs(IpGenAddr("10.0.0.3"));  // goes to the detached entry
  EXPECT_EQ(interfaces("n"), "(none)");
  notifyVrf("B");
  EXPECT_EQ(interfaces("n"), "10.0.0.2 10.0.0.3");
  EXPECT_NE(vrfSm("B"), stale);
  EXPECT_EQ(netVrf("n")->vrfName(), "B");
}

TEST_F(ServiceDeviceTree, AShiftOfNamesDeletesTheEntryThatAnotherVrfHasMovedOnto) {
  fillVrf("A", "n1", "10.0.0.1");
  fillVrf("B", "n2", "10.0.0.2");
  root = makeRoot();
  record->netVrfNameByVrfIs("A", "n2");
  EXPECT_EQ(interfaces("n1"), "(none)");
  record->netVrfNameByVrfIs("B", "n3");  // its old name is n2, where A is now
  EXPECT_EQ(interfaces("n2"), "(none)");
  EXPECT_EQ(interfaces("n3"), "10.0.0.2");
  notifyVrf("A");
  EXPECT_EQ(interfaces("n2"), "10.0.0.1");
  EXPECT_EQ(netVrf("n2")->vrfName(), "A");
}

TEST_F(ServiceDeviceTree, ASwapOfNamesIsCompleteWhenTheFirstVrfIsNotifiedAgain) {
  fillVrf("A", "n1", "10.0.0.1");
  fillVrf("B", "n2", "10.0.0.2");
  root = makeRoot();
  record->netVrfNameByVrfIs("A", "n2");
  record->netVrfNameByVrfIs("B", "n1");
  EXPECT_EQ(interfaces("n1"), "10.0.0.2");
  EXPECT_EQ(interfaces("n2"), "(none)");
  root->perDeviceSm("fw1")->handleVrf();
  EXPECT_EQ(interfaces("n1"), "10.0.0.2");
  EXPECT_EQ(interfaces("n2"), "10.0.0.1");
  EXPECT_EQ(live<PerVrfServiceDeviceTranslateSm>(), 2U);
}

TEST_F(ServiceDeviceTree, ARecordThatWasReplacedIsTakenUpAtTheNextNotification) {
  fillVrf();
  root = makeRoot();
  const auto old = record;
  status->devicePolicyListDel("fw1");
  record = status->devicePolicyListIs("fw1");
  record->netVrfNameByVrfIs("red", "net-red");
  EXPECT_FALSE(record->serviceDeviceConverge());
  EXPECT_EQ(root->perDeviceSm("fw1")->policyList(), old);
  root->handleDevice("fw1");
  EXPECT_EQ(root->perDeviceSm("fw1")->policyList(), record);
  EXPECT_TRUE(record->serviceDeviceConverge());
  EXPECT_EQ(interfaces("net-red"), "10.0.0.1");
  EXPECT_EQ(old->publisher().subscriberCount(), 0U);
  EXPECT_EQ(live<PerServiceDeviceTranslateSm>(), 1U);
}

TEST_F(ServiceDeviceTree, APairMovesToItsFirstMembersRecordWhenThatAppears) {
  const char* const pair = "fwA\\:fwB_HAPair";
  const auto second = status->devicePolicyListIs("fwB::");
  deviceV1(pair);
  root = makeRoot();
  EXPECT_TRUE(second->serviceDeviceConverge());
  const auto first = status->devicePolicyListIs("fwA::");
  root->handleDevice(pair);
  EXPECT_EQ(root->perDeviceSm(pair)->policyList(), first);
  EXPECT_TRUE(first->serviceDeviceConverge());
  EXPECT_EQ(second->publisher().subscriberCount(), 0U);
}

TEST_F(ServiceDeviceTree, APairAndADeviceMayShareARecord) {
  const auto shared = status->devicePolicyListIs("fwA::");
  deviceV1("fwA::");
  deviceV1("fwA\\:fwB_HAPair");
  root = makeRoot();
  EXPECT_EQ(shared->publisher().subscriberCount(), 2U);
  shared->trafficInspectionIs(Vela::TrafficInspection{3});
  EXPECT_EQ(deviceV2("fwA::")->trafficInspection(), Vela::TrafficInspection{3});
  EXPECT_EQ(deviceV2("fwA\\:fwB_HAPair")->trafficInspection(), Vela::TrafficInspection{3});
}

TEST_F(ServiceDeviceTree, AVrfThatWasReplacedInPlaceGetsANewChild) {
  fillVrf();
  root = makeRoot();
  const auto old = vrfSm("red");
  root->perDeviceSm("fw1")->hasNotificationActiveIs(false);
  deviceV1()->vrfDel(VrfName("red"));
  fillVrf("red", "net-red", "10.0.0.7");
  root->perDeviceSm("fw1")->hasNotificationActiveIs(true);
  notifyVrf("red");
  EXPECT_NE(vrfSm("red"), old);
  EXPECT_EQ(interfaces("net-red"), "10.0.0.7");
}

TEST_F(ServiceDeviceTree, AnEntryThatSomebodyElseDeletedComesBackAtTheNextNotification) {
  fillVrf();
  root = makeRoot();
  deviceV2()->netVrfDel("net-red");
  EXPECT_EQ(interfaces("net-red"), "(none)");
  notifyVrf("red");
  EXPECT_EQ(interfaces("net-red"), "10.0.0.1");
}

TEST_F(ServiceDeviceTree, SwitchingOffAndOnMissesWhatHappenedMeanwhile) {
  const auto vrfV1 = fillVrf();
  root = makeRoot();
  root->hasNotificationActiveIs(false);
  vrfV1->l3IntfIs(IpGenAddr("10.0.0.2"));
  root->hasNotificationActiveIs(true);
  EXPECT_EQ(interfaces("net-red"), "10.0.0.1");
  root->handleInitialized();  // walks its own level only: the device is the same
  EXPECT_EQ(interfaces("net-red"), "10.0.0.1");
  vrfV1->l3IntfIs(IpGenAddr("10.0.0.3"));
  EXPECT_EQ(interfaces("net-red"), "10.0.0.1 10.0.0.3");
  root->cleanup();
  root->handleInitialized();
  EXPECT_EQ(interfaces("net-red"), "10.0.0.1 10.0.0.2 10.0.0.3");
}

TEST_F(ServiceDeviceTree, AnObserverThatNotifiesTheVrfWhoseEntryIsBeingMadeGetsOneChild) {
  root = makeRoot();
  const auto v1 = deviceV1();
  const Kel::Observer watch(*deviceV2(), [&](AttrId id, const void*) {
    if (id == 259 && netVrf()) {
      EXPECT_TRUE(netVrf()->vrfName().stringValue().empty());  // not yet known
      notifyVrf("red");
    }
  });
  fillVrf();
  EXPECT_EQ(live<PerVrfServiceDeviceTranslateSm>(), 1U);
  EXPECT_EQ(vrfSm("red")->vrfConfigV2(), netVrf());
  EXPECT_EQ(interfaces("net-red"), "10.0.0.1");
}

TEST_F(ServiceDeviceTree, AnObserverThatRemovesTheVrfWhoseEntryIsBeingMadeLeavesNothing) {
  root = makeRoot();
  deviceV1();
  const Kel::Observer watch(*deviceV2(), [&](AttrId id, const void*) {
    if (id == 259 && netVrf()) {
      deviceV1()->vrfDel(VrfName("red"));
    }
  });
  fillVrf();
  EXPECT_EQ(interfaces("net-red"), "(none)");
  EXPECT_EQ(live<PerVrfServiceDeviceTranslateSm>(), 0U);
}

TEST_F(ServiceDeviceTree, AnObserverThatDropsTheRootInsideAHandlerLeavesVersion2Empty) {
  root = makeRoot();
  deviceV1();
  const auto v2 = deviceV2();
  const Kel::Observer watch(*v2, [&](AttrId, const void*) { root.reset(); });
  fillVrf();
  EXPECT_TRUE(sourceV2->serviceDevice().empty());
  EXPECT_TRUE(v2->netVrf().empty());
  EXPECT_EQ(live<ServiceDeviceTranslateRootSm>(), 0U);
  EXPECT_EQ(live<PerServiceDeviceTranslateSm>(), 0U);
  EXPECT_EQ(live<PerVrfServiceDeviceTranslateSm>(), 0U);
}

TEST_F(ServiceDeviceTree, AnObserverThatNotifiesDuringCleanupBringsNothingBack) {
  fillVrf();
  root = makeRoot();
  const auto v2 = deviceV2();
  const Kel::Observer watch(*v2, [&](AttrId, const void*) { notifyVrf("red"); });
  root.reset();
  EXPECT_TRUE(sourceV2->serviceDevice().empty());
  EXPECT_TRUE(v2->netVrf().empty());
  EXPECT_EQ(live<PerVrfServiceDeviceTranslateSm>(), 0U);
}

TEST_F(ServiceDeviceTree, RemovingADeviceEmptiesItFromTheBottomUp) {
  fillVrf();
  root = makeRoot();
  const auto watch = [this](const char* what) {
    return [this, what](AttrId, const void*) { note(what); };
  };
  const Kel::Observer source(*sourceV2, watch("device gone"));
  const Kel::Observer device(*deviceV2(), watch("network VRF gone"));
  const Kel::Observer vrf(*netVrf(), watch("interface gone"));
  const Kel::Observer intf(*netVrf()->l3Intf(IpGenAddr("10.0.0.1")), watch("subnet gone"));
  sourceV1->serviceDeviceDel("fw1");
  EXPECT_EQ(noted(), (Lines{"interface gone", "network VRF gone", "device gone"}));
}

TEST_F(ServiceDeviceTree, AChildThatOutlivesItsRemovalDoesNotTouchTheLiveTree) {
  fillVrf();
  root = makeRoot();
  auto held = vrfSm("red");
  deviceV1()->vrfDel(VrfName("red"));
  fillVrf();
  EXPECT_NE(vrfSm("red"), held);
  EXPECT_EQ(interfaces("net-red"), "10.0.0.1");
  held.reset();
  EXPECT_EQ(interfaces("net-red"), "10.0.0.1");
}

}  // namespace
}  // namespace ServiceDeviceTests
