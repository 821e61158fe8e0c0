#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Kel/Kel.h"
#include "monitor/Status.h"

namespace {

using VelaPolicyMonitor::DevicePolicyList;
using VelaPolicyMonitor::Status;
using Lines = std::vector<std::string>;

class MonitorRecord : public testing::Test {
 protected:
  Lines take() { return std::exchange(told, {}); }
  Brix::Ptr<Status> status = Status::StatusIs();
  Brix::Ptr<DevicePolicyList> record = status->devicePolicyListIs("fw1");
  Lines told;
  const Kel::Observer watch{*record, [this](Kel::AttrId id, const void* key) {
                              told.push_back(std::to_string(id));
                              if (key != nullptr) {
                                const auto& name = *static_cast<const Kel::String*>(key);
                                told.back() += " " + Kel::textOf(name) + "=" +
                                               Kel::textOf(record->netVrfNameByVrf(name));
                              }
                            }};
};

TEST(MonitorStatus, MakesOneRecordPerDeviceAndNotifiesWhenItComesAndGoes) {
  const auto status = Status::StatusIs();
  std::vector<int> ids;
  const Kel::Observer watch(*status, [&](Kel::AttrId id, const void*) { ids.push_back(id); });
  const auto record = status->devicePolicyListIs("fw1");
  EXPECT_EQ(status->devicePolicyListIs("fw1"), record);
  EXPECT_EQ(ids, std::vector<int>{257});
  status->devicePolicyListDel("fw1");
  status->devicePolicyListDel("fw1");
  EXPECT_EQ(ids, (std::vector<int>{257, 257}));
}

TEST_F(MonitorRecord, IdsAreThoseThatAgentsBuildAgainst) {
  EXPECT_EQ(DevicePolicyList::policyConvergeAttr.id, 257);
  EXPECT_EQ(DevicePolicyList::serviceDeviceConvergeAttr.id, 258);
  EXPECT_EQ(DevicePolicyList::netVrfNameByVrfAttr.id, 259);
  EXPECT_EQ(DevicePolicyList::trafficInspectionAttr.id, 260);
}

TEST_F(MonitorRecord, StartsUnconvergedWithoutMappingsAndInspection) {
  EXPECT_EQ(record->deviceName(), "fw1");
  EXPECT_FALSE(record->policyConverge());
  EXPECT_FALSE(record->serviceDeviceConverge());
  EXPECT_TRUE(record->netVrfNameByVrf().empty());
  EXPECT_EQ(record->trafficInspection(), Vela::TrafficInspection{});
}

TEST_F(MonitorRecord, AnAbsentMappingReadsAsTheEmptyTextAndIsNotMade) {
  EXPECT_EQ(record->netVrfNameByVrf("red"), "");
  EXPECT_EQ(record->netVrfNameByVrf().size(), 0U);
}

TEST_F(MonitorRecord, MappingsNotifyWithTheirKeyAfterTheChangeAlsoOfAnEqualValue) {
  record->netVrfNameByVrfIs("red", "net-red");
  record->netVrfNameByVrfIs("red", "net-red");
  EXPECT_EQ(take(), (Lines{"259 red=net-red", "259 red=net-red"}));
  record->netVrfNameByVrfDel("red");
  record->netVrfNameByVrfDel("red");
  EXPECT_EQ(take(), Lines{"259 red="});
}

TEST_F(MonitorRecord, RemovingAllMappingsNotifiesOncePerKeyInTheirOrder) {
  record->netVrfNameByVrfIs("b", "2");
  record->netVrfNameByVrfIs("a", "1");
  take();
  record->netVrfNameByVrfDelAll();
  EXPECT_EQ(take(), (Lines{"259 a=", "259 b="}));
}

TEST_F(MonitorRecord, MappingsAreWalkedInTheOrderOfTheirKeys) {
  for (const char* const name : {"b", "\xc3\xa9", "a", "B", ""}) {
    record->netVrfNameByVrfIs(name, "n");
  }
  Lines walked;
  for (const auto& [vrf, netVrf] : record->netVrfNameByVrf()) {
    walked.push_back(Kel::textOf(vrf));
  }
  EXPECT_EQ(walked, (Lines{"", "B", "a", "b", "\xc3\xa9"}));
}

TEST_F(MonitorRecord, FlagsAndInspectionNotifyAlsoOfAnEqualValue) {
  record->policyConvergeIs(true);
  record->policyConvergeIs(true);
  record->serviceDeviceConvergeIs(false);
  record->trafficInspectionIs(Vela::TrafficInspection{0x02});
  EXPECT_EQ(take(), (Lines{"257", "257", "258", "260"}));
  EXPECT_TRUE(record->trafficInspection().unified());
  EXPECT_FALSE(record->trafficInspection().local());
}

TEST_F(MonitorRecord, IsDescribedInTheMonitorsModule) {
  EXPECT_STREQ(record->fwkType().descriptor().name, "VelaPolicyMonitor::DevicePolicyList");
  EXPECT_STREQ(status->fwkType().descriptor().name, "VelaPolicyMonitor::Status");
  EXPECT_EQ(record->fwkType().module, status->fwkType().module);
  EXPECT_EQ(record->fwkType().index, 1);
  EXPECT_EQ(status->fwkType().index, 0);
}

TEST(MonitorRecords, OneCanBeMadeByItselfAndIsSwitchedOn) {
  const auto record = VelaPolicyMonitor::DevicePolicyList::DevicePolicyListIs("fw1");
  EXPECT_EQ(record->deviceName(), "fw1");
  EXPECT_TRUE(record->hasNotificationActive());
}

}  // namespace
