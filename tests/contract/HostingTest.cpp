// What happens to an agent that does what docs/hosting.md says never to do. That page makes these
// promises in words.
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>

#include "Kel/Kel.h"
#include "policy/VelaPolicyTranslateSm.h"
#include "servicedevice/VelaServiceDeviceTranslateSm.h"

namespace VelaPolicyMonitor {
namespace {

/// An agent with a device, a VRF and one rule.
class Hosting : public ::testing::Test {
 protected:
  Hosting() {
    record->netVrfNameByVrfIs("red", "net-red");
    addRule(20000);
  }

  auto makeRoot() { return policyTranslateRootSmFactory(policyV1, policyV2, status); }
  Brix::Ptr<VelaL3::VelaPolicyConfig> red() {
    return policyV1->policySetIs("fw1")->policyIs(L3::VrfName("red"));
  }
  void addRule(std::uint32_t priority) {
    red()->ruleIs(VelaL3::VelaPriority(priority))->originIs("web");
  }
  /// The rules of version 2; none when it has no policy set.
  std::optional<std::size_t> rulesV2() {
    const auto set = policyV2->policySet("fw1");
    return set ? std::optional(set->policy("net-red")->rule().size()) : std::nullopt;
  }

  const Brix::Ptr<VelaL3::VelaPolicySourceConfig> policyV1 =
      VelaL3::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  const Brix::Ptr<VelaL3V2::VelaPolicySourceConfig> policyV2 =
      VelaL3V2::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  const Brix::Ptr<Status> status = Status::StatusIs();
  const Brix::Ptr<DevicePolicyList> record = status->devicePolicyListIs("fw1");
};

using HostingDeathTest = Hosting;

TEST_F(Hosting, ARootThatReplacesAnotherByAssignmentLeavesVersion2Empty) {
  auto root = makeRoot();
  root = makeRoot();
  EXPECT_EQ(rulesV2(), std::nullopt);
  addRule(21000);
  EXPECT_EQ(rulesV2(), std::nullopt);
}

TEST_F(Hosting, ARootThatIsDroppedBeforeItsSuccessorIsMadeLeavesVersion2Whole) {
  auto root = makeRoot();
  root = nullptr;
  root = makeRoot();
  EXPECT_EQ(rulesV2(), 1U);
}

TEST_F(Hosting, OfTwoRootsOnOneVersion2SourceTheFirstThatGoesEmptiesItForBoth) {
  auto one = makeRoot();
  const auto other = makeRoot();
  one = nullptr;
  EXPECT_EQ(rulesV2(), std::nullopt);
  addRule(21000);
  EXPECT_EQ(rulesV2(), std::nullopt);
}

TEST_F(Hosting, AnEntryOfVersion2ThatTheAgentDeletesIsNotMadeUpForAndItsAnnouncementRaises) {
  const auto root = makeRoot();
  policyV2->policySet("fw1")->policy("net-red")->ruleDel(VelaL3V2::VelaPriority(20000));
  const VelaL3::VelaPriority priority(20000);
  EXPECT_THROW(red()->publisher().publish(VelaL3::VelaPolicyConfig::ruleAttr.id, &priority),
               Kel::ReinstantiationException);
  root->cleanup();
  root->handleInitialized();
  EXPECT_EQ(rulesV2(), 1U);
}

TEST_F(Hosting, ChangesUnderASwitchedOffRootAreMadeUpForByCleanUpAndInitializationAlone) {
  const auto root = makeRoot();
  root->hasNotificationActiveIs(false);
  addRule(21000);
  root->hasNotificationActiveIs(true);
  EXPECT_EQ(rulesV2(), 1U);
  root->handleInitialized();
  EXPECT_EQ(rulesV2(), 1U);
  root->cleanup();
  root->handleInitialized();
  EXPECT_EQ(rulesV2(), 2U);
}

TEST_F(Hosting, ADeviceWhoseRecordComesLaterIsTranslatedWhenItIsAnnounced) {
  policyV1->policySetIs("fw2");
  const auto root = makeRoot();
  status->devicePolicyListIs("fw2");
  EXPECT_FALSE(policyV2->policySet("fw2"));
  const Kel::String device("fw2");
  policyV1->publisher().publish(VelaL3::VelaPolicySourceConfig::policySetAttr.id, &device);
  EXPECT_TRUE(policyV2->policySet("fw2"));
}

TEST_F(Hosting, AnObserverThatThrowsReachesTheWriterAndTheChangeStays) {
  const auto root = makeRoot();
  const Kel::Observer watch(*policyV2->policySet("fw1")->policy("net-red"),
                            [](Kel::AttrId, const void*) { throw std::runtime_error("mine"); });
  EXPECT_THROW(addRule(21000), std::runtime_error);
  EXPECT_EQ(rulesV2(), 2U);
  // It must not be there when the root goes: see the next test.
}

TEST_F(HostingDeathTest, AnObserverThatThrowsInTheServiceDeviceTreeEndsTheProcess) {
  EXPECT_DEATH(
      {
        const auto devicesV1 = VelaL3::ServiceDeviceSourceConfig::ServiceDeviceSourceConfigIs();
        const auto devicesV2 = VelaL3V2::ServiceDeviceSourceConfig::ServiceDeviceSourceConfigIs();
        const auto devices = serviceDeviceTranslateRootSmFactory(devicesV1, devicesV2, status);
        const Kel::Observer watch(
            *devicesV2, [](Kel::AttrId, const void*) { throw std::runtime_error("mine"); });
        devicesV1->serviceDeviceIs("fw1");
      },
      "mine");
}

TEST_F(HostingDeathTest, AnObserverThatThrowsWhileARootGoesEndsTheProcess) {
  EXPECT_DEATH(
      {
        auto root = makeRoot();
        const Kel::Observer watch(
            *policyV2->policySet("fw1")->policy("net-red"),
            [](Kel::AttrId, const void*) { throw std::runtime_error("mine"); });
        root = nullptr;
      },
      "mine");
}

TEST_F(HostingDeathTest, ATooLongVrfNameRaisesInThePolicyTreeAndEndsTheProcessInTheOther) {
  const Kel::String tooLong(std::string(101, 'x'));
  const auto root = makeRoot();
  EXPECT_THROW(record->netVrfNameByVrfIs(tooLong, "net"), Kel::RangeException);
  record->netVrfNameByVrfIs("red", "net-red");
  EXPECT_DEATH(
      {
        const auto devicesV1 = VelaL3::ServiceDeviceSourceConfig::ServiceDeviceSourceConfigIs();
        const auto devicesV2 = VelaL3V2::ServiceDeviceSourceConfig::ServiceDeviceSourceConfigIs();
        devicesV1->serviceDeviceIs("fw1");
        const auto devices = serviceDeviceTranslateRootSmFactory(devicesV1, devicesV2, status);
        record->netVrfNameByVrfIs(tooLong, "net");
      },
      "maxLength");
}

TEST_F(Hosting, AStateMachineThatTheAgentHoldsBeyondItsRootIsSilentAndKeepsWhatItWrote) {
  auto root = makeRoot();
  const auto held = root->perDeviceSm("fw1")->perVrfSm(L3::VrfName("red"));
  root = nullptr;
  addRule(21000);
  EXPECT_EQ(rulesV2(), std::nullopt);
  EXPECT_TRUE(held->policyV2()->rule(VelaL3V2::VelaPriority(20000)));
  EXPECT_FALSE(held->policyV2()->rule(VelaL3V2::VelaPriority(21000)));
}

}  // namespace
}  // namespace VelaPolicyMonitor
