#include "servicedevice/ServiceDeviceTest.h"
#include "servicedevice/ServiceDeviceTranslateRootSm.h"

namespace ServiceDeviceTests {
namespace {

class ServiceDeviceTranslateRoot : public ServiceDeviceTest {};

TEST_F(ServiceDeviceTranslateRoot, MirrorsWhatIsThereWhenItIsMade) {
  fillVrf();
  const auto root = makeRoot();
  EXPECT_TRUE(root->initialized());
  EXPECT_TRUE(root->hasNotificationActive());
  ASSERT_NE(netVrf(), nullptr);
  EXPECT_EQ(netVrf()->vrfName(), "red");
  EXPECT_TRUE(netVrf()->l3Intf(IpGenAddr("10.0.0.1"))->reachableSubnet(IpGenPrefix("10.1.0.0/16")));
}

TEST_F(ServiceDeviceTranslateRoot, KeepsWhatItWasGiven) {
  const auto root = makeRoot();
  EXPECT_EQ(root->sdSourceV1(), sourceV1);
  EXPECT_EQ(root->sdSourceV2(), sourceV2);
  EXPECT_EQ(root->vpmStatus(), status);
  EXPECT_TRUE(root->perDeviceSm().empty());
}

TEST_F(ServiceDeviceTranslateRoot, NumbersItsAttributesInTheOrderOfItsTable) {
  EXPECT_EQ(ServiceDeviceTranslateRootSm::sdSourceV1Attr.id, 130);
  EXPECT_EQ(ServiceDeviceTranslateRootSm::sdSourceV2Attr.id, 131);
  EXPECT_EQ(ServiceDeviceTranslateRootSm::vpmStatusAttr.id, 132);
  EXPECT_EQ(ServiceDeviceTranslateRootSm::perDeviceSmAttr.id, 133);
  EXPECT_EQ(ServiceDeviceTranslateRootSm::initializedAttr.id, 137);
}

TEST_F(ServiceDeviceTranslateRoot, FollowsADeviceThatComesAndGoes) {
  const auto root = makeRoot();
  deviceV1();
  EXPECT_NE(deviceV2(), nullptr);
  EXPECT_NE(root->perDeviceSm("fw1"), nullptr);
  sourceV1->serviceDeviceDel("fw1");
  EXPECT_EQ(deviceV2(), nullptr);
  EXPECT_EQ(root->perDeviceSm("fw1"), nullptr);
  EXPECT_EQ(live<PerServiceDeviceTranslateSm>(), 0U);
}

TEST_F(ServiceDeviceTranslateRoot, UsesTheVersion1NameUnchanged) {
  const char* const name = "fw\\:1\\\\:red:";
  status->devicePolicyListIs(name);
  deviceV1(name);
  const auto root = makeRoot();
  EXPECT_NE(sourceV2->serviceDevice(name), nullptr);
  EXPECT_NE(root->perDeviceSm(name), nullptr);
  EXPECT_EQ(root->perDeviceSm(name)->deviceName(), name);
}

TEST_F(ServiceDeviceTranslateRoot, AddsTheEntryBeforeTheChild) {
  const auto root = makeRoot();
  const Kel::Observer watch(*sourceV2, [&](AttrId, const void* key) {
    note("entry " + Kel::textOf(keyOf<Vela::DeviceName>(key)) +
         (root->perDeviceSm("fw1") ? ", child there" : ", no child yet"));
  });
  deviceV1();
  EXPECT_EQ(noted(), Lines{"entry fw1, no child yet"});
  EXPECT_NE(root->perDeviceSm("fw1"), nullptr);
}

TEST_F(ServiceDeviceTranslateRoot, RemovesTheChildBeforeTheEntry) {
  fillVrf();
  const auto root = makeRoot();
  const Kel::Observer watchDevice(*deviceV2(), [&](AttrId id, const void*) {
    note("child clears attribute " + std::to_string(id));
  });
  const Kel::Observer watchSource(*sourceV2, [&](AttrId, const void*) {
    note("entry gone, children left: " + std::to_string(live<PerServiceDeviceTranslateSm>()));
  });
  sourceV1->serviceDeviceDel("fw1");
  EXPECT_EQ(noted(), (Lines{"child clears attribute 259", "entry gone, children left: 0"}));
}

TEST_F(ServiceDeviceTranslateRoot, HandlesNothingAndTracesNothingWhileNotInitialized) {
  const auto root = makeRoot();
  root->cleanup();
  EXPECT_FALSE(root->initialized());
  BothTraces traces;
  deviceV1();
  root->handleDevice("fw1");
  root->handleDevice();
  EXPECT_EQ(deviceV2(), nullptr);
  EXPECT_TRUE(root->perDeviceSm().empty());
  EXPECT_EQ(traces.take(), Lines{});
}

TEST_F(ServiceDeviceTranslateRoot, TreatsADeviceWithoutARecordAsRemoved) {
  deviceV1("fw2");
  sourceV2->serviceDeviceIs("fw2");
  const auto root = makeRoot();
  EXPECT_EQ(deviceV2("fw2"), nullptr);
  EXPECT_EQ(root->perDeviceSm("fw2"), nullptr);
}

TEST_F(ServiceDeviceTranslateRoot, TakesUpALateRecordAtTheNextNotificationOrWalkOnly) {
  deviceV1("fw2");
  deviceV1("fw3");
  const auto root = makeRoot();
  status->devicePolicyListIs("fw2");
  EXPECT_EQ(deviceV2("fw2"), nullptr);
  root->handleDevice("fw2");
  EXPECT_NE(deviceV2("fw2"), nullptr);
  status->devicePolicyListIs("fw3");
  EXPECT_EQ(deviceV2("fw3"), nullptr);
  root->handleDevice();
  EXPECT_NE(deviceV2("fw3"), nullptr);
}

TEST_F(ServiceDeviceTranslateRoot, RemovesADeviceWhoseRecordHasGoneAtItsNextNotification) {
  deviceV1();
  const auto root = makeRoot();
  status->devicePolicyListDel("fw1");
  EXPECT_NE(deviceV2(), nullptr);
  root->handleDevice("fw1");
  EXPECT_EQ(deviceV2(), nullptr);
  EXPECT_EQ(root->perDeviceSm("fw1"), nullptr);
}

TEST_F(ServiceDeviceTranslateRoot, TheWalkDeletesAStrayEntryAndLeavesAChildOfTheSameName) {
  deviceV1();
  const auto root = makeRoot();
  const auto child = root->perDeviceSm("fw1");
  root->hasNotificationActiveIs(false);
  sourceV1->serviceDeviceDel("fw1");  // unnoticed
  root->handleDevice();
  EXPECT_EQ(deviceV2(), nullptr);
  EXPECT_EQ(root->perDeviceSm("fw1"), child);
}

TEST_F(ServiceDeviceTranslateRoot, AStaleChildGivesWayWhenItsDeviceComesBack) {
  deviceV1();
  const auto root = makeRoot();
  const auto stale = root->perDeviceSm("fw1");
  root->hasNotificationActiveIs(false);
  sourceV1->serviceDeviceDel("fw1");
  root->handleDevice();
  root->hasNotificationActiveIs(true);
  deviceV1();
  EXPECT_NE(root->perDeviceSm("fw1"), stale);
  EXPECT_EQ(root->perDeviceSm("fw1")->sdConfigV2(), deviceV2());
}

TEST_F(ServiceDeviceTranslateRoot, TheWalkDeletesBeforeItAdds) {
  sourceV2->serviceDeviceIs("stray");
  deviceV1();
  const Kel::Observer watch(*sourceV2, [&](AttrId, const void* key) {
    const auto& name = keyOf<Vela::DeviceName>(key);
    note((sourceV2->serviceDevice(name) ? "added " : "deleted ") + Kel::textOf(name));
  });
  const auto root = makeRoot();
  EXPECT_EQ(noted(), (Lines{"deleted stray", "added fw1"}));
}

TEST_F(ServiceDeviceTranslateRoot, CleanupEmptiesBothSidesAndHandleInitializedRebuildsThem) {
  fillVrf();
  deviceV1("fw2");
  status->devicePolicyListIs("fw2");
  const auto root = makeRoot();
  sourceV2->serviceDeviceIs("stray");
  root->cleanup();
  EXPECT_FALSE(root->initialized());
  EXPECT_TRUE(root->perDeviceSm().empty());
  EXPECT_TRUE(sourceV2->serviceDevice().empty());
  root->handleInitialized();
  EXPECT_TRUE(root->initialized());
  EXPECT_EQ(root->perDeviceSm().size(), 2U);
  EXPECT_EQ(sourceV2->serviceDevice().size(), 2U);
  EXPECT_TRUE(netVrf()->l3Intf(IpGenAddr("10.0.0.1"))->reachableSubnet(IpGenPrefix("10.1.0.0/16")));
}

TEST_F(ServiceDeviceTranslateRoot, KeepsAChildThatWasBuiltFromTheSameObjects) {
  fillVrf();
  const auto root = makeRoot();
  const auto child = root->perDeviceSm("fw1");
  const auto perVrf = child->perVrfSm(VrfName("red"));
  root->handleDevice("fw1");
  root->handleInitialized();
  EXPECT_EQ(root->perDeviceSm("fw1"), child);
  EXPECT_EQ(child->perVrfSm(VrfName("red")), perVrf);
}

TEST_F(ServiceDeviceTranslateRoot, FindsAPairsRecordUnderItsMembersNeverUnderItsOwnName) {
  const char* const pair = "fwA\\:fwB_HAPair:red";
  status->devicePolicyListIs(pair);
  const auto root = makeRoot();
  EXPECT_EQ(root->getPolicyList(pair), nullptr);
  const auto second = status->devicePolicyListIs("fwB:red:");
  EXPECT_EQ(root->getPolicyList(pair), second);
  const auto first = status->devicePolicyListIs("fwA:red:");
  EXPECT_EQ(root->getPolicyList(pair), first);
  EXPECT_EQ(root->getPolicyList("fw1"), record);
  EXPECT_EQ(root->getPolicyList("fw2"), nullptr);
}

TEST_F(ServiceDeviceTranslateRoot, ReplacesTheChildOfADeviceThatWasReplacedInPlace) {
  fillVrf("red", "net-red", "10.0.0.1");
  const auto root = makeRoot();
  root->hasNotificationActiveIs(false);
  sourceV1->serviceDeviceDel("fw1");
  fillVrf("red", "net-red", "10.0.0.2");
  root->hasNotificationActiveIs(true);
  root->handleDevice("fw1");
  EXPECT_EQ(root->perDeviceSm("fw1")->sdConfigV1(), deviceV1());
  EXPECT_EQ(netVrf()->l3Intf().size(), 1U);
  EXPECT_NE(netVrf()->l3Intf(IpGenAddr("10.0.0.2")), nullptr);
  EXPECT_EQ(live<PerServiceDeviceTranslateSm>(), 1U);
}

TEST_F(ServiceDeviceTranslateRoot, ReplacesAChildThatIsToWriteToAnotherDevice) {
  const auto v1 = deviceV1();
  const auto root = makeRoot();
  const auto other = sourceV2->serviceDeviceIs("fw2");
  const auto child = root->perDeviceSmIs("fw1", v1, other, record);
  EXPECT_EQ(child->sdConfigV2(), other);
  EXPECT_EQ(root->perDeviceSm("fw1"), child);
}

TEST_F(ServiceDeviceTranslateRoot, AChildThatIsMadeWhileTheRootIsSilentIsNotSilent) {
  const auto root = makeRoot();
  root->hasNotificationActiveIs(false);
  fillVrf();
  root->handleDevice("fw1");
  root->hasNotificationActiveIs(false);  // is off already: reaches no child
  EXPECT_TRUE(root->perDeviceSm("fw1")->hasNotificationActive());
  record->trafficInspectionIs(Vela::TrafficInspection{3});
  EXPECT_EQ(deviceV2()->trafficInspection(), Vela::TrafficInspection{3});
}

TEST_F(ServiceDeviceTranslateRoot, DroppingItEmptiesVersion2AndUnregisters) {
  fillVrf();
  const auto vrfV1 = deviceV1()->vrf(VrfName("red"));
  auto root = makeRoot();
  EXPECT_EQ(sourceV1->publisher().subscriberCount(), 1U);
  EXPECT_EQ(record->publisher().subscriberCount(), 1U);
  root.reset();
  EXPECT_TRUE(sourceV2->serviceDevice().empty());
  EXPECT_EQ(sourceV1->publisher().subscriberCount(), 0U);
  EXPECT_EQ(deviceV1()->publisher().subscriberCount(), 0U);
  EXPECT_EQ(record->publisher().subscriberCount(), 0U);
  EXPECT_EQ(vrfV1->publisher().subscriberCount(), 0U);
  EXPECT_EQ(live<ServiceDeviceTranslateRootSm>(), 0U);
  EXPECT_EQ(live<PerServiceDeviceTranslateSm>(), 0U);
  EXPECT_EQ(live<PerVrfServiceDeviceTranslateSm>(), 0U);
  EXPECT_EQ(live<PerL3IntfServiceDeviceTranslateSm>(), 0U);
  EXPECT_EQ(live<UpdateCookie>(), 0U);
}

TEST_F(ServiceDeviceTranslateRoot, SwitchesOffCleansUpAndMarksInThisOrderWhenItEnds) {
  deviceV1();
  auto root = makeRoot();
  const auto* const ending = root.get();
  const Kel::Observer watch(*sourceV2, [&](AttrId, const void*) {
    note(std::string("during clean-up: ") + (ending->hasNotificationActive() ? "on" : "off") +
         (ending->kelMarkedForDeletion() ? ", marked" : ", not marked yet"));
  });
  root.reset();
  EXPECT_EQ(noted(), Lines{"during clean-up: off, not marked yet"});
}

}  // namespace
}  // namespace ServiceDeviceTests
