#include "servicedevice/PerServiceDeviceTranslateSm.h"
#include "servicedevice/ServiceDeviceTest.h"

namespace ServiceDeviceTests {
namespace {

class PerServiceDevice : public ServiceDeviceTest {
 protected:
  /// A machine of its own, without a root.
  Ptr<PerServiceDeviceTranslateSm> makeDevice() const {
    return VelaPolicyMonitor::perServiceDeviceTranslateSmFactory("fw1", v1, v2, record);
  }
  Ptr<VelaL3::ServiceDeviceConfig> v1 = deviceV1();
  Ptr<VelaL3V2::ServiceDeviceConfig> v2 = sourceV2->serviceDeviceIs("fw1");
};

TEST_F(PerServiceDevice, MirrorsWhatIsThereWhenItIsMade) {
  fillVrf();
  record->trafficInspectionIs(Vela::TrafficInspection{0x02});
  const auto device = makeDevice();
  EXPECT_TRUE(device->initialized());
  EXPECT_TRUE(device->hasNotificationActive());
  EXPECT_EQ(netVrf()->vrfName(), "red");
  EXPECT_EQ(v2->trafficInspection(), Vela::TrafficInspection{0x02});
  EXPECT_TRUE(record->serviceDeviceConverge());
  EXPECT_FALSE(record->policyConverge());
}

TEST_F(PerServiceDevice, KeepsWhatItWasGiven) {
  fillVrf();
  const auto device = makeDevice();
  EXPECT_EQ(device->deviceName(), "fw1");
  EXPECT_EQ(device->sdConfigV1(), v1);
  EXPECT_EQ(device->sdConfigV2(), v2);
  EXPECT_EQ(device->policyList(), record);
  const auto child = device->perVrfSm(VrfName("red"));
  EXPECT_EQ(child->vrfName(), "red");
  EXPECT_EQ(child->netVrfName(), "net-red");
  EXPECT_EQ(child->vrfConfigV1(), v1->vrf(VrfName("red")));
  EXPECT_EQ(child->vrfConfigV2(), netVrf());
}

TEST_F(PerServiceDevice, NumbersItsAttributesInTheOrderOfItsTable) {
  EXPECT_EQ(PerServiceDeviceTranslateSm::deviceNameAttr.id, 130);
  EXPECT_EQ(PerServiceDeviceTranslateSm::sdConfigV1Attr.id, 131);
  EXPECT_EQ(PerServiceDeviceTranslateSm::sdConfigV2Attr.id, 132);
  EXPECT_EQ(PerServiceDeviceTranslateSm::policyListAttr.id, 133);
  EXPECT_EQ(PerServiceDeviceTranslateSm::perVrfSmAttr.id, 134);
  EXPECT_EQ(PerServiceDeviceTranslateSm::initializedAttr.id, 138);
}

TEST_F(PerServiceDevice, WalksThenCopiesTheInspectionThenReportsConvergence) {
  fillVrf();
  const Kel::Observer watchV2(
      *v2, [&](AttrId id, const void*) { note("version 2: " + std::to_string(id)); });
  const Kel::Observer watchRecord(
      *record, [&](AttrId id, const void*) { note("record: " + std::to_string(id)); });
  const auto device = makeDevice();
  EXPECT_EQ(noted(), (Lines{"version 2: 259", "version 2: 258", "record: 258"}));
}

TEST_F(PerServiceDevice, FollowsVrfsThatComeAndGo) {
  const auto device = makeDevice();
  record->netVrfNameByVrfIs("red", "net-red");
  EXPECT_EQ(netVrf(), nullptr);
  v1->vrfIs(VrfName("red"));
  EXPECT_NE(netVrf(), nullptr);
  v1->vrfDel(VrfName("red"));
  EXPECT_EQ(netVrf(), nullptr);
  EXPECT_EQ(device->perVrfSm(VrfName("red")), nullptr);
  EXPECT_EQ(live<PerVrfServiceDeviceTranslateSm>(), 0U);
}

TEST_F(PerServiceDevice, TranslatesNoVrfWithoutANetworkVrfName) {
  v1->vrfIs(VrfName("red"));
  v1->vrfIs(VrfName("blue"));
  record->netVrfNameByVrfIs("blue", "");
  const auto device = makeDevice();
  EXPECT_TRUE(v2->netVrf().empty());
  EXPECT_TRUE(device->perVrfSm().empty());
  EXPECT_TRUE(record->serviceDeviceConverge());  // all the same
}

TEST_F(PerServiceDevice, RemovesTheVrfWhoseMappingIsRemoved) {
  fillVrf();
  const auto device = makeDevice();
  record->netVrfNameByVrfDel("red");
  EXPECT_EQ(netVrf(), nullptr);
  EXPECT_EQ(device->perVrfSm(VrfName("red")), nullptr);
  v1->vrfDel(VrfName("red"));
  EXPECT_TRUE(v2->netVrf().empty());
}

TEST_F(PerServiceDevice, RemovesTheVrfWhoseMappingBecomesEmpty) {
  fillVrf();
  const auto device = makeDevice();
  record->netVrfNameByVrfIs("red", "");
  EXPECT_EQ(netVrf(), nullptr);
  EXPECT_EQ(device->perVrfSm(VrfName("red")), nullptr);
}

TEST_F(PerServiceDevice, LeavesAnEntryWithoutAChildToTheWalk) {
  record->netVrfNameByVrfIs("red", "net-red");
  const auto device = makeDevice();
  v2->netVrfIs("net-red")->vrfNameIs(VrfName("red"));
  device->handleVrf("red");
  EXPECT_NE(netVrf(), nullptr);
  device->handleVrf();
  EXPECT_EQ(netVrf(), nullptr);
}

TEST_F(PerServiceDevice, AMappingThatPrecedesItsVrfWaitsForIt) {
  record->netVrfNameByVrfIs("red", "net-red");
  const auto device = makeDevice();
  EXPECT_EQ(netVrf(), nullptr);
  v1->vrfIs(VrfName("red"));
  EXPECT_NE(netVrf(), nullptr);
}

TEST_F(PerServiceDevice, ARenameMakesTheNewEntryRemovesTheOldChildAndEntryThenMakesTheNewChild) {
  fillVrf("red", "A");
  const auto device = makeDevice();
  const auto child = [&] {
    const auto there = device->perVrfSm(VrfName("red"));
    return there ? ", child on " + Kel::textOf(there->netVrfName()) : std::string(", no child");
  };
  const Kel::Observer watchOld(*netVrf("A"),
                               [&](AttrId id, const void*) { note("A: " + std::to_string(id)); });
  const Kel::Observer watch(*v2, [&](AttrId, const void* key) {
    const auto& name = keyOf<Kel::String>(key);
    note(Kel::textOf(name) + (v2->netVrf(name) ? " made" : " deleted") + child());
  });
  record->netVrfNameByVrfIs("red", "B");
  EXPECT_EQ(noted(), (Lines{"B made, child on A", "A: 259", "A deleted, no child"}));
  EXPECT_EQ(device->perVrfSm(VrfName("red"))->vrfConfigV2(), netVrf("B"));
  EXPECT_EQ(netVrf("B")->vrfName(), "red");
  EXPECT_EQ(netVrf("B")->l3Intf().size(), 1U);
  EXPECT_EQ(live<PerVrfServiceDeviceTranslateSm>(), 1U);
}

TEST_F(PerServiceDevice, AddsTheEntryBeforeTheChildAndRemovesItAfter) {
  const auto device = makeDevice();
  const Kel::Observer watch(*v2, [&](AttrId, const void*) {
    note(std::to_string(live<PerVrfServiceDeviceTranslateSm>()) + " children");
  });
  record->netVrfNameByVrfIs("red", "net-red");
  v1->vrfIs(VrfName("red"));
  EXPECT_EQ(noted(), Lines{"0 children"});
  v1->vrfDel(VrfName("red"));
  EXPECT_EQ(noted(), Lines{"0 children"});
}

TEST_F(PerServiceDevice, KeepsAChildThatWasBuiltFromTheSameObjects) {
  fillVrf();
  const auto device = makeDevice();
  const auto child = device->perVrfSm(VrfName("red"));
  record->netVrfNameByVrfIs("red", "net-red");
  device->handleVrf();
  EXPECT_EQ(device->perVrfSm(VrfName("red")), child);
}

TEST_F(PerServiceDevice, ReplacesAChildThatIsToHaveAnotherNetworkVrfName) {
  const auto vrfV1 = fillVrf();
  const auto device = makeDevice();
  const auto before = device->perVrfSm(VrfName("red"));
  const auto child = device->perVrfSmIs(VrfName("red"), "net-other", vrfV1, netVrf());
  EXPECT_NE(child, before);
  EXPECT_EQ(child->netVrfName(), "net-other");
  EXPECT_EQ(device->perVrfSm(VrfName("red")), child);
}

TEST_F(PerServiceDevice, TheWalkDeletesTheEntryOfAVrfThatIsMappedElsewhere) {
  v1->vrfIs(VrfName("red"));
  record->netVrfNameByVrfIs("red", "new");
  v2->netVrfIs("old")->vrfNameIs(VrfName("red"));
  const Kel::Observer watch(*v2, [&](AttrId id, const void* key) {
    if (id == 259) {
      note(Kel::textOf(keyOf<Kel::String>(key)));
    }
  });
  const auto device = makeDevice();
  EXPECT_EQ(noted(), (Lines{"old", "new"}));
  EXPECT_EQ(netVrf("old"), nullptr);
  EXPECT_NE(netVrf("new"), nullptr);
}

TEST_F(PerServiceDevice, TheWalkDeletesEntriesOfUnknownUnmappedAndUnnamedVrfs) {
  v1->vrfIs(VrfName("red"));
  v2->netVrfIs("unknown")->vrfNameIs(VrfName("blue"));
  v2->netVrfIs("unmapped")->vrfNameIs(VrfName("red"));
  v2->netVrfIs("unnamed");
  const auto device = makeDevice();
  EXPECT_TRUE(v2->netVrf().empty());
}

TEST_F(PerServiceDevice, TheWalkLeavesChildrenOfVrfsThatAreGone) {
  fillVrf();
  const auto device = makeDevice();
  device->hasNotificationActiveIs(false);
  v1->vrfDel(VrfName("red"));
  device->handleVrf();
  EXPECT_EQ(netVrf(), nullptr);
  EXPECT_NE(device->perVrfSm(VrfName("red")), nullptr);
}

TEST_F(PerServiceDevice, CopiesTheWholeTrafficInspection) {
  const auto device = makeDevice();
  record->trafficInspectionIs(Vela::TrafficInspection{0xfd});
  EXPECT_EQ(v2->trafficInspection(), Vela::TrafficInspection{0xfd});
  v2->trafficInspectionIs(Vela::TrafficInspection{0x01});
  device->handleTrafficInspection();
  EXPECT_EQ(v2->trafficInspection(), Vela::TrafficInspection{0xfd});
}

TEST_F(PerServiceDevice, HandlesKeysAlsoWhileNotInitialized) {
  fillVrf();
  const auto device = makeDevice();
  device->cleanup();
  EXPECT_FALSE(device->initialized());
  device->handleVrf("red");
  EXPECT_NE(netVrf(), nullptr);
  device->cleanup();
  device->handleVrf();
  EXPECT_NE(netVrf(), nullptr);
  EXPECT_FALSE(device->initialized());
}

TEST_F(PerServiceDevice, CleanupKeepsTheConvergenceFlagAndTheTrafficInspection) {
  fillVrf();
  record->trafficInspectionIs(Vela::TrafficInspection{0x03});
  const auto device = makeDevice();
  v2->netVrfIs("stray");
  device->cleanup();
  EXPECT_TRUE(device->perVrfSm().empty());
  EXPECT_TRUE(v2->netVrf().empty());
  EXPECT_TRUE(record->serviceDeviceConverge());
  EXPECT_EQ(v2->trafficInspection(), Vela::TrafficInspection{0x03});
}

TEST_F(PerServiceDevice, TheConvergenceFlagIsWrittenByHandleInitializedOnlyAndNeverSetBack) {
  fillVrf();
  auto device = makeDevice();
  int writes = 0;
  const Kel::Observer watch(*record, [&](AttrId id, const void*) { writes += id == 258; });
  device->handleVrf();
  device->handleTrafficInspection();
  device->cleanup();
  EXPECT_EQ(writes, 0);
  device->handleInitialized();
  EXPECT_EQ(writes, 1);
  device.reset();
  EXPECT_EQ(writes, 1);
  EXPECT_TRUE(record->serviceDeviceConverge());
}

TEST_F(PerServiceDevice, MarksSwitchesOffAndCleansUpInThisOrderWhenItEnds) {
  fillVrf();
  auto device = makeDevice();
  const auto* const ending = device.get();
  const Kel::Observer watch(*v2, [&](AttrId, const void*) {
    note(std::string("during clean-up: ") + (ending->hasNotificationActive() ? "on" : "off") +
         (ending->kelMarkedForDeletion() ? ", marked" : ", not marked yet"));
  });
  device.reset();
  EXPECT_EQ(noted(), Lines{"during clean-up: off, marked"});
  EXPECT_EQ(v1->publisher().subscriberCount(), 0U);
  EXPECT_EQ(record->publisher().subscriberCount(), 0U);
  EXPECT_EQ(live<PerServiceDeviceTranslateSm>(), 0U);
}

}  // namespace
}  // namespace ServiceDeviceTests
