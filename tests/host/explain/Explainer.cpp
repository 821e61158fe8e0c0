#include "explain/Explainer.h"

#include <gtest/gtest.h>

#include <functional>
#include <ostream>

#include "change/ChangeReader.h"
#include "change/PathReader.h"
#include "session/Session.h"
#include "text/SourceText.h"

namespace HostTests {
namespace {

const std::string kDevice = "/vela-l3:policy-source/policy-set[device-name='fw1']";
const std::string kRed = kDevice + "/policy[vrf-name='red']";
const std::string kRule = kRed + "/rule[priority='20000']";
const std::string kOrigin = kRule + "/origin[name='web']";
const std::string kMatch = kOrigin + "/match";
const std::string kDevice2 = "/vela-l3v2:policy-source/policy-set[device-name='fw1']";
const std::string kRed2 = kDevice2 + "/policy[net-vrf-name='net-red']";
const std::string kServices = "/vela-l3:service-device-source/service-device[device-name='fw1']";
const std::string kServices2 = "/vela-l3v2:service-device-source/service-device[device-name='fw1']";
const std::string kRecord = "/vela-policy-monitor:status/device-policy-list[device-name='fw1']";
const std::string kMapping = kRecord + "/net-vrf-name-by-vrf[vrf-name='red']";

std::string update(const std::string& path, const std::string& value) {
  return R"({"update":[{"path":")" + path + R"(","value":)" + value + "}]}";
}
std::string erase(const std::string& path) { return R"({"delete":[")" + path + "\"]}"; }

/// What a case needs: a session on one device "fw1" with the VRF "red", whose rule has one origin.
struct World {
  Host::Trees trees;
  Host::VirtualClock clock{12.5};
  Host::Translation translation{trees};
  Host::Session session{trees, translation, clock};
  Host::ChangeReader reader;

  World() {
    apply(update(kRecord,
                 R"({"net-vrf-name-by-vrf":[{"vrf-name":"red","net-vrf-name":"net-red"}]})"));
    apply(update(kOrigin, R"({"action":"drop","match":{"dst-ip":["10.1.0.0/16"]}})"));
    apply(update(kServices, R"({"vrf":[{"vrf-name":"red","l3-intf":[{"address":"10.0.0.1"}]}]})"));
    translation.start();
  }
  void apply(const std::string& line) {
    Host::Change change;
    const std::string padded = line + std::string(Host::SourceText::kPadding, '\0');
    const auto faults = reader.read(std::string_view(padded).substr(0, line.size()), change);
    ASSERT_TRUE(faults.empty()) << line << "\n" << faults.front().message;
    const auto error = session.apply(change);
    EXPECT_FALSE(error) << line << "\n" << error.value_or("");
  }
  static Host::TreePath pathOf(const std::string& text) {
    Host::PathReader paths(Host::Content::everything);
    Host::TreePath path;
    EXPECT_TRUE(paths.read(text, path)) << text << ": " << paths.why();
    return path;
  }
  Host::Explanation explain(const std::string& path) const {
    return Host::Explainer(trees, translation, session.history()).explain(pathOf(path));
  }
  VelaL3V2::VelaPolicySetConfig& set2() const {
    return *trees.policyV2->policySet(Vela::DeviceName("fw1"));
  }
};

struct Case {
  const char* name;
  std::vector<std::string> lines;
  std::string path;
  bool inVersion2;
  std::string verdict;
  std::string remedy;
  /// Whether it is in version 2, with nothing missing, once every remedy that is given was applied.
  bool helped = true;
  std::function<void(World&)> meddle = {};
};

void PrintTo(const Case& each, std::ostream* out) { *out << each.name; }

std::vector<Case> cases() {
  return {
      {"EntryThatIsThere",
       {},
       kRule,
       true,
       R"(is in version 2: version 1 has it, and the monitor's record "fw1" calls VRF "red" "net-red")",
       "",
       true},
      {"MemberThatIsThere",
       {},
       kMatch + "/dst-ip[.='10.1.0.0/16']",
       true,
       R"(is in version 2: version 1 has it, and the monitor's record "fw1" calls VRF "red" "net-red")",
       "",
       true},
      {"LeafThatIsThere",
       {},
       kOrigin + "/action",
       true,
       R"(is in version 2: version 1 has it, and the monitor's record "fw1" calls VRF "red" "net-red")",
       "",
       true},
      {"DeviceThatIsThere",
       {},
       kDevice,
       true,
       R"(is in version 2: version 1 has it, and the monitor's record "fw1" serves the device)",
       "",
       true},
      {"EntryOfVersion2ThatIsThere",
       {},
       kRed2 + "/rule[priority='20000']/origin[name='web']/match",
       true,
       R"(is in version 2: version 1 has it, and the monitor's record "fw1" calls VRF "red" "net-red")",
       "",
       true},
      {"LeafOfVersion2WithAnotherName",
       {},
       kRed2 + "/rule[priority='20000']/origin[name='web']/log-enabled",
       true,
       R"(is in version 2: version 1 has it, and the monitor's record "fw1" calls VRF "red" "net-red")",
       "",
       true},
      {"VrfNameOfVersion2",
       {},
       kServices2 + "/net-vrf[net-vrf-name='net-red']/vrf-name",
       true,
       R"(is in version 2: version 1 has it, and the monitor's record "fw1" calls VRF "red" "net-red")",
       "",
       true},
      {"InspectionOfVersion2",
       {},
       kServices2 + "/traffic-inspection",
       true,
       R"(is in version 2: version 1 has it, and the monitor's record "fw1" serves the device)",
       "",
       true},
      {"InterfaceThatIsThere",
       {},
       kServices + "/vrf[vrf-name='red']/l3-intf[address='10.0.0.1']",
       true,
       R"(is in version 2: version 1 has it, and the monitor's record "fw1" calls VRF "red" "net-red")",
       "",
       true},
      {"Timestamp",
       {},
       kRed + "/timestamp",
       true,
       R"(is in version 2: version 1 has it, and the monitor's record "fw1" calls VRF "red" "net-red")",
       "",
       true},
      {"TreeThatDoesNotRun",
       {std::string(R"({"control":"stop","tree":"policy"})")},
       kRule,
       false,
       "is not in version 2: the policy tree is not running",
       R"({"control":"start","tree":"policy"})",
       true},
      {"TreeThatWasCleanedUp",
       {std::string(R"({"control":"cleanup","tree":"service-device"})")},
       kServices,
       false,
       "is not in version 2: the service-device tree was cleaned up and not initialized since",
       R"({"control":"initialize","tree":"service-device"})",
       true},
      {"SuspendedTree",
       {std::string(R"({"control":"suspend"})")},
       kRule,
       true,
       "is in version 2, but the policy tree is suspended: it does not follow what changes",
       R"({"control":"resume","tree":"policy"})",
       true},
      {"MissedWhileSuspended",
       {std::string(R"({"control":"suspend"})"), update(kRed + "/rule[priority='10001']", R"({})")},
       kRed + "/rule[priority='10001']",
       false,
       "is not in version 2: the policy tree is suspended: it does not follow what changes",
       R"({"control":"resume","tree":"policy"})",
       true},
      {"MissedWhileSuspendedAndResumed",
       {std::string(R"({"control":"suspend"})"), update(kMatch + "/l3-app", R"([6])"),
        std::string(R"({"control":"resume"})")},
       kMatch + "/l3-app[.='6']",
       false,
       R"(is not in version 2: l3-app "6" is missing there)",
       R"({"notify":["/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']/rule[priority='20000']/origin[name='web']/match/l3-app[.='6']"]})",
       true},
      {"LeafMissedWhileSuspended",
       {std::string(R"({"control":"suspend"})"), update(kOrigin + "/action", R"("redirect")"),
        std::string(R"({"control":"resume"})")},
       kOrigin + "/action",
       true,
       R"(is in version 2, but it has "drop" there, and "redirect" is due)",
       R"({"notify":["/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']/rule[priority='20000']/origin[name='web']/action"]})",
       true},
      {"RecordThatIsMissing",
       {update("/vela-l3:policy-source/policy-set[device-name='fw9']/policy[vrf-name='red']",
               R"({})")},
       "/vela-l3:policy-source/policy-set[device-name='fw9']/policy[vrf-name='red']",
       false,
       R"(is not in version 2: the monitor has no record for device "fw9" (looked for "fw9"))",
       R"({"update":[{"path":"/vela-policy-monitor:status/device-policy-list[device-name='fw9']","value":{}}],"notify":["/vela-l3:policy-source/policy-set[device-name='fw9']"]})",
       true},
      {"RecordThatIsGone",
       {erase(kRecord)},
       kRule,
       true,
       R"(is in version 2, but the monitor has no record for device "fw1" (looked for "fw1"))",
       R"({"update":[{"path":"/vela-policy-monitor:status/device-policy-list[device-name='fw1']","value":{}}],"notify":["/vela-l3:policy-source/policy-set[device-name='fw1']"]})",
       true},
      {"RecordThatCameAfterItsDevice",
       {update("/vela-l3:policy-source/policy-set[device-name='fw9']", R"({})"),
        update("/vela-policy-monitor:status/device-policy-list[device-name='fw9']", R"({})")},
       "/vela-l3:policy-source/policy-set[device-name='fw9']",
       false,
       "is not in version 2: no state machine (perDeviceSm) has taken it up; one does when it is "
       "announced",
       R"({"notify":["/vela-l3:policy-source/policy-set[device-name='fw9']"]})",
       true},
      {"RecordThatWasReplaced",
       {R"({"delete":[")" + kRecord + R"("],"update":[{"path":")" + kRecord +
        R"(","value":{"net-vrf-name-by-vrf":[{"vrf-name":"red","net-vrf-name":"net-red"}]}}]})"},
       kRule,
       true,
       "is in version 2, but the state machine perDeviceSm follows another record than the one "
       "that is there now, until the device is announced",
       R"({"notify":["/vela-l3:policy-source/policy-set[device-name='fw1']"]})",
       true},
      {"PairWithoutARecord",
       {update("/vela-l3:policy-source/policy-set[device-name='fwA\\\\:fwB_HAPair']", R"({})")},
       "/vela-l3:policy-source/policy-set[device-name='fwA\\:fwB_HAPair']",
       false,
       R"(is not in version 2: the monitor has no record for device "fwA\:fwB_HAPair" (looked for "fwA::" and "fwB::"))",
       R"({"update":[{"path":"/vela-policy-monitor:status/device-policy-list[device-name='fwA::']","value":{}}],"notify":["/vela-l3:policy-source/policy-set[device-name='fwA\\:fwB_HAPair']"]})",
       true},
      {"PairServedByItsSecondMember",
       {update("/vela-policy-monitor:status/device-policy-list[device-name='fwB::']", R"({})"),
        update("/vela-l3:policy-source/policy-set[device-name='fwA\\\\:fwB_HAPair']", R"({})")},
       "/vela-l3:policy-source/policy-set[device-name='fwA\\:fwB_HAPair']",
       true,
       R"(is in version 2: version 1 has it, and the monitor's record "fwB::" serves the device)",
       "",
       true},
      {"MappingThatIsMissing",
       {update(kDevice + "/policy[vrf-name='blue']", R"({})")},
       kDevice + "/policy[vrf-name='blue']",
       false,
       R"(is not in version 2: the monitor's record "fw1" has no network VRF name for VRF "blue"; the name in the remedy is a proposal)",
       R"({"update":[{"path":"/vela-policy-monitor:status/device-policy-list[device-name='fw1']/net-vrf-name-by-vrf[vrf-name='blue']","value":{"net-vrf-name":"blue"}}]})",
       true},
      {"MappingThatWasDeleted",
       {erase(kMapping)},
       kMatch,
       false,
       R"(is not in version 2: the monitor's record "fw1" has no network VRF name for VRF "red"; the name in the remedy is a proposal)",
       R"({"update":[{"path":"/vela-policy-monitor:status/device-policy-list[device-name='fw1']/net-vrf-name-by-vrf[vrf-name='red']","value":{"net-vrf-name":"red"}}]})",
       true},
      {"MappingThatIsEmpty",
       {update(kMapping, R"({"net-vrf-name":""})")},
       kRed + "/timestamp",
       false,
       R"(is not in version 2: the monitor's record "fw1" has an empty network VRF name for VRF "red"; the name in the remedy is a proposal)",
       R"({"update":[{"path":"/vela-policy-monitor:status/device-policy-list[device-name='fw1']/net-vrf-name-by-vrf[vrf-name='red']","value":{"net-vrf-name":"red"}}]})",
       true},
      {"MappingThatAnotherRecordHas",
       {update(kDevice + "/policy[vrf-name='blue']", R"({})"),
        update("/vela-policy-monitor:status/device-policy-list[device-name='fw2']",
               R"({"net-vrf-name-by-vrf":[{"vrf-name":"blue","net-vrf-name":"net-blue"}]})")},
       kDevice + "/policy[vrf-name='blue']",
       false,
       R"(is not in version 2: the monitor's record "fw1" has no network VRF name for VRF "blue"; the name in the remedy is a proposal)",
       R"({"update":[{"path":"/vela-policy-monitor:status/device-policy-list[device-name='fw1']/net-vrf-name-by-vrf[vrf-name='blue']","value":{"net-vrf-name":"net-blue"}}]})",
       true},
      {"MappingThatIsShared",
       {update(kDevice + "/policy[vrf-name='blue']/rule[priority='10001']", R"({})"),
        update(kRecord + "/net-vrf-name-by-vrf[vrf-name='blue']", R"({"net-vrf-name":"net-red"})")},
       kRule,
       false,
       R"(is not in version 2: the monitor's record "fw1" calls VRF "red" "net-red", and "blue" as well: one entry of version 2 cannot show more than one VRF)",
       "",
       false},
      {"EntryThatWentWithAnotherVrf",
       {update(kDevice + "/policy[vrf-name='blue']", R"({})"),
        update(kRecord + "/net-vrf-name-by-vrf[vrf-name='blue']", R"({"net-vrf-name":"net-red"})"),
        erase(kDevice + "/policy[vrf-name='blue']")},
       kRule,
       false,
       R"(is not in version 2: policy "net-red" is missing there: another VRF that had this name has taken it along)",
       R"({"notify":["/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']"]})",
       true},
      {"MappingThatChangedWhileSuspended",
       {std::string(R"({"control":"suspend"})"), update(kMapping, R"({"net-vrf-name":"net-new"})"),
        std::string(R"({"control":"resume"})")},
       kRed2,
       true,
       R"(is in version 2, but the monitor's record "fw1" calls VRF "red" "net-new" now; its state machine has not followed)",
       R"({"notify":["/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']"]})",
       false},
      {"NewNameOfASuspendedTree",
       {std::string(R"({"control":"suspend"})"), update(kMapping, R"({"net-vrf-name":"net-new"})"),
        std::string(R"({"control":"resume"})")},
       kRed,
       false,
       R"(is not in version 2: policy "net-new" is missing there)",
       R"({"notify":["/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']"]})",
       true},
      {"DeviceThatVersion1DoesNotHave",
       {},
       "/vela-l3:policy-source/policy-set[device-name='fw2']",
       false,
       R"(is not in version 2: version 1 has no policy-set "fw2")",
       R"({"update":[{"path":"/vela-l3:policy-source/policy-set[device-name='fw2']","value":{}}]})",
       true},
      {"RuleThatVersion1DoesNotHave",
       {},
       kRed + "/rule[priority='20001']",
       false,
       R"(is not in version 2: version 1 has no rule "20001")",
       R"({"update":[{"path":"/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']/rule[priority='20001']","value":{}}]})",
       true},
      {"MemberThatVersion1DoesNotHave",
       {},
       kMatch + "/dst-ip[.='10.2.0.0/16']",
       false,
       R"(is not in version 2: version 1 has no dst-ip "10.2.0.0/16")",
       R"({"update":[{"path":"/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']/rule[priority='20000']/origin[name='web']/match/dst-ip[.='10.2.0.0/16']"}]})",
       true},
      {"MatchThatOutlivesVersion1",
       {erase(kMatch)},
       kMatch,
       true,
       "is in version 2, but version 1 has no match any more; that of version 2 outlives it until "
       "its origin goes",
       "",
       false},
      {"WhatIsNotTranslated",
       {update(kMatch, R"({"src-l4-app":[{"port":80,"protocol":6}]})")},
       kMatch + "/src-l4-app[port='80'][protocol='6']",
       false,
       "is not in version 2: version 2 has no src-l4-app: it is not translated",
       "",
       false},
      {"NameThatNoVrfHas",
       {},
       kDevice2 + "/policy[net-vrf-name='net-x']",
       false,
       R"(is not in version 2: no VRF of device "fw1" is called "net-x" in the network)",
       "",
       false},
      {"EntryOfVersion2ThatNobodyOwns",
       {},
       kDevice2 + "/policy[net-vrf-name='net-x']",
       true,
       R"(is in version 2, but no VRF of device "fw1" is called "net-x" in the network; it is foreign, and goes when the tree is cleaned up and initialized)",
       "",
       false,
       [](World& world) { world.set2().policyIs("net-x"); }},
      {"DeviceOfVersion2ThatNobodyOwns",
       {},
       "/vela-l3v2:policy-source/policy-set[device-name='fw9']/policy[net-vrf-name='n']",
       true,
       R"(is in version 2, but version 1 has no policy-set "fw9"; it is foreign, and goes when the tree is cleaned up and initialized)",
       "",
       false,
       [](World& world) {
         world.trees.policyV2->policySetIs(Vela::DeviceName("fw9"))->policyIs("n");
       }},
      {"LeafThatSomebodyElseWrote",
       {},
       kOrigin + "/action",
       true,
       R"(is in version 2, but it has "forward" there, and "drop" is due)",
       R"({"notify":["/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']/rule[priority='20000']/origin[name='web']/action"]})",
       true,
       [](World& world) {
         world.set2()
             .policy("net-red")
             ->rule(VelaL3V2::VelaPriority(20000))
             ->origin("web")
             ->actionIs(VelaL3V2::VelaAction::forward);
       }},
      {"RuleThatSomebodyElseDeleted",
       {},
       kRule,
       false,
       R"(is not in version 2: rule "20000" is missing there, although its state machine lives; clean the tree up and initialize it)",
       "",
       false,
       [](World& world) {
         world.set2().policy("net-red")->ruleDel(VelaL3V2::VelaPriority(20000));
       }},
      {"PolicyThatSomebodyElseReplaced",
       {},
       kRule,
       false,
       "is not in version 2: the state machine perVrfSm writes to an entry that is in version 2 no "
       "more",
       R"({"notify":["/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']"]})",
       true,
       [](World& world) {
         world.set2().policyDel("net-red");
         world.set2().policyIs("net-red");
       }},
      {"PolicyThatSomebodyElseDeleted",
       {},
       kRule,
       false,
       R"(is not in version 2: policy "net-red" is missing there)",
       R"({"notify":["/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']"]})",
       true,
       [](World& world) { world.set2().policyDel("net-red"); }},
      {"DeviceThatSomebodyElseDeleted",
       {},
       kDevice,
       false,
       R"(is not in version 2: policy-set "fw1" is missing there)",
       R"({"notify":["/vela-l3:policy-source/policy-set[device-name='fw1']"]})",
       true,
       [](World& world) { world.trees.policyV2->policySetDel(Vela::DeviceName("fw1")); }},
  };
}

std::string nameOf(const testing::TestParamInfo<Case>& info) { return info.param.name; }

class ExplainedCase : public testing::TestWithParam<Case> {};

TEST_P(ExplainedCase, HasItsReasonAndTheLineThatHelps) {
  World world;
  for (const std::string& line : GetParam().lines) {
    ASSERT_NO_FATAL_FAILURE(world.apply(line));
  }
  if (GetParam().meddle) {
    GetParam().meddle(world);
  }
  Host::Explanation said = world.explain(GetParam().path);
  EXPECT_EQ(said.path, GetParam().path);
  EXPECT_EQ(said.inVersion2, GetParam().inVersion2);
  EXPECT_EQ(said.verdict, GetParam().verdict);
  EXPECT_EQ(said.remedy, GetParam().remedy);
  for (int i = 0; i < 6 && !said.remedy.empty(); ++i) {
    ASSERT_NO_FATAL_FAILURE(world.apply(said.remedy));
    said = world.explain(GetParam().path);
  }
  EXPECT_EQ(said.inVersion2 && said.missing.empty(), GetParam().helped) << said.verdict << "\n"
                                                                        << said.remedy;
}
INSTANTIATE_TEST_SUITE_P(Explainer, ExplainedCase, testing::ValuesIn(cases()), nameOf);

std::vector<std::string> textOf(const Host::Explanation& explanation) {
  std::vector<std::string> lines;
  for (const auto& step : explanation.steps) {
    lines.push_back((step.found ? "+ " : "- ") + step.level + " " + step.key + " | " + step.path +
                    " | " + step.text);
  }
  return lines;
}

TEST(Explainer, SaysWhatItHasLookedUpFromTheDeviceDown) {
  World world;
  const std::string set2 = "/vela-l3v2:policy-source/policy-set[device-name='fw1']";
  EXPECT_EQ(
      textOf(world.explain(kRule)),
      (std::vector<std::string>{
          "+ tree policy |  | is running", "+ policy-set fw1 | " + kDevice + " | in version 1",
          "+ record fw1 | " + kRecord + " | serves the device",
          "+ perDeviceSm fw1 |  | keeps it up to date",
          "+ version-2 policy-set fw1 | " + set2 + " | in version 2",
          "+ policy red | " + kRed + " | in version 1",
          "+ mapping red | " + kMapping + " | \"net-red\" in the network",
          "+ perVrfSm red |  | keeps it up to date",
          "+ version-2 policy net-red | " + kRed2 + " | in version 2",
          "+ timestamp  |  | stamped last at 12.500000",
          "+ rule 20000 | " + kRule + " | in version 1",
          "+ perRuleSm 20000 |  | keeps it up to date",
          "+ version-2 rule 20000 | " + kRed2 + "/rule[priority='20000'] | in version 2"}));
}

TEST(Explainer, SaysWhenAPolicyWasStampedLastAndWhatWaitsForTheSignal) {
  World world;
  EXPECT_EQ(world.explain(kRule).written, 12.5);
  world.clock.timeIs(20);
  world.apply(R"({"update":[{"path":")" + kOrigin + R"(/log","value":true}],"signal":false})");
  const Host::Explanation said = world.explain(kRed);
  EXPECT_EQ(said.written, 12.5);
  EXPECT_EQ(said.steps.back().text,
            "stamped last at 12.500000; what has changed since then is stamped with the next "
            "signal of version 1");
  world.apply(update(kRed + "/timestamp", "\"20.0\""));
  EXPECT_EQ(world.explain(kRed).written, 20);
  EXPECT_EQ(world.explain(kRed).steps.back().text, "stamped last at 20.000000");
  EXPECT_EQ(world.explain(kDevice).written, std::nullopt);
}

TEST(Explainer, SaysWhichKeysWereTriedForAPair) {
  World world;
  const std::string pair = R"(/vela-l3:policy-source/policy-set[device-name='fwA\:fwB_HAPair'])";
  world.apply(update("/vela-policy-monitor:status/device-policy-list[device-name='fwB::']", "{}"));
  world.trees.policyV1->policySetIs(R"(fwA\:fwB_HAPair)");
  const Host::Explanation said = world.explain(pair);
  EXPECT_EQ(said.steps.at(2).key, "fwB::");
  EXPECT_EQ(said.steps.at(2).text,
            "serves the device; looked for \"fwA::\" and \"fwB::\", in this order");
  EXPECT_TRUE(said.inVersion2);
}

TEST(Explainer, RefusesWhatIsNoEntryOfEitherGeneration) {
  const auto whyNot = [](const std::string& path) {
    return Host::Explainer::whyNot(World::pathOf(path));
  };
  EXPECT_EQ(whyNot(kRule), "");
  EXPECT_EQ(whyNot(kMapping), "there is nothing to explain at " + kMapping +
                                  ": ask for an entry of version 1 or version 2");
  EXPECT_EQ(whyNot("/vela-l3:policy-source"),
            "which device is meant? Write /vela-l3:policy-source/policy-set[device-name='...']");
  EXPECT_EQ(
      whyNot(kRed + "/rule"),
      "which entry of rule is meant? Explain one of them, with its key behind " + kRed + "/rule");
}

}  // namespace
}  // namespace HostTests
