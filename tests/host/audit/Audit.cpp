#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Kel/System.h"
#include "change/ChangeReader.h"
#include "session/Session.h"
#include "text/SourceText.h"

namespace HostTests {
namespace {

using Host::Difference;
using Kind = Host::Difference::Kind;

/// A session in which version 2 can be tampered with.
class Audit : public testing::Test {
 protected:
  void apply(const std::string& line) {
    const Host::SourceText text("line", line);
    Host::Change change;
    ASSERT_TRUE(reader_.read(text.text(), change).empty()) << line;
    const auto error = session_.apply(change);
    ASSERT_FALSE(error) << *error;
  }
  void start() {
    apply(
        R"({"update":[{"path":"/vela-l3:policy-source","value":{"policy-set":[)"
        R"({"device-name":"fw1","policy":[{"vrf-name":"red","rule":[{"priority":20000,"origin":[)"
        R"({"name":"web","match":{"dst-ip":["10.1.0.0/16"]}}]}]}]}]}},)"
        R"({"path":"/vela-l3:service-device-source","value":{"service-device":[)"
        R"({"device-name":"fw1","vrf":[{"vrf-name":"red","l3-intf":[{"address":"10.0.0.1"}]}]}]}},)"
        R"({"path":"/vela-policy-monitor:status","value":{"device-policy-list":[)"
        R"({"device-name":"fw1","net-vrf-name-by-vrf":[{"vrf-name":"red","net-vrf-name":"n"}]}]}}],)"
        R"("control":"start"})");
  }
  Difference only() const {
    const auto all = session_.audit();
    EXPECT_EQ(all.size(), 1U);
    return all.empty() ? Difference{} : all.front();
  }

  Host::Trees trees_;
  Host::VirtualClock clock_{1};
  Host::Translation translation_{trees_};
  Host::Session session_{trees_, translation_, clock_};
  Host::ChangeReader reader_;
};

TEST_F(Audit, FindsNothingWhereVersion2FollowsVersion1) {
  EXPECT_TRUE(session_.audit().empty());
  start();
  EXPECT_TRUE(session_.audit().empty());
}

TEST_F(Audit, CallsAnEntryThatNothingStandsForForeign) {
  start();
  trees_.policyV2->policySetIs(Vela::DeviceName("x"));
  EXPECT_EQ(only().kind, Kind::foreign);
  EXPECT_EQ(only().path, "/vela-l3v2:policy-source/policy-set[device-name='x']");
  trees_.policyV2->policySetDel(Vela::DeviceName("x"));
  trees_.policyV2->policySet("fw1")->policy("n")->ruleIs(VelaL3V2::VelaPriority(30000));
  EXPECT_EQ(only().kind, Kind::foreign);
  EXPECT_EQ(only().path,
            "/vela-l3v2:policy-source/policy-set[device-name='fw1']"
            "/policy[net-vrf-name='n']/rule[priority='30000']");
}

TEST_F(Audit, CallsWhatIsMissingOrWrongADefect) {
  start();
  const auto rule =
      trees_.policyV2->policySet("fw1")->policy("n")->rule(VelaL3V2::VelaPriority(20000));
  rule->origin("web")->tagsIs("wrong");
  EXPECT_EQ(only().kind, Kind::defect);
  EXPECT_EQ(only().why, R"(version 2 has "wrong", version 1 has "")");
  rule->originDel("web");
  EXPECT_EQ(only().kind, Kind::defect);
  EXPECT_EQ(only().path,
            "/vela-l3:policy-source/policy-set[device-name='fw1']"
            "/policy[vrf-name='red']/rule[priority='20000']/origin[name='web']");
  trees_.policyV2->policySetDelAll();
  trees_.serviceDeviceV2->serviceDevice("fw1")->trafficInspectionIs(Vela::TrafficInspection{2});
  const auto all = session_.audit();
  ASSERT_EQ(all.size(), 2U);
  EXPECT_EQ(all[0].path, "/vela-l3:policy-source/policy-set[device-name='fw1']");
  EXPECT_EQ(all[0].kind, Kind::defect);
  EXPECT_EQ(all[1].why, R"(version 2 has "unified", the monitor's record "")");
}

TEST_F(Audit, NamesTheKeysOfARecordThatIsMissing) {
  start();
  apply(R"({"update":[{"path":"/vela-l3:policy-source/policy-set[device-name='a\\:b_HAPair']",)"
        R"("value":{}}]})");
  EXPECT_EQ(only().kind, Kind::pending);
  EXPECT_EQ(only().why, R"(the monitor has no record for this device: looked for "a::" and "b::")");
  apply(R"({"update":[{"path":"/vela-policy-monitor:status/device-policy-list[device-name='b::']",)"
        R"("value":{}}]})");
  EXPECT_EQ(only().kind, Kind::pending);
  EXPECT_THAT(only().why, testing::HasSubstr("when the device is announced the next time"));
  apply(R"({"notify":["/vela-l3:policy-source/policy-set[device-name='a\\:b_HAPair']"]})");
  EXPECT_TRUE(session_.audit().empty());
}

TEST_F(Audit, NamesAVrfWithoutANetworkVrfName) {
  start();
  apply(R"({"update":[{"path":"/vela-l3:policy-source/policy-set[device-name=fw1]/policy",)"
        R"("value":[{"vrf-name":"blue"}]}]})");
  EXPECT_EQ(only().kind, Kind::pending);
  EXPECT_EQ(only().why, R"(the monitor's record "fw1" has no network VRF name for this VRF)");
  apply(R"({"update":[{"path":"/vela-policy-monitor:status/device-policy-list[device-name=fw1])"
        R"(/net-vrf-name-by-vrf[vrf-name=blue]","value":{}}]})");
  EXPECT_EQ(only().why, R"(the monitor's record "fw1" has an empty network VRF name for this VRF)");
}

TEST_F(Audit, KnowsTheMatchThatOutlivesItsSource) {
  start();
  apply(R"({"delete":["/vela-l3:policy-source/policy-set[device-name=fw1]/policy[vrf-name=red])"
        R"(/rule[priority=20000]/origin[name=web]/match"]})");
  EXPECT_EQ(only().kind, Kind::asDesigned);
  EXPECT_THAT(only().why, testing::HasSubstr("outlives"));
}

TEST_F(Audit, KnowsABurstThatWasNotSignalled) {
  start();
  apply(R"({"update":[{"path":"/vela-l3:policy-source/policy-set[device-name=fw1])"
        R"(/policy[vrf-name=red]/rule[priority=20001]","value":{}}],"signal":false})");
  EXPECT_EQ(only().kind, Kind::pending);
  EXPECT_THAT(only().why, testing::HasSubstr("not signalled yet"));
  apply(R"({"update":[{"path":"/vela-l3:policy-source/policy-set[device-name=fw1])"
        R"(/policy[vrf-name=red]/timestamp","value":"2"}],"signal":false})");
  EXPECT_TRUE(session_.audit().empty());
}

TEST_F(Audit, KnowsThatRule10000NeverMovesTheTimestamp) {
  start();
  apply(R"({"time":2,"update":[{"path":"/vela-l3:policy-source/policy-set[device-name=fw1])"
        R"(/policy[vrf-name=red]/rule[priority=10000]/origin[name=a]","value":{}}]})");
  EXPECT_TRUE(session_.audit().empty());
  apply(R"({"time":3,"update":[{"path":"/vela-l3:policy-source/policy-set[device-name=fw1])"
        R"(/policy[vrf-name=red]/rule[priority=10000]/origin[name=a]/tags","value":"x"}]})");
  EXPECT_EQ(only().kind, Kind::asDesigned);
  EXPECT_THAT(only().why, testing::HasSubstr("rule 10000"));
}

TEST_F(Audit, KnowsThatTheEntryOfADeletedRecordStays) {
  start();
  apply(R"({"delete":["/vela-policy-monitor:status/device-policy-list[device-name=fw1]"]})");
  const auto all = session_.audit();
  ASSERT_EQ(all.size(), 2U);
  EXPECT_EQ(all[0].kind, Kind::asDesigned);
  EXPECT_EQ(all[1].kind, Kind::asDesigned);
}

}  // namespace
}  // namespace HostTests
