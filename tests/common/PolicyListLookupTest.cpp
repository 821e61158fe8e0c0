#include <gtest/gtest.h>

#include <string>

#include "common/PolicyListLookup.h"

namespace {

using VelaPolicyMonitor::policyListOf;
using VelaPolicyMonitor::Status;

class PolicyListLookup : public testing::Test {
 protected:
  void recordsAre(std::initializer_list<const char*> names) const {
    for (const char* const name : names) {
      status->devicePolicyListIs(name);
    }
  }
  /// The name of the record that serves `device`; "(none)" when there is none.
  std::string served(const char* device) const {
    const auto record = policyListOf(status, device);
    return record ? Kel::textOf(record->deviceName()) : "(none)";
  }
  Brix::Ptr<Status> status = Status::StatusIs();
};

TEST_F(PolicyListLookup, APlainDeviceIsServedByTheRecordOfItsName) {
  recordsAre({"fw1", "fw1:red", ""});
  EXPECT_EQ(served("fw1"), "fw1");
  EXPECT_EQ(served("fw1:red"), "fw1:red");
  EXPECT_EQ(served("fw2"), "(none)");
  EXPECT_EQ(served(""), "");
}

TEST_F(PolicyListLookup, APlainDeviceIsLookedUpAsItStandsNotEncodedAgain) {
  recordsAre({"fw\\1", "fw1"});
  EXPECT_EQ(served("fw\\1"), "fw\\1");  // encoding the decoded name would give fw1
  status->devicePolicyListDel("fw\\1");
  EXPECT_EQ(served("fw\\1"), "(none)");
}

TEST_F(PolicyListLookup, APairIsServedByItsFirstMemberWhenBothHaveRecords) {
  recordsAre({"fwB::", "fwA::"});
  EXPECT_EQ(served("fwA\\:fwB_HAPair"), "fwA::");
}

TEST_F(PolicyListLookup, APairIsServedByItsSecondMemberWhenTheFirstHasNoRecord) {
  recordsAre({"fwB::"});
  EXPECT_EQ(served("fwA\\:fwB_HAPair"), "fwB::");
}

TEST_F(PolicyListLookup, APairIsNeverServedByARecordOfItsOwnName) {
  recordsAre({"fwA\\:fwB_HAPair", "fwA:fwB_HAPair", "fwA\\:fwB_HAPair::", "fwA", "fwB"});
  EXPECT_EQ(served("fwA\\:fwB_HAPair"), "(none)");
}

TEST_F(PolicyListLookup, ComponentsOneAndTwoAreCarriedAlong) {
  recordsAre({"fwA:red:blue", "fwB:red:", "fwB::"});
  EXPECT_EQ(served("fwA\\:fwB_HAPair:red:blue"), "fwA:red:blue");
  EXPECT_EQ(served("fwA\\:fwB_HAPair:red"), "fwB:red:");
  EXPECT_EQ(served("fwA\\:fwB_HAPair:green"), "(none)");
}

TEST_F(PolicyListLookup, ComponentsAfterTheThirdAreDropped) {
  recordsAre({"fwA:red:blue"});
  EXPECT_EQ(served("fwA\\:fwB_HAPair:red:blue:green"), "fwA:red:blue");
}

TEST_F(PolicyListLookup, ComponentsAreEscapedAgain) {
  recordsAre({"fw\\:A:r\\\\d:"});
  EXPECT_EQ(served("fw\\\\\\:A\\:fwB_HAPair:r\\\\d"), "fw\\:A:r\\\\d:");
}

TEST_F(PolicyListLookup, AnUnescapedPairIdIsAPlainDevice) {
  recordsAre({"fwA:fwB_HAPair", "fwA::", "fwB::"});
  EXPECT_EQ(served("fwA:fwB_HAPair"), "fwA:fwB_HAPair");
  status->devicePolicyListDel("fwA:fwB_HAPair");
  EXPECT_EQ(served("fwA:fwB_HAPair"), "(none)");
}

TEST_F(PolicyListLookup, APairIdOfOneNameTriesThatNameAndThenTheEmptyOne) {
  recordsAre({"::"});
  EXPECT_EQ(served("x_HAPair"), "::");
  recordsAre({"x::"});
  EXPECT_EQ(served("x_HAPair"), "x::");
}

TEST_F(PolicyListLookup, TheMarkerAloneHasEmptyMembers) {
  EXPECT_EQ(served("_HAPair"), "(none)");
  recordsAre({"_HAPair", "::"});
  EXPECT_EQ(served("_HAPair"), "::");
}

TEST_F(PolicyListLookup, AMarkerInALaterComponentMakesNoPair) {
  recordsAre({"fw1:x_HAPair"});
  EXPECT_EQ(served("fw1:x_HAPair"), "fw1:x_HAPair");
}

TEST_F(PolicyListLookup, ReadsRecordsAndNeverMakesOne) {
  served("fw1");
  served("fwA\\:fwB_HAPair");
  EXPECT_TRUE(status->devicePolicyList().empty());
}

TEST_F(PolicyListLookup, WithoutAMonitorThereIsNoRecord) {
  EXPECT_EQ(policyListOf(nullptr, "fw1"), nullptr);
  EXPECT_EQ(policyListOf(nullptr, "fwA\\:fwB_HAPair"), nullptr);
}

}  // namespace
