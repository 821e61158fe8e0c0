#include <gmock/gmock.h>

#include "servicedevice/ServiceDeviceTest.h"

namespace ServiceDeviceTests {
namespace {

/// Null where an entity is expected: reading nothing is like reading an empty one, deleting from
/// nothing is nothing, adding to nothing is an assertion with a clear text.
class ServiceDeviceNulls : public ServiceDeviceTest {};

constexpr const char* kNowhere =
    "assertion \"entity != nullptr\" failed: version 2 is to be written, but the state machine was "
    "built without the version-2 entity to write to";

TEST_F(ServiceDeviceNulls, ARootWithoutVersion1EmptiesVersion2) {
  sourceV2->serviceDeviceIs("fw1");
  const auto root =
      VelaPolicyMonitor::serviceDeviceTranslateRootSmFactory(nullptr, sourceV2, status);
  EXPECT_TRUE(root->initialized());
  EXPECT_TRUE(sourceV2->serviceDevice().empty());
  root->handleDevice("fw1");
  root->hasNotificationActiveIs(false);
  root->hasNotificationActiveIs(true);
  EXPECT_TRUE(root->perDeviceSm().empty());
}

TEST_F(ServiceDeviceNulls, ARootWithoutAMonitorRemovesEveryDevice) {
  deviceV1();
  sourceV2->serviceDeviceIs("fw1");
  const auto root =
      VelaPolicyMonitor::serviceDeviceTranslateRootSmFactory(sourceV1, sourceV2, nullptr);
  EXPECT_EQ(root->getPolicyList("fw1"), nullptr);
  EXPECT_TRUE(sourceV2->serviceDevice().empty());
  EXPECT_TRUE(root->perDeviceSm().empty());
}

TEST_F(ServiceDeviceNulls, ARootWithoutVersion2WalksRemovesAndCleansUp) {
  auto root = VelaPolicyMonitor::serviceDeviceTranslateRootSmFactory(sourceV1, nullptr, status);
  root->handleDevice("fw1");
  root->handleDevice();
  root->cleanup();
  root->handleInitialized();
  root.reset();
  EXPECT_EQ(live<ServiceDeviceTranslateRootSm>(), 0U);
}

TEST_F(ServiceDeviceNulls, ARootWithoutAnythingLives) {
  auto root = VelaPolicyMonitor::serviceDeviceTranslateRootSmFactory(nullptr, nullptr, nullptr);
  EXPECT_TRUE(root->initialized());
  root->handleDevice("fw1");
  root.reset();
  EXPECT_EQ(live<ServiceDeviceTranslateRootSm>(), 0U);
}

TEST_F(ServiceDeviceNulls, ADeviceWithoutVersion1HasNoVrfs) {
  const auto v2 = sourceV2->serviceDeviceIs("fw1");
  v2->netVrfIs("net-red")->vrfNameIs(VrfName("red"));
  record->netVrfNameByVrfIs("red", "net-red");
  const auto device =
      VelaPolicyMonitor::perServiceDeviceTranslateSmFactory("fw1", nullptr, v2, record);
  EXPECT_TRUE(v2->netVrf().empty());
  device->handleVrf("red");
  EXPECT_TRUE(v2->netVrf().empty());
  EXPECT_TRUE(record->serviceDeviceConverge());
}

TEST_F(ServiceDeviceNulls, AVrfWithoutVersion1HasNoInterfaces) {
  const auto v2 = sourceV2->serviceDeviceIs("fw1")->netVrfIs("net-red");
  v2->l3IntfIs(IpGenAddr("10.0.0.1"));
  const auto vrf = VelaPolicyMonitor::perVrfServiceDeviceTranslateSmFactory(VrfName("red"),
                                                                            "net-red", nullptr, v2);
  EXPECT_TRUE(v2->l3Intf().empty());
  EXPECT_EQ(v2->vrfName(), "red");
  EXPECT_EQ(v2->timestamp(), 1000.0);
  EXPECT_TRUE(vrf->initComplete());
  v2->l3IntfIs(IpGenAddr("10.0.0.2"));
  vrf->handleL3Intf(IpGenAddr("10.0.0.2"));
  EXPECT_TRUE(v2->l3Intf().empty());
}

TEST_F(ServiceDeviceNulls, AnInterfaceWithoutVersion1HasNoSubnets) {
  const auto v2 = sourceV2->serviceDeviceIs("fw1")->netVrfIs("n")->l3IntfIs(IpGenAddr("10.0.0.1"));
  v2->reachableSubnetIs(IpGenPrefix("10.1.0.0/16"));
  const auto intf = VelaPolicyMonitor::perL3IntfServiceDeviceTranslateSmFactory(
      IpGenAddr("10.0.0.1"), nullptr, v2, nullptr);
  EXPECT_TRUE(v2->reachableSubnet().empty());
  intf->handleSubnet(IpGenPrefix("10.1.0.0/16"));
  EXPECT_TRUE(v2->reachableSubnet().empty());
}

TEST_F(ServiceDeviceNulls, AnInterfaceWithoutVersion2RemovesNothing) {
  const auto v1 = fillVrf()->l3IntfIs(IpGenAddr("10.0.0.2"));
  const auto cookie = VelaPolicyMonitor::updateCookieFactory();
  const auto intf = VelaPolicyMonitor::perL3IntfServiceDeviceTranslateSmFactory(
      IpGenAddr("10.0.0.2"), v1, nullptr, cookie);
  EXPECT_FALSE(cookie->updated());
  intf->handleSubnet(IpGenPrefix("10.1.0.0/16"));
  EXPECT_TRUE(cookie->updated());
}

using ServiceDeviceNullsDeathTest = ServiceDeviceNulls;

TEST_F(ServiceDeviceNullsDeathTest, ARootWithoutVersion2CannotAddADevice) {
  deviceV1();
  EXPECT_DEATH(VelaPolicyMonitor::serviceDeviceTranslateRootSmFactory(sourceV1, nullptr, status),
               testing::AllOf(testing::HasSubstr(kNowhere),
                              testing::HasSubstr("handleDevice(const String&)")));
}

TEST_F(ServiceDeviceNullsDeathTest, ADeviceWithoutVersion2CannotCopyTheTrafficInspection) {
  EXPECT_DEATH(
      VelaPolicyMonitor::perServiceDeviceTranslateSmFactory("fw1", deviceV1(), nullptr, record),
      testing::HasSubstr(kNowhere));
}

TEST_F(ServiceDeviceNullsDeathTest, ADeviceWithoutARecordCannotBe) {
  const char* const why =
      "assertion \"policyList != nullptr\" failed: the state machine of a device was built without "
      "the monitor's record of it";
  const auto v1 = sourceV1->serviceDeviceIs("fw1");
  const auto v2 = sourceV2->serviceDeviceIs("fw1");
  const auto build = [&] {
    VelaPolicyMonitor::perServiceDeviceTranslateSmFactory("fw1", v1, v2, nullptr);
  };
  EXPECT_DEATH(build(), testing::AllOf(testing::HasSubstr(why),
                                       testing::HasSubstr("handleTrafficInspection()")));
  fillVrf();
  EXPECT_DEATH(build(), testing::AllOf(testing::HasSubstr(why),
                                       testing::HasSubstr("handleVrf(const String&)")));
}

TEST_F(ServiceDeviceNullsDeathTest, AVrfWithoutVersion2CannotRecordItsName) {
  EXPECT_DEATH(VelaPolicyMonitor::perVrfServiceDeviceTranslateSmFactory(VrfName("red"), "net-red",
                                                                        fillVrf(), nullptr),
               testing::HasSubstr(kNowhere));
}

TEST_F(ServiceDeviceNullsDeathTest, AnInterfaceWithoutVersion2CannotAddASubnet) {
  const auto v1 = fillVrf()->l3Intf(IpGenAddr("10.0.0.1"));
  EXPECT_DEATH(VelaPolicyMonitor::perL3IntfServiceDeviceTranslateSmFactory(IpGenAddr("10.0.0.1"),
                                                                           v1, nullptr, nullptr),
               testing::HasSubstr(kNowhere));
}

}  // namespace
}  // namespace ServiceDeviceTests
