#include <gtest/gtest.h>

#include "host/Running.h"

namespace {

using HostTests::Folder;
using HostTests::Outcome;
using HostTests::runVpm;

/// A line that is wrong; @ stands before the place that the message has to name.
struct BadLine {
  const char* line;
  const char* message;
};

const std::string kPolicy =
    "/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']";
const std::string kOrigin = kPolicy + "/rule[priority='20000']/origin[name='web']";

std::string expanded(std::string text) {
  const auto replaceAll = [&](const std::string& what, const std::string& with) {
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what)) {
      text.replace(at, what.size(), with);
    }
  };
  replaceAll("$ORIGIN", kOrigin);
  replaceAll("$POLICY", kPolicy);
  return text;
}

class BadChangeLine : public testing::TestWithParam<BadLine> {};

TEST_P(BadChangeLine, IsRefusedWithItsPlaceBeforeAnythingIsDone) {
  std::string line = expanded(GetParam().line);
  const std::size_t column = line.find('@') + 1;
  ASSERT_NE(column, 0U);
  line.erase(column - 1, 1);
  const Folder folder;
  const std::string good = R"({"update":[{"path":"/vela-l3:policy-source","value":{}}],)"
                           R"("show":["v2"]})";
  const std::string log = folder.write("a.log", good + "\r\n\n" + line + "\n");
  const Outcome outcome = runVpm({"replay", log, "--output", folder.path("out.json")});
  EXPECT_EQ(outcome.exitCode, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(folder.files(), 1U);
  const std::string place = log + ":3:" + std::to_string(column) + ": error: ";
  EXPECT_NE(outcome.err.find(place), std::string::npos) << outcome.err << "expected " << place;
  EXPECT_NE(outcome.err.find(GetParam().message), std::string::npos) << outcome.err;
  EXPECT_NE(outcome.err.find("nothing was applied"), std::string::npos) << outcome.err;
}

INSTANTIATE_TEST_SUITE_P(
    OfSyntax, BadChangeLine,
    testing::Values(BadLine{R"(@x)", "is no JSON value"},
                    BadLine{R"(@[])", "a change line is an object"},
                    BadLine{R"(@12)", "a change line is an object"},
                    BadLine{R"(@"text")", "a change line is an object"},
                    BadLine{R"(@null)", "found null"},
                    BadLine{R"({"update":[{"path":"$ORIGIN/tags","value":"a"@:[1]}}]})",
                            "expected a comma or the closing brace"},
                    BadLine{R"({@)", "the line ends inside the object that begins at column 1"},
                    BadLine{R"({"show":["v2"]@)", "the line ends inside the object"},
                    BadLine{R"({"show":["v2"],@})", "a comma stands before this brace"},
                    BadLine{R"({"show":["v2",@]})", "a comma stands before this bracket"},
                    BadLine{R"({"show" @["v2"]})", "expected a colon"},
                    BadLine{R"({@'show':["v2"]})", "text stands in double quotes"},
                    BadLine{R"({"show":["v2"]} @{})", "the line has ended before this"},
                    BadLine{R"({"show":[@"v2]})", "this text has no closing quote"},
                    BadLine{R"({"time":@01})", "is no JSON number"},
                    BadLine{R"({"time":@1.})", "is no JSON number"},
                    BadLine{R"({"delete":["@\q"]})", "no JSON escape"},
                    BadLine{"{\"delete\":[\"/@\xff\"]}", "is no UTF-8"},
                    BadLine{"{\"delete\":[\"/@\x01\"]}", "the control byte 0x01"},
                    BadLine{R"(@// a comment)", "JSON has no comments"}));

INSTANTIATE_TEST_SUITE_P(
    OfMembers, BadChangeLine,
    testing::Values(
        BadLine{R"({@"updat":[]})", "did you mean \"update\"?"},
        BadLine{R"({@"v2":[]})", "\"v2\" is unknown here"},
        BadLine{R"({"show":[],@"show":[]})", "this object has had \"show\" already"},
        BadLine{R"({"time":@"1"})", "expected a number, found text"},
        BadLine{R"({"time":@null})", "expected a number, found null"},
        BadLine{R"({"time":@1e12})", "is no time"}, BadLine{R"({"time":@1e999})", "is no time"},
        BadLine{R"({"delete":@"/x"})", "expected an array, found text"},
        BadLine{R"({"delete":[@1]})", "expected text, found a number"},
        BadLine{R"({"delete":[@{}]})", "expected text, found an object"},
        BadLine{R"({"update":@{}})", "expected an array, found an object"},
        BadLine{R"({"update":[@"x"]})", "expected an object, found text"},
        BadLine{R"({"update":[@{}]})", "the member \"path\" is missing"},
        BadLine{R"({"update":[@{"value":1}]})", "the member \"path\" is missing"},
        BadLine{R"({"update":[@{"path":"$ORIGIN/tags"}]})", "the member \"value\" is missing"},
        BadLine{R"({"replace":[@{"path":"$ORIGIN"}]})", "the member \"value\" is missing"},
        BadLine{R"({"update":[@{"path":"$ORIGIN/match/dst-ip"}]})",
                "the member \"value\" is missing"},
        BadLine{R"({"update":[{"path":"$ORIGIN",@"vaule":{}}]})", "did you mean \"value\"?"},
        BadLine{R"({"update":[{"path":"$ORIGIN","value":{},@"value":{}}]})",
                "this object has had \"value\" already"},
        BadLine{R"({"update":[{"path":@7,"value":{}}]})", "expected text, found a number"},
        BadLine{R"({"control":@"strat"})", "did you mean \"start\"?"},
        BadLine{R"({"control":@true})", "expected text, found true or false"},
        BadLine{R"({"control":"stop","tree":@"policies"})",
                "expected one of policy, service-device"},
        BadLine{R"({@"tree":"policy"})", "here is no \"control\""},
        BadLine{R"({"signal":@"false"})", "expected true or false, found text"},
        BadLine{R"({"signal":@0})", "expected true or false, found a number"},
        BadLine{R"({"show":@"v2"})", "expected an array, found text"},
        BadLine{R"({"show":[@"v1"]})", "did you mean \"v2\"?"},
        BadLine{R"({"show":["v2",@"v2"]})", "stands here twice"}));

INSTANTIATE_TEST_SUITE_P(
    OfPaths, BadChangeLine,
    testing::Values(
        BadLine{R"({"delete":["@"]})", "a path begins with /"},
        BadLine{R"({"delete":["@policy-source"]})", "a path begins with /"},
        BadLine{R"({"delete":["/@policy-source"]})", "write \"vela-l3:policy-source\""},
        BadLine{R"({"delete":["/@vela-l3:policy-sourc"]})",
                "did you mean \"vela-l3:policy-source\"?"},
        BadLine{R"({"delete":["/vela-l3:policy-source/@"]})", "a name is missing behind this /"},
        BadLine{R"({"delete":["/vela-l3:policy-source/@polcy-set"]})",
                "did you mean \"policy-set\"?"},
        BadLine{R"({"delete":["/vela-l3:policy-source/@vela-l3v2:policy-set"]})",
                "names the wrong module"},
        BadLine{R"({"delete":["/vela-l3:policy-source/policy-set/@policy"]})",
                "which entry of policy-set is meant? Write policy-set[device-name='...']"},
        BadLine{R"({"delete":["/vela-l3:policy-source@[x='1']"]})", "has no entries"},
        BadLine{R"({"delete":["/vela-l3:policy-source/policy-set@[1]"]})", "not by its position"},
        BadLine{R"({"delete":["/vela-l3:policy-source/policy-set@[]"]})",
                "expected a key and its value"},
        BadLine{R"({"delete":["/vela-l3:policy-source/policy-set@[device-name"]})",
                "expected a key and its value"},
        BadLine{R"({"delete":["/vela-l3:policy-source/policy-set@[device-name='fw1'"]})",
                "this bracket is not closed"},
        BadLine{R"({"delete":["/vela-l3:policy-source/policy-set[device-name=@'fw1]"]})",
                "this quote is not closed"},
        BadLine{R"({"delete":["/vela-l3:policy-source/policy-set[device-name='fw1'@x]"]})",
                "behind the key's value; expected ]"},
        BadLine{R"({"delete":["/vela-l3:policy-source/policy-set[@devicename='fw1']"]})",
                "did you mean \"device-name\"?"},
        BadLine{R"({"delete":["/vela-l3:policy-source/policy-set[@.='fw1']"]})", "is unknown"},
        BadLine{R"({"delete":["/vela-l3:policy-source/policy-set[@policy='fw1']"]})",
                "\"policy\" is no key of policy-set"},
        BadLine{
            R"({"delete":["/vela-l3:policy-source/policy-set[device-name='a'][@device-name='b']"]})",
            "stands here twice"},
        BadLine{R"({"delete":["/vela-l3:policy-source/policy-set[device-name='@']"]})",
                "at least 1 character"},
        BadLine{R"({"delete":["$POLICY@x"]})", "expected / before the next name"},
        BadLine{R"({"delete":["$POLICY/rule[priority='@9999']"]})", "10000"},
        BadLine{R"({"delete":["$POLICY/rule[priority='@30001']"]})", "30000"},
        BadLine{R"({"delete":["$POLICY/rule[priority='@many']"]})", "many"},
        BadLine{R"({"delete":["$ORIGIN/match/dst-ip[@name='10.0.0.0/8']"]})",
                "is named by its value alone: dst-ip[.='...']"},
        BadLine{R"({"delete":["$ORIGIN/match/dst-ip[.='@10.0.0.0/33']"]})", "10.0.0.0/33"},
        BadLine{R"({"delete":["$ORIGIN/match/dst-ip[.='10.0.0.0/8'][@.='10.0.0.0/8']"]})",
                "is named by its value alone"},
        BadLine{R"({"delete":["$ORIGIN/match/dst-ip[.='10.0.0.0/8']/@x"]})",
                "there is nothing below dst-ip"},
        BadLine{R"({"delete":["$ORIGIN/tags/@x"]})", "there is nothing below tags"},
        BadLine{R"({"delete":["$ORIGIN/match/dst-ip-range@[first='10.0.0.1']"]})",
                "the key \"last\" is missing"},
        BadLine{R"({"delete":["$ORIGIN/match/l3-app[.='@256']"]})", "256"},
        BadLine{R"({"delete":["$ORIGIN/policy-modifier[.='@statless']"]})", "statless"},
        BadLine{R"({"delete":[@"$ORIGIN/name"]})", "name is a key and goes with its entry"},
        BadLine{R"({"notify":[@"$ORIGIN/name"]})", "name is a key and never changes"},
        BadLine{R"({"notify":[@"/vela-l3:policy-source"]})", "name an attribute or an entry in it"},
        BadLine{R"({"update":[{"path":@"$ORIGIN/name","value":"x"}]})", "never changes"},
        BadLine{R"({"delete":["/@vela-l3v2:policy-source"]})",
                "state that the translation alone writes"},
        BadLine{
            R"({"update":[{"path":"/vela-policy-monitor:status/device-policy-list[device-name=a]/@policy-converge","value":true}]})",
            "cannot be changed from outside"},
        BadLine{
            R"({"notify":["/vela-policy-monitor:status/device-policy-list[device-name=a]/@service-device-converge"]})",
            "cannot be changed from outside"},
        BadLine{R"({"delete":["/vela-l3:policy\u002dsource/@polcy-set"]})",
                "did you mean \"policy-set\"?"},
        BadLine{R"({"delete":["/vela-l3:policy-source/policy-set[device-name='@a\u0000b']"]})",
                "must not hold NUL"}));

INSTANTIATE_TEST_SUITE_P(
    OfValues, BadChangeLine,
    testing::Values(
        BadLine{R"({"update":[{"path":"$ORIGIN/tags","value":@1}]})", "text stands in quotes"},
        BadLine{R"({"update":[{"path":"$ORIGIN/tags","value":@["a"]}]})", "found an array"},
        BadLine{R"({"update":[{"path":"$ORIGIN/log","value":@"true"}]})",
                "write true without quotes"},
        BadLine{R"({"update":[{"path":"$ORIGIN/action","value":@"fwd"}]})", "fwd"},
        BadLine{R"({"update":[{"path":"$ORIGIN","value":@[]}]})",
                "expected an object, found an array"},
        BadLine{R"({"update":[{"path":"$ORIGIN","value":{@"tag":"x"}}]})",
                "did you mean \"tags\"?"},
        BadLine{R"({"update":[{"path":"$ORIGIN","value":{"name":@"ftp"}}]})",
                "the path has the name \"web\", the value \"ftp\""},
        BadLine{R"({"update":[{"path":"$POLICY/rule","value":@{}}]})",
                "expected an array, found an object"},
        BadLine{R"({"update":[{"path":"$POLICY/rule","value":[@{}]}]})",
                "the key \"priority\" is missing"},
        BadLine{R"({"update":[{"path":"$POLICY/rule","value":[{"priority":@9999}]}]})", "9999"},
        BadLine{
            R"({"update":[{"path":"$POLICY/rule","value":[{"priority":20000},@{"priority":20000}]}]})",
            "this entry is in the list already"},
        BadLine{
            R"({"replace":[{"path":"$ORIGIN/match/dst-ip","value":["10.1.0.0/8",@"10.2.0.0/8"]}]})",
            "which is in the list already"},
        BadLine{R"({"update":[{"path":"$ORIGIN/match/dst-ip","value":@"10.0.0.0/8"}]})",
                "expected an array, found text"},
        BadLine{
            R"({"update":[{"path":"$ORIGIN/match/dst-ip[.=10.0.0.0/8]","value":@"11.0.0.0/8"}]})",
            "the path has the dst-ip \"10.0.0.0/8\""},
        BadLine{R"({"update":[{"path":"$ORIGIN/match/dst-l4-app","value":[@{"port":1}]}]})",
                "the key \"protocol\" is missing"},
        BadLine{
            R"({"update":[{"path":"$ORIGIN/match/dst-l4-app[port=1][protocol=6]","value":{"port":1,@"prot":6}}]})",
            "did you mean \"port\"?"},
        BadLine{
            R"({"update":[{"path":"/vela-policy-monitor:status/device-policy-list[device-name=a]","value":{@"policy-converge":true}}]})",
            "state that the translation alone writes"},
        BadLine{
            R"({"update":[{"path":"/vela-policy-monitor:status/device-policy-list[device-name=a]/net-vrf-name-by-vrf[vrf-name=red]","value":{"net-vrf-name":@5}}]})",
            "text stands in quotes"},
        BadLine{R"({"update":[{"path":"$POLICY/timestamp","value":@1.5}]})",
                "a decimal stands in quotes"},
        BadLine{R"({"update":[{"path":"/vela-l3:policy-source","value":{"policy-set":[@7]}}]})",
                "expected an object, found a number"}));

TEST(ReplayLog, SaysUpTo20ErrorsOfARunAndThatThereMayBeMore) {
  std::string text;
  for (int i = 0; i < 30; ++i) {
    text += "{\"time\":null}\n";
  }
  const Folder folder;
  const Outcome outcome = runVpm({"replay", folder.write("a.log", text)});
  EXPECT_EQ(outcome.exitCode, 2);
  EXPECT_NE(outcome.err.find("vpm: 20 errors; there may be more; nothing was applied"),
            std::string::npos)
      << outcome.err;
}

TEST(ReplayLog, ShowsTheSourceLineWithACaretAndTheDataPath) {
  const Folder folder;
  const std::string log = folder.write(
      "a.log",
      R"({"update":[{"path":"/vela-l3:policy-source/policy-set[device-name=a]","value":{"policy":7}}]})");
  const Outcome outcome = runVpm({"replay", log});
  EXPECT_EQ(outcome.err, log +
                             R"(:1:89: error: expected an array, found a number
    1 | ...:policy-source/policy-set[device-name=a]","value":{"policy":7}}]}
      |                                                                ^
        at /vela-l3:policy-source/policy-set[device-name='a']/policy
vpm: 1 error; nothing was applied
)");
}

TEST(ReplayLog, ThatCannotBeReadIsWrongInput) {
  const Outcome outcome = runVpm({"replay", "/nonexistent/a.log"});
  EXPECT_EQ(outcome.exitCode, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_NE(outcome.err.find("/nonexistent/a.log: error: cannot be read"), std::string::npos);
}

}  // namespace
