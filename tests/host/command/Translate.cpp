// What vpm translate makes of documents that are right.

#include "command/Translate.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "host/Running.h"

namespace HostTests {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr const char* kEmpty = R"({
  "vela-l3v2:policy-source": {},
  "vela-l3v2:service-device-source": {},
  "vela-policy-monitor:status": {}
}
)";

std::string recordFor(const std::string& vrf) {
  return R"("vela-policy-monitor:status": {"device-policy-list": [{"device-name": "fw1",
    "net-vrf-name-by-vrf": [{"vrf-name": ")" +
         vrf + R"(", "net-vrf-name": "net-)" + vrf + "\"}]}]}";
}
/// A document with one rule of the VRF red of fw1 whose origin has these members.
std::string withOrigin(const std::string& members) {
  return R"({"vela-l3:policy-source": {"policy-set": [{"device-name": "fw1", "policy": [{
    "vrf-name": "red", "rule": [{"priority": 20000, "origin": [{"name": "web")" +
         members + "}]}]}]}]}, " + recordFor("red") + "}";
}
Outcome translate(const std::vector<std::string>& documents) {
  const Folder folder;
  std::vector<std::string> arguments{"translate"};
  for (const std::string& document : documents) {
    arguments.push_back(folder.write(std::to_string(arguments.size()) + ".json", document));
  }
  return runVpm(arguments);
}

TEST(Translate, PrintsTheContainersOfAnEmptyDocument) {
  const Outcome outcome = translate({"{}"});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(outcome.out, kEmpty);
  EXPECT_EQ(outcome.err, "");
}

TEST(Translate, PrintsBothTreesAndTheFlags) {
  const Outcome outcome = translate({R"({
    "vela-l3:policy-source": {"policy-set": [{"device-name": "fw1", "policy": [{
      "vrf-name": "red",
      "rule": [{"priority": 20000, "origin": [{
        "name": "web", "tags": "in: \"a\\b\"\n", "policy-modifier": ["stateless", "symmetric"],
        "action": "redirect", "log": true,
        "match": {"src-ip": ["10.1.2.3/8"], "l3-app": [17, 6],
                  "dst-ip-range": [{"last": "10.0.0.9", "first": "10.0.0.1"}],
                  "src-l4-app": [{"port": 1, "protocol": 6}],
                  "dst-l4-app-range": [{"first": 80, "last": 90, "protocol": 6}]}}]}]}]}]},
    "vela-l3:service-device-source": {"service-device": [{"device-name": "fw1", "vrf": [{
      "vrf-name": "red",
      "l3-intf": [{"address": "2001:DB8::1", "reachable-subnet": ["2001:db8::/32"]}]}]}]},
    "vela-policy-monitor:status": {"device-policy-list": [{"device-name": "fw1",
      "net-vrf-name-by-vrf": [{"vrf-name": "red", "net-vrf-name": "net-red"}],
      "traffic-inspection": "unified"}]}})"});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_EQ(outcome.out, R"({
  "vela-l3v2:policy-source": {
    "policy-set": [
      {
        "device-name": "fw1",
        "policy": [
          {
            "net-vrf-name": "net-red",
            "rule": [
              {
                "priority": 20000,
                "origin": [
                  {
                    "name": "web",
                    "tags": "in: \"a\\b\"\n",
                    "policy-modifier": ["symmetric", "stateless"],
                    "match": {
                      "src-ip": ["10.0.0.0/8"],
                      "dst-ip-range": [
                        { "first": "10.0.0.1", "last": "10.0.0.9" }
                      ],
                      "l3-app": [6, 17],
                      "dst-l4-app-range": [
                        { "first": 80, "last": 90, "protocol": 6 }
                      ]
                    },
                    "action": "redirect",
                    "log-enabled": true
                  }
                ]
              }
            ],
            "timestamp": "0.000000"
          }
        ]
      }
    ]
  },
  "vela-l3v2:service-device-source": {
    "service-device": [
      {
        "device-name": "fw1",
        "traffic-inspection": "unified",
        "net-vrf": [
          {
            "net-vrf-name": "net-red",
            "vrf-name": "red",
            "l3-intf": [
              {
                "address": "2001:db8::1",
                "reachable-subnet": ["2001:db8::/32"]
              }
            ],
            "timestamp": "0.000000"
          }
        ]
      }
    ]
  },
  "vela-policy-monitor:status": {
    "device-policy-list": [
      {
        "device-name": "fw1",
        "policy-converge": true,
        "service-device-converge": true,
        "net-vrf-name-by-vrf": [
          { "vrf-name": "red", "net-vrf-name": "net-red" }
        ],
        "traffic-inspection": "unified"
      }
    ]
  }
}
)");
}

TEST(Translate, TakesAbsentLeavesAsEmptyTagsForwardAndFalse) {
  const std::string out = translate({withOrigin("")}).out;
  EXPECT_THAT(out, HasSubstr("\"tags\": \"\""));
  EXPECT_THAT(out, HasSubstr("\"action\": \"forward\""));
  EXPECT_THAT(out, HasSubstr("\"log-enabled\": false"));
  EXPECT_THAT(out, Not(HasSubstr("\"match\"")));
}

TEST(Translate, PrintsAMatchThatIsThereAndEmpty) {
  EXPECT_THAT(translate({withOrigin(R"(, "match": {})")}).out, HasSubstr("\"match\": {},"));
}

TEST(Translate, IgnoresTheFlagsThatARunHasPrintedWithTheRecords) {
  const Folder folder;
  const std::string site = folder.write("site.json", R"({"vela-l3:policy-source": {"policy-set": [
    {"device-name": "fw1"}]}})");
  const std::string record = R"({"vela-policy-monitor:status": {"device-policy-list": [{
    "device-name": "fw1", "policy-converge": false, "service-device-converge": true}]}})";
  const Outcome outcome = runVpm({"translate", site, folder.write("status.json", record)});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr(R"("policy-converge": true)"));
  EXPECT_THAT(outcome.out, HasSubstr(R"("service-device-converge": false)"));
}

TEST(Translate, FindsAKeyWhereverItStands) {
  const std::string first =
      R"({"vela-l3:policy-source": {"policy-set": [{"device-name": "fw1", "policy": [{
      "vrf-name": "red", "rule": [{"priority": 20000, "origin": [{"name": "web", "log": true}]}]}]}]},)" +
      recordFor("red") + "}";
  const std::string last =
      R"({"vela-l3:policy-source": {"policy-set": [{"policy": [{
      "rule": [{"origin": [{"log": true, "name": "web"}], "priority": 20000}], "vrf-name": "red"}],
      "device-name": "fw1"}]},)" +
      recordFor("red") + "}";
  EXPECT_EQ(translate({first}).out, translate({last}).out);
  EXPECT_THAT(translate({last}).out, HasSubstr("\"log-enabled\": true"));
}

TEST(Translate, AcceptsTheModuleBelowTheTopAndEscapesInText) {
  const Outcome outcome = translate({withOrigin(R"(, "vela-l3:tags": "\u00e9\ud83d\ude00\/\t")")});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("\"tags\": \"\xc3\xa9\xf0\x9f\x98\x80/\\t\""));
}

TEST(Translate, AcceptsEverySpellingOfAWholeNumber) {
  const Outcome outcome =
      translate({withOrigin(R"(, "match": {"l3-app": [6.0, 1.7e1, 100e-2, 0]})")});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("\"l3-app\": [0, 1, 6, 17]"));
}

TEST(Translate, AcceptsAByteOrderMarkAndWindowsLineEnds) {
  const Outcome outcome = translate({"\xef\xbb\xbf{\r\n}\r\n"});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_EQ(outcome.out, kEmpty);
}

TEST(Translate, AcceptsAVrfNameOfOneHundredBytes) {
  const std::string name(100, 'v');
  const Outcome outcome =
      translate({R"({"vela-l3:policy-source": {"policy-set": [{"device-name": "fw1", "policy": [{
        "vrf-name": ")" +
                 name + "\"}]}]}, " + recordFor(name) + "}"});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("\"net-vrf-name\": \"net-" + name + "\""));
}

TEST(Translate, MergesDocumentsAndTheLaterScalarCounts) {
  const std::string first = withOrigin(
      R"(, "tags": "a", "action": "drop", "match": {"src-ip": ["10.0.0.0/8"], "l3-app": [6]})");
  const std::string second =
      R"({"vela-l3:policy-source": {"policy-set": [{"device-name": "fw1", "policy": [
        {"vrf-name": "red", "rule": [{"priority": 20000, "origin": [{"name": "web", "tags": "b",
          "match": {"src-ip": ["10.0.0.0/8", "11.0.0.0/8"]}}]}]}]}]}})";
  const Outcome outcome = translate({first, second});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("\"tags\": \"b\""));
  EXPECT_THAT(outcome.out, HasSubstr("\"action\": \"drop\""));
  EXPECT_THAT(outcome.out, HasSubstr("\"src-ip\": [\"10.0.0.0/8\", \"11.0.0.0/8\"]"));
  EXPECT_THAT(outcome.out, HasSubstr("\"l3-app\": [6]"));
}

TEST(Translate, FindsADuplicateWithinALaterDocument) {
  const std::string again = withOrigin(R"(, "match": {"l3-app": [6, 6]})");
  const Outcome outcome = translate({withOrigin(R"(, "match": {"l3-app": [6]})"), again});
  EXPECT_EQ(outcome.exitCode, 2);
  EXPECT_THAT(outcome.err, HasSubstr("6 is in the list already"));
}

TEST(Translate, KeepsAMappingThatALaterDocumentNamesWithoutAValue) {
  const Outcome outcome =
      translate({"{" + recordFor("red") + "}",
                 R"({"vela-policy-monitor:status": {"device-policy-list": [{"device-name": "fw1",
         "net-vrf-name-by-vrf": [{"vrf-name": "red"}, {"vrf-name": "blue"}]}]}})"});
  EXPECT_THAT(outcome.out, HasSubstr(R"({ "vrf-name": "blue", "net-vrf-name": "" },)"));
  EXPECT_THAT(outcome.out, HasSubstr(R"({ "vrf-name": "red", "net-vrf-name": "net-red" })"));
}

TEST(Translate, SortsPrefixesByFamilyValueAndLength) {
  const std::string out = translate({withOrigin(R"(, "match": {
    "src-ip": ["::/0", "10.0.0.0/8", "9.0.0.0/8", "0.0.0.0/0"],
    "dst-ip": ["100.0.0.0/8", "10.0.0.0/16", "10.0.0.0/8"]})")})
                              .out;
  EXPECT_THAT(out, HasSubstr(R"("src-ip": ["0.0.0.0/0", "9.0.0.0/8", "10.0.0.0/8", "::/0"])"));
  EXPECT_THAT(out, HasSubstr(R"("dst-ip": ["10.0.0.0/8", "10.0.0.0/16", "100.0.0.0/8"])"));
}

TEST(Translate, BreaksALeafListThatIsTooLongForALine) {
  std::string given;
  std::string printed = "\"src-ip\": [";
  for (int i = 10; i < 20; ++i) {
    const std::string prefix = "\"192.168." + std::to_string(i) + ".0/24\"";
    given += (i == 10 ? "" : ",") + prefix;
    printed += std::string(i == 10 ? "" : ",") + "\n                        " + prefix;
  }
  EXPECT_THAT(translate({withOrigin(R"(, "match": {"src-ip": [)" + given + "]}")}).out,
              HasSubstr(printed + "\n                      ]\n"));
}

TEST(Translate, SortsRulesByPriorityAndTextByBytes) {
  const Outcome outcome =
      translate({R"({"vela-l3:policy-source": {"policy-set": [{"device-name": "fw1", "policy": [{
        "vrf-name": "red", "rule": [
          {"priority": 10001}, {"priority": 30000}, {"priority": 10000}]}]}]}, )" +
                     recordFor("red") + "}",
                 R"({"vela-policy-monitor:status": {"device-policy-list": [{"device-name": "b"},
         {"device-name": "B"}, {"device-name": "\u00e9"}, {"device-name": "a"}]}})"});
  std::vector<std::size_t> places;
  for (const char* const text :
       {": 10000", ": 10001", ": 30000", "\"B\"", "\"a\"", "\"b\"", "\"\xc3\xa9\""}) {
    places.push_back(outcome.out.find(text));
    EXPECT_NE(places.back(), std::string::npos) << text;
  }
  EXPECT_TRUE(std::is_sorted(places.begin(), places.end())) << outcome.out;
}

TEST(Translate, GivesTheSameBytesOnEveryRun) {
  const std::string document = withOrigin(R"(, "match": {"l3-app": [5, 4, 3, 2, 1]})");
  EXPECT_EQ(translate({document}).out, translate({document}).out);
}

TEST(Translate, StampsWithTheTimeItIsGiven) {
  const Folder folder;
  const std::string file = folder.write("site.json", withOrigin(""));
  EXPECT_THAT(runVpm({"translate", file, "--time", "1700000000.25"}).out,
              HasSubstr("\"timestamp\": \"1700000000.250000\""));
}

TEST(Translate, WritesTheOutputFileWholeAndNothingElse) {
  const Folder folder;
  const std::string file = folder.write("site.json", "{}");
  folder.write("v2.json", "old");
  const Outcome outcome = runVpm({"translate", file, "--output", folder.path("v2.json")});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(folder.read("v2.json"), kEmpty);
  EXPECT_EQ(folder.files(), 2U);
}

TEST(Translate, LeavesTheOutputFileAloneWhenTheInputIsWrong) {
  const Folder folder;
  const std::string file = folder.write("site.json", "{");
  folder.write("v2.json", "old");
  EXPECT_EQ(runVpm({"translate", file, "--output", folder.path("v2.json")}).exitCode, 2);
  EXPECT_EQ(folder.read("v2.json"), "old");
  EXPECT_EQ(folder.files(), 2U);
}

TEST(Translate, FailsWhenTheOutputCannotBeWritten) {
  const Folder folder;
  const std::string file = folder.write("site.json", "{}");
  const Outcome outcome = runVpm({"translate", file, "--output", folder.path("no/v2.json")});
  EXPECT_EQ(outcome.exitCode, 3);
  EXPECT_EQ(outcome.err, "vpm: error: " + folder.path("no/v2.json") +
                             ": cannot be created: No such file or directory\n");
  EXPECT_EQ(runVpm({"translate", file, "--output", "/dev/full"}).exitCode, 3);
  EXPECT_EQ(runVpm({"translate", file, "--trace", folder.path("no/trace")}).exitCode, 3);
}

TEST(Translate, FailsWhenLinesOfTheTraceAreLostButPrintsAll) {
  const Folder folder;
  const std::string file = folder.write("site.json", withOrigin(""));
  const Outcome outcome =
      runVpm({"translate", file, "--trace", "/dev/full", "--trace-levels", "6"});
  EXPECT_EQ(outcome.exitCode, 3);
  EXPECT_EQ(outcome.out, runVpm({"translate", file}).out);
  EXPECT_EQ(outcome.err,
            "vpm: error: /dev/full: lines of the trace that could not be written: 4; is the disk "
            "full?\n");
}

TEST(Translate, WritesTheTraceThatIsAskedFor) {
  const Folder folder;
  const std::string file = folder.write("site.json", withOrigin(""));
  folder.write("trace.txt", "of an earlier run\n");
  const Outcome outcome = runVpm({"translate", file, "--trace", folder.path("trace.txt"),
                                  "--trace-levels", "6", "--time", "7"});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  const std::string trace = folder.read("trace.txt");
  EXPECT_THAT(trace, testing::StartsWith("7.000000 VelaPolicyMonitor 6 "));
  EXPECT_THAT(trace, HasSubstr(" handlePolicySet: void VelaPolicyMonitor::PolicyTranslateRootSm::"
                               "handlePolicySet(const String&) add device fw1\n"));
  EXPECT_THAT(trace, Not(HasSubstr("VelaPolicyMonitor 8")));
  EXPECT_THAT(trace, Not(HasSubstr("remove")));
}

TEST(Translate, TakesOneHundredThousandPrefixesInOneList) {
  std::string prefixes;
  for (int i = 0; i < 100000; ++i) {
    prefixes += (i == 0 ? "\"10." : ",\"10.") + std::to_string(i >> 16) + "." +
                std::to_string((i >> 8) & 255) + "." + std::to_string(i & 255) + "/32\"";
  }
  const Outcome outcome = translate({withOrigin(R"(, "match": {"src-ip": [)" + prefixes + "]}")});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '/'), 100000);
  EXPECT_THAT(outcome.out, HasSubstr("\"10.0.0.0/32\",\n"));
  EXPECT_THAT(outcome.out, HasSubstr("\"10.1.134.159/32\"\n"));
}

}  // namespace
}  // namespace HostTests
