#include <gtest/gtest.h>

#include "host/Running.h"

namespace HostTests {
namespace {

const char* const kDocument = R"({
  "vela-l3:policy-source": {"policy-set": [{"device-name": "fw1", "policy": [
    {"vrf-name": "red"}, {"vrf-name": "blue"}]}]},
  "vela-policy-monitor:status": {"device-policy-list": [{"device-name": "fw1",
    "net-vrf-name-by-vrf": [{"vrf-name": "red", "net-vrf-name": "net-red"}]}]}
})";
const std::string kDevice = "/vela-l3:policy-source/policy-set[device-name='fw1']";

TEST(Explain, PrintsEachStepAndTheLineThatHelps) {
  const Folder folder;
  const Outcome run = runVpm({"explain", kDevice + "/policy[vrf-name=blue]", "--config",
                              folder.write("c.json", kDocument)});
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(
      run.out,
      R"(/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='blue']
  is not in version 2: the monitor's record "fw1" has no network VRF name for
  VRF "blue"; the name in the remedy is a proposal

  [x] tree policy: is running
  [x] policy-set fw1: in version 1
  [x] record fw1: serves the device
  [x] perDeviceSm fw1: keeps it up to date
  [x] version-2 policy-set fw1: in version 2
  [x] policy blue: in version 1
  [ ] mapping blue: no network VRF name
  [ ] perVrfSm blue: there is none

  This change line helps:
)"
      R"({"update":[{"path":"/vela-policy-monitor:status/device-policy-list[device-name='fw1'])"
      R"(/net-vrf-name-by-vrf[vrf-name='blue']","value":{"net-vrf-name":"blue"}}]})"
      "\n");
  EXPECT_EQ(run.exitCode, 0);
}

TEST(Explain, PrintsTheSameForPrograms) {
  const Folder folder;
  const Outcome run =
      runVpm({"explain", "/vela-l3v2:policy-source/policy-set[device-name=fw2]", "--config",
              folder.write("c.json", kDocument), "--v2",
              folder.write("v2.json", R"({"vela-l3v2:policy-source":{}})"), "--json"});
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out, R"({
  "path": "/vela-l3v2:policy-source/policy-set[device-name='fw2']",
  "in-version-2": false,
  "steps": [
    { "level": "tree", "key": "policy", "found": true, "text": "is running" },
    { "level": "policy-set", "key": "fw2", "path": "/vela-l3:policy-source/policy-set[device-name='fw2']", "found": false, "text": "not in version 1" },
    { "level": "record", "key": "fw2", "path": "/vela-policy-monitor:status/device-policy-list[device-name='fw2']", "found": false, "text": "looked for \"fw2\"" },
    { "level": "version-2 policy-set", "key": "fw2", "path": "/vela-l3v2:policy-source/policy-set[device-name='fw2']", "found": false, "text": "not in version 2" }
  ],
  "verdict": "is not in version 2: version 1 has no policy-set \"fw2\"",
  "missing": "version 1 has no policy-set \"fw2\"",
  "remedy": {
    "update": [
      {
        "path": "/vela-l3:policy-source/policy-set[device-name='fw2']",
        "value": {}
      }
    ]
  }
}
)");
}

TEST(Explain, RefusesAPathThatIsNoneAndShowsWhere) {
  const Folder folder;
  const std::string document = folder.write("c.json", kDocument);
  const Outcome wrong = runVpm({"explain", kDevice + "/polcy[vrf-name=red]", "--config", document});
  EXPECT_EQ(wrong.exitCode, 2);
  EXPECT_EQ(wrong.out, "");
  EXPECT_EQ(wrong.err,
            R"(PATH:1:54: error: "polcy" is unknown in policy-set; did you mean "policy"?
    1 | /vela-l3:policy-source/policy-set[device-name='fw1']/polcy[vrf-name=red]
      |                                                      ^~~~~
)");
  const Outcome list = runVpm({"explain", kDevice + "/policy", "--config", document});
  EXPECT_EQ(list.exitCode, 2);
  EXPECT_EQ(list.err,
            "PATH: error: which entry of policy is meant? Explain one of them, with its "
            "key behind " +
                kDevice + "/policy\n");
}

TEST(Explain, AsksTheAgentUnlessThereAreDocuments) {
  const Folder folder;
  const Outcome run = runVpm({"explain", kDevice, "--socket", folder.path("none")});
  EXPECT_EQ(run.exitCode, 3);
  EXPECT_EQ(run.out, "");
  EXPECT_NE(run.err.find(folder.path("none")), std::string::npos) << run.err;
  EXPECT_EQ(runVpm({"explain", kDevice, "--v2", "x"}).exitCode, 2);
  EXPECT_EQ(runVpm({"explain", kDevice, "--socket", "x", "--config", "y"}).exitCode, 2);
}

}  // namespace
}  // namespace HostTests
