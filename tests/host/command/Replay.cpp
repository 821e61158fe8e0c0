// Sequences of change lines and what they make of version 2.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <new>

#include "change/ChangeReader.h"
#include "host/Running.h"
#include "session/Session.h"

namespace HostTests {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const char* const kConfig = R"({
  "vela-l3:policy-source": {"policy-set": [{"device-name": "fw1", "policy": [
    {"vrf-name": "red", "rule": [{"priority": 20000, "origin": [
      {"name": "web", "match": {"dst-ip": ["10.1.0.0/16"]}}]}]}]}]},
  "vela-policy-monitor:status": {"device-policy-list": [{"device-name": "fw1",
    "net-vrf-name-by-vrf": [{"vrf-name": "red", "net-vrf-name": "net-red"}]}]}
})";
const std::string kPolicySet = "/vela-l3:policy-source/policy-set[device-name='fw1']";
const std::string kRed = kPolicySet + "/policy[vrf-name='red']";
const std::string kWeb = kRed + "/rule[priority='20000']/origin[name='web']";
const std::string kRecord = "/vela-policy-monitor:status/device-policy-list[device-name='fw1']";

std::string update(const std::string& path, const std::string& value) {
  return R"("update":[{"path":")" + path + R"(","value":)" + value + "}]";
}
std::string replaced(const std::string& path, const std::string& value) {
  return R"("replace":[{"path":")" + path + R"(","value":)" + value + "}]";
}
std::string deleted(const std::string& path) { return R"("delete":[")" + path + R"("])"; }
std::string mapped(const std::string& vrf, const std::string& name) {
  return update(kRecord + "/net-vrf-name-by-vrf[vrf-name='" + vrf + "']/net-vrf-name",
                "\"" + name + "\"");
}

/// The policies of version 2, as an answer has them.
std::string v2(const std::string& policies) {
  return R"("v2":{"vela-l3v2:policy-source":{)" +
         (policies.empty()
              ? ""
              : R"("policy-set":[{"device-name":"fw1","policy":[)" + policies + "]}]") +
         R"(},"vela-l3v2:service-device-source":{}})";
}
std::string answer(int line, const std::string& member) {
  return R"({"line":)" + std::to_string(line) + "," + member + "}\n";
}
const std::string kWebV2 =
    R"({"name":"web","tags":"","match":{"dst-ip":["10.1.0.0/16"]},"action":"forward","log-enabled":false})";
std::string policy(const std::string& name, const std::string& rules, const std::string& time) {
  return R"({"net-vrf-name":")" + name + R"(","rule":[)" + rules + R"(],"timestamp":")" + time +
         R"("})";
}
std::string rule(int priority, const std::string& origins) {
  return R"({"priority":)" + std::to_string(priority) + R"(,"origin":[)" + origins + "]}";
}

class Replay : public testing::Test {
 protected:
  /// Runs these lines, each without its braces, on the configuration.
  Outcome run(const std::vector<std::string>& lines, std::vector<std::string> options = {}) {
    std::string text;
    for (const std::string& line : lines) {
      text += "{" + line + "}\n";
    }
    std::vector<std::string> arguments{"replay", folder_.write("a.log", text), "--config",
                                       folder_.write("c.json", kConfig)};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return runVpm(arguments);
  }
  /// The same, and the decisions and handlers that the trace shows at time 9.
  std::vector<std::string> traced(const std::vector<std::string>& lines) {
    run(lines, {"--trace", folder_.path("trace"), "--trace-levels", "8"});
    std::vector<std::string> handlers;
    std::istringstream text(folder_.read("trace"));
    for (std::string line; std::getline(text, line);) {
      if (line.starts_with("9.0")) {
        line.erase(0, line.find("::Policy") + 2);
        handlers.push_back(line.substr(line.find("::") + 2));
      }
    }
    return handlers;
  }

  Folder folder_;
};

TEST_F(Replay, StartsBothTreesAndEndsWithAllOfVersion2AndTheRecords) {
  const Outcome outcome = run({}, {"--time", "7"});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(
      outcome.out,
      R"({"line":"end",)" + v2(policy("net-red", rule(20000, kWebV2), "7.000000")) +
          R"(,"status":{"vela-policy-monitor:status":{"device-policy-list":[{"device-name":"fw1",)"
          R"("policy-converge":true,"service-device-converge":false,)"
          R"("net-vrf-name-by-vrf":[{"vrf-name":"red","net-vrf-name":"net-red"}],)"
          R"("traffic-inspection":""}]}}})"
          "\n");
}

TEST_F(Replay, AnswersLinesThatAskWithTheirNumberAndSkipsBlankOnes) {
  const Outcome outcome =
      runVpm({"replay", folder_.write("a.log", "\n  \r\n{\"show\":[\"v2\"]}\r\n{}\n")});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_THAT(outcome.out, StartsWith(answer(3, v2(""))));
}

TEST_F(Replay, WritesTheSignalOfTouchedPoliciesAtTheEndOfALine) {
  const Outcome outcome =
      run({R"("time":9,)" + update(kWeb + "/tags", R"("a")"), R"("show":["v2"],"time":10)"});
  EXPECT_THAT(outcome.out, HasSubstr(R"("timestamp":"9.000000")"));
}

TEST_F(Replay, LeavesTheSignalOutWhenAsked) {
  const Outcome outcome =
      run({R"("time":9,"signal":false,"show":["v2"],)" + update(kWeb + "/tags", R"("a")"),
           R"("time":10,"show":["v2"],)" + update(kRed + "/timestamp", R"("3")")});
  EXPECT_THAT(outcome.out, HasSubstr(R"("tags":"a")"));
  EXPECT_THAT(outcome.out, HasSubstr(R"("timestamp":"0.000000"}]}]},"vela-l3v2)"));
  // A time written by hand is a signal, and is overwritten by the one at the end of the line.
  EXPECT_THAT(outcome.out, HasSubstr(R"("timestamp":"10.000000")"));
}

TEST_F(Replay, SignalsOnlyWhatWasTouched) {
  const std::string blue = R"({"vrf-name":"blue","rule":[{"priority":10001}]})";
  const Outcome outcome = run({mapped("blue", "net-blue"),
                               R"("time":1,)" + update(kPolicySet + "/policy", "[" + blue + "]"),
                               R"("time":2,"show":["v2"],)" + deleted(kWeb)});
  EXPECT_EQ(outcome.out.substr(0, outcome.out.find('\n') + 1),
            answer(3, v2(policy("net-blue", R"({"priority":10001})", "1.000000") + "," +
                         policy("net-red", R"({"priority":20000})", "2.000000"))));
}

TEST_F(Replay, WhatChangesNothingTouchesNothing) {
  EXPECT_EQ(
      traced({R"("time":9,)" + update(kWeb + "/match/dst-ip[.='10.1.2.3/16']", R"("10.1.0.0/16")"),
              R"("time":9,)" + update(kWeb, "{}"),
              R"("time":9,)" + replaced(kWeb + "/match", R"({"dst-ip":["10.1.0.0/16"]})")}),
      std::vector<std::string>{});
}

TEST_F(Replay, AnUpdateToTheSameValueIsAWriteAndAnnounced) {
  EXPECT_EQ(traced({R"("time":9,)" + update(kWeb + "/tags", R"("")")}),
            (std::vector<std::string>{"handleTags() policy: web", "doUpdate() VRF name: red"}));
}

TEST_F(Replay, ReplaceAnnouncesJustTheDifferenceRemovalsFirst) {
  EXPECT_EQ(
      traced({update(kWeb + "/match/dst-ip", R"(["10.2.0.0/16","10.3.0.0/16"])"),
              R"("time":9,)" + replaced(kWeb, R"({"action":"drop","match":{"dst-ip":)"
                                              R"(["10.9.0.0/16","10.2.0.0/16"],"l3-app":[6]}})")}),
      (std::vector<std::string>{"handleAction() policy: web action: drop",
                                "doUpdate() VRF name: red"}));
  // Single keys of addresses and protocols have no entry line; their decisions are on level 6.
  const Outcome outcome =
      run({update(kWeb + "/match/dst-ip", R"(["10.2.0.0/16","10.3.0.0/16"])"),
           R"("time":9,)" + replaced(kWeb + "/match/dst-ip", R"(["10.9.0.0/16","10.2.0.0/16"])")},
          {"--trace", folder_.path("trace"), "--trace-levels", "6"});
  const std::string trace = folder_.read("trace");
  const std::string last = trace.substr(trace.find("9.000000"));
  EXPECT_THAT(last, testing::MatchesRegex(".*remove dst ip: 10.1.0.0/16\n"
                                          ".*remove dst ip: 10.3.0.0/16\n"
                                          ".*add dst ip: 10.9.0.0/16\n"));
}

TEST_F(Replay, ReplaceOfAWholePolicyRemovesWhatIsMissingAndFillsWhatIsNew) {
  const Outcome outcome =
      run({R"("time":4,"show":["v2"],)" +
           replaced(kRed, R"({"rule":[{"priority":20005,"origin":[{"name":"a","log":true}]}]})")});
  EXPECT_THAT(
      outcome.out,
      StartsWith(answer(
          1,
          v2(policy("net-red",
                    rule(20005, R"({"name":"a","tags":"","action":"forward","log-enabled":true})"),
                    "4.000000")))));
}

TEST_F(Replay, ARenamedMappingIsOneWriteAndMovesTheEntry) {
  EXPECT_EQ(run({R"("time":3,"show":["v2"],)" + mapped("red", "n2")})
                .out.substr(0, 999)
                .find(answer(1, v2(policy("n2", rule(20000, kWebV2), "3.000000")))),
            0U);
  const auto handlers =
      traced({R"("time":9,)" + update(kRecord + "/net-vrf-name-by-vrf",
                                      R"([{"vrf-name":"red","net-vrf-name":"n2"}])")});
  EXPECT_EQ(std::count(handlers.begin(), handlers.end(),
                       "handleVrf(const String&) Device: fw1 VRF name: red"),
            1);
}

TEST_F(Replay, AVrfLosesItsEntryWhenTheNameItSharedIsTakenAwayAndGetsItBackByNotification) {
  const Outcome outcome =
      run({update(kPolicySet + "/policy[vrf-name='blue']", R"({"rule":[{"priority":10001}]})") +
               R"(,"time":1)",
           mapped("blue", "net-red") + R"(,"show":["audit"])",
           R"("show":["v2","audit"],)" + deleted(kPolicySet + "/policy[vrf-name='blue']"),
           R"("time":5,"show":["v2","audit"],"notify":[")" + kRed + R"("])"});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_THAT(outcome.out, HasSubstr(R"("class":"as designed","why":"this VRF shares the network)"
                                     R"( VRF name \"net-red\" with \"red\")"));
  EXPECT_THAT(outcome.out, HasSubstr(R"({"line":3,"v2":{"vela-l3v2:policy-source":)"
                                     R"({"policy-set":[{"device-name":"fw1"}]})"));
  EXPECT_THAT(outcome.out, HasSubstr("has belonged to another VRF"));
  EXPECT_THAT(outcome.out,
              HasSubstr(R"({"line":4,)" + v2(policy("net-red", rule(20000, kWebV2), "5.000000")) +
                        R"(,"audit":{"equal":true,"differences":[]}})"));
}

TEST_F(Replay, MissesWhatChangesWhileSuspendedUntilBuiltAnew) {
  const Outcome outcome =
      run({R"("control":"suspend")", update(kWeb + "/tags", R"("new")"),
           R"("control":"resume","show":["v2","audit"])",
           R"("time":6,"control":"cleanup","tree":"policy","show":["v2"])",
           R"("time":8,"control":"initialize","tree":"policy","show":["v2","audit"])"});
  EXPECT_EQ(outcome.exitCode, 0);
  const std::string none = v2(policy("net-red", rule(20000, kWebV2), "0.000000"));
  EXPECT_THAT(outcome.out, StartsWith(R"({"line":3,)" + none + R"(,"audit":{"equal":false)"));
  EXPECT_THAT(outcome.out, HasSubstr("while the tree was suspended"));
  EXPECT_THAT(outcome.out, HasSubstr(answer(4, v2(""))));
  EXPECT_THAT(outcome.out, HasSubstr(R"({"line":5,"v2")"));
  EXPECT_THAT(outcome.out, HasSubstr(R"("timestamp":"8.000000")"));
  EXPECT_THAT(outcome.out, HasSubstr(R"("audit":{"equal":true,"differences":[]})"));
}

TEST_F(Replay, ControlsBothTreesUnlessOneIsNamed) {
  const Outcome outcome =
      run({R"("control":"stop","tree":"service-device")", R"("control":"stop","show":["v2"])",
           R"("control":"stop","tree":"policy","show":["v2"])",
           R"("control":"suspend","tree":"policy")", R"("control":"start","show":["v2"])",
           R"("control":"start")"});
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_THAT(
      outcome.out,
      StartsWith(answer(2, R"("error":"the service-device tree is not running; start it first")") +
                 answer(3, v2("")) +
                 answer(4, R"("error":"the policy tree is not running; start it first")") +
                 answer(5, v2(policy("net-red", rule(20000, kWebV2), "0.000000"))) +
                 answer(6, R"("error":"the policy tree is running; it cannot be started again")")));
}

TEST_F(Replay, StartsNoTreeWhenToldSo) {
  const Outcome outcome = run({R"("show":["v2","audit"])"}, {"--no-start"});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_THAT(outcome.out, HasSubstr(v2("")));
  EXPECT_THAT(outcome.out, HasSubstr("the tree is not running"));
}

TEST_F(Replay, ReconcilesWhatAnEarlierRunHasLeft) {
  const std::string stale = policy("gone", rule(20000, kWebV2), "1.000000") + "," +
                            policy("net-red", rule(30000, "") + "," + rule(20000, kWebV2), "1");
  const std::string document = folder_.write(
      "old.json",
      "{" + v2(stale).substr(5 + 1, v2(stale).size() - 7) +
          R"(,"vela-policy-monitor:status":{"device-policy-list":[{"device-name":"x"}]}})");
  const Outcome outcome =
      run({R"("show":["v2","audit"])", R"("control":"start","show":["v2","audit"])"},
          {"--v2", document, "--time", "2", "--no-start"});
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_THAT(outcome.out, HasSubstr(R"("net-vrf-name":"gone")"));
  EXPECT_THAT(outcome.out,
              HasSubstr(R"({"line":2,)" + v2(policy("net-red", rule(20000, kWebV2), "2.000000")) +
                        R"(,"audit":{"equal":true,"differences":[]}})"));
  EXPECT_THAT(outcome.out, Not(HasSubstr(R"("device-name":"x")")));
}

TEST_F(Replay, TakesAnAnswerOfAReplayAsWhatWasLeft) {
  const std::string last = run({}).out;
  const Outcome outcome = run({}, {"--v2", folder_.write("old.json", last), "--time", "3"});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr(R"("timestamp":"3.000000")"));
}

TEST_F(Replay, RefusesVersion1AsWhatWasLeftAndVersion2AsConfiguration) {
  const Outcome left = run({}, {"--v2", folder_.write("old.json", kConfig)});
  EXPECT_EQ(left.exitCode, 2);
  EXPECT_THAT(left.err,
              HasSubstr(R"(2:3: error: "vela-l3:policy-source" is no state of version 2)"));
  const Outcome config = run({}, {"--config", folder_.write("v2.json", "{" + v2("").substr(6))});
  EXPECT_EQ(config.exitCode, 2);
  EXPECT_THAT(config.err, HasSubstr("state that the translation alone writes"));
}

TEST_F(Replay, ARefusedLineLeavesNoTrace) {
  const std::string good = deleted(kWeb) + "," + mapped("red", "n9") + R"(,"time":9)";
  const std::vector<std::string> refused{
      R"("delete":[")" + kWeb + R"(",")" + kWeb + R"("],"time":9)",
      R"("delete":[")" + kRed + R"(",")" + kWeb + R"("],"time":9)",
      R"("delete":[")" + kPolicySet + R"(/policy",")" + kRed + R"("],"time":9)",
      good + R"(,"control":"start")",
      good + R"(,"notify":[")" + kWeb + R"(/match"])",
      R"("time":9,)" + replaced(kRed, "{}") + R"(,"notify":[")" + kWeb + R"(/tags"])",
      R"("time":9,)" + deleted(kRed + "/timestamp"),
      R"("time":9,)" + deleted(kWeb + "/match/src-ip"),
      R"("time":9,"delete":[")" + kWeb + R"(/match/dst-ip[.='10.1.0.0/16']",")" + kWeb +
          R"(/match/dst-ip"])"};
  for (const std::string& line : refused) {
    const Outcome outcome =
        run({R"("show":["v2","status"])", line, R"("show":["v2","status"],"update":[])"},
            {"--trace", folder_.path("trace")});
    EXPECT_EQ(outcome.exitCode, 1) << line;
    std::istringstream text(outcome.out);
    std::string before;
    std::string error;
    std::string after;
    std::getline(text, before);
    std::getline(text, error);
    std::getline(text, after);
    EXPECT_THAT(error, StartsWith(R"({"line":2,"error":")")) << line;
    EXPECT_EQ(before.substr(9), after.substr(9)) << line;
    // Not even the clock has moved, nor has any handler been called.
    EXPECT_THAT(folder_.read("trace"), Not(HasSubstr("\n9.0"))) << line;
  }
}

TEST_F(Replay, WhatTheSameLineMakesMayBeNotified) {
  const Outcome outcome =
      run({update(kRed + "/rule[priority='20001']/origin[name='new']", "{}") + R"(,"notify":[")" +
           kRed + R"(/rule[priority='20001']/origin[name='new']/tags"])"});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.out;
}

TEST_F(Replay, NamesWhatIsNotThere) {
  const Outcome outcome = run({deleted(kRed + "/rule[priority=20001]")});
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_THAT(outcome.out, StartsWith(answer(1, R"("error":"nothing to delete at )" + kRed +
                                                    R"(/rule[priority='20001']")")));
}

TEST_F(Replay, DeletesLeavesByWritingWhatTheirAbsenceMeans) {
  const Outcome outcome = run({update(kWeb, R"({"tags":"a","action":"drop","log":true})"),
                               R"("delete":[")" + kWeb + R"(/tags",")" + kWeb + R"(/action",")" +
                                   kWeb + R"(/log"],"show":["v2"])"});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_THAT(outcome.out,
              StartsWith(answer(2, v2(policy("net-red", rule(20000, kWebV2), "0.000000")))));
}

TEST_F(Replay, NotifiesAttributesEntriesAndWholeListsWithNothingChanged) {
  EXPECT_EQ(
      traced({update(kRed + "/rule[priority=20005]", "{}"),
              R"("time":9,"notify":[")" + kWeb + R"(/action",")" + kRed + R"(/rule"])"}),
      (std::vector<std::string>{"handleAction() policy: web action: forward",
                                "handleRule(VelaL3::VelaPriority) Rule: red priority: 20000",
                                "handleRule(VelaL3::VelaPriority) Rule: red priority: 20005"}));
}

TEST_F(Replay, ReadsKeysWithAndWithoutQuotesInAnyOrder) {
  const std::string match =
      "/vela-l3:policy-source/vela-l3:policy-set[ device-name = \\\"fw1\\\" ]"
      "/policy[vrf-name=red]/rule[priority=20000]/origin[name=web]/match";
  const Outcome outcome = run({update(match + "/dst-l4-app[protocol=6][port=443]", "{}"),
                               R"("show":["v2"],)" + deleted(match + "/dst-ip[.=10.1.9.9/16]")});
  EXPECT_THAT(outcome.out, HasSubstr(R"("match":{"dst-l4-app":[{"port":443,"protocol":6}]})"));
}

TEST_F(Replay, GivesTheSameBytesForTheSameInput) {
  const std::vector<std::string> lines{
      update(kWeb + "/match/dst-ip", R"(["10.7.0.0/16","2001:db8::/32","10.6.0.0/16"])"),
      R"("show":["v2","status","audit","stats"],)" + mapped("red", "x"), deleted(kPolicySet)};
  const std::vector<std::string> options{"--trace", folder_.path("t")};
  const Outcome first = run(lines, options);
  const std::string trace = folder_.read("t");
  const Outcome second = run(lines, options);
  EXPECT_EQ(first.out, second.out);
  EXPECT_EQ(trace, folder_.read("t"));
  EXPECT_THAT(first.out, HasSubstr(R"("type":"VelaL3::VelaRuleConfig","objects":1)"));
}

TEST_F(Replay, AnswersMalformedLinesOfStandardInputAndGoesOn) {
  const std::string lines = "{\"updat\":[]}\n\n{\"show\":[\"v2\"]}\n{\"show\":[\"v2\"]";
  folder_.write("in", lines);
  const int saved = ::dup(STDIN_FILENO);
  ASSERT_NE(std::freopen(folder_.path("in").c_str(), "r", stdin), nullptr);
  const Outcome outcome = runVpm({"replay"});
  ::dup2(saved, STDIN_FILENO);
  ::close(saved);
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_THAT(outcome.out, StartsWith(R"({"line":1,"error":"column 2: \"updat\" is unknown here)"));
  EXPECT_THAT(outcome.out, HasSubstr(answer(3, v2(""))));
  EXPECT_THAT(outcome.out, HasSubstr(R"({"line":4,"error":"column 15: the line ends inside)"));
  EXPECT_THAT(outcome.out, HasSubstr(R"({"line":"end",)"));
}

TEST_F(Replay, WritesToAFileWholeOrNotAtAll) {
  const Outcome outcome = run({R"("show":["v2"])"}, {"--output", folder_.path("out.json")});
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(folder_.read("out.json"), StartsWith(R"({"line":1,"v2")"));
  EXPECT_EQ(run({}, {"--output", folder_.path("no/out.json")}).exitCode, 3);
}

TEST_F(Replay, FailsWhenLinesOfTheTraceAreLostButAnswersAll) {
  const Outcome outcome = run({R"("show":["v2"])"}, {"--trace", "/dev/full"});
  EXPECT_EQ(outcome.exitCode, 3);
  EXPECT_EQ(outcome.out, run({R"("show":["v2"])"}).out);
  EXPECT_THAT(outcome.err, HasSubstr("/dev/full: lines of the trace that could not be written: "));
}

}  // namespace
}  // namespace HostTests
