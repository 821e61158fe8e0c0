// What ChangeWriter writes is what ChangeReader has read.

#include "change/ChangeWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "change/ChangeReader.h"
#include "text/SourceText.h"

namespace Host {
namespace {

const std::string kPolicy =
    "/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']";
const std::string kOrigin = kPolicy + "/rule[priority='20000']/origin[name='web']";
const std::string kRecord = "/vela-policy-monitor:status/device-policy-list[device-name='fw1']";

Change read(const std::string& line) {
  const SourceText text("line", line);
  Change change;
  const auto faults = ChangeReader().read(text.text(), change);
  EXPECT_TRUE(faults.empty()) << line << ": " << (faults.empty() ? "" : faults.front().message);
  return change;
}

std::string written(const Change& change) {
  TextSink sink;
  JsonWriter json(sink, Layout::compact);
  ChangeWriter(json).line(change);
  return sink.text();
}

class WrittenAsRead : public testing::TestWithParam<std::string> {};

TEST_P(WrittenAsRead, IsTheSameLine) { EXPECT_EQ(written(read(GetParam())), GetParam() + "\n"); }

std::string update(const std::string& path, const std::string& value) {
  return R"({"update":[{"path":")" + path + R"(","value":)" + value + "}]}";
}

INSTANTIATE_TEST_SUITE_P(
    Members, WrittenAsRead,
    testing::Values(
        "{}", R"({"time":0})", R"({"time":12.5})", R"({"time":1732195712.123456})",
        R"({"time":0.1})", R"({"time":-3})", R"({"signal":false})",
        R"({"delete":[")" + kOrigin + R"(","/vela-l3:service-device-source"]})",
        R"({"notify":[")" + kRecord + R"(/net-vrf-name-by-vrf[vrf-name='red']"]})",
        R"({"control":"start"})", R"({"control":"stop"})", R"({"control":"suspend"})",
        R"({"control":"resume","tree":"policy"})",
        R"({"control":"cleanup","tree":"service-device"})", R"({"control":"initialize"})",
        R"({"show":["v2"]})", R"({"show":["v2","status","audit","stats"]})",
        R"({"time":1,"delete":[")" + kOrigin + R"("],"replace":[{"path":")" + kPolicy +
            R"(","value":{}}],"update":[{"path":")" + kPolicy +
            R"(/timestamp","value":"3.000000"}],"notify":[")" + kPolicy +
            R"("],"control":"suspend","tree":"policy","signal":false,"show":["status"]})"));

INSTANTIATE_TEST_SUITE_P(
    Values, WrittenAsRead,
    testing::Values(
        update(kOrigin + "/tags", R"("a \"quoted\" \\ word, a tab\t, é and 🙂")"),
        update(kOrigin + "/log", "true"), update(kOrigin + "/action", R"("redirect")"),
        update(kOrigin + "/policy-modifier", R"(["stateless","symmetric"])"),
        update(kOrigin + "/match", "{}"), update(kOrigin + "/match/src-ip", "[]"),
        update(kOrigin + "/match", R"({"l3-app":[255,0],"src-ip":["10.0.0.0/8","2001:db8::/32"],)"
                                   R"("src-ip-range":[{"first":"10.0.0.1","last":"10.0.0.9"}],)"
                                   R"("dst-l4-app":[{"port":65535,"protocol":6}],)"
                                   R"("src-l4-app-range":[{"first":1,"last":2,"protocol":17}]})"),
        update(kOrigin + "/match/dst-l4-app[port='443'][protocol='6']", "{}"),
        R"({"update":[{"path":")" + kOrigin + R"(/match/dst-ip[.='10.0.0.0/8']"}]})",
        update("/vela-l3:policy-source",
               R"({"policy-set":[{"device-name":"b"},{"device-name":"a","policy":[)"
               R"({"vrf-name":"red","rule":[{"priority":30000,"origin":[{"name":"x"}]}],)"
               R"("timestamp":"0.000001"}]}]})"),
        update("/vela-l3:service-device-source/service-device",
               R"([{"device-name":"fw1","vrf":[{"vrf-name":"red","l3-intf":[)"
               R"({"address":"10.0.0.1","reachable-subnet":["10.1.0.0/16"]}]}]}])"),
        update(kRecord, R"({"net-vrf-name-by-vrf":[{"vrf-name":"red","net-vrf-name":"n"},)"
                        R"({"vrf-name":"blue","net-vrf-name":""},{"vrf-name":"green"}],)"
                        R"("traffic-inspection":"local unified"})"),
        update(kRecord + "/net-vrf-name-by-vrf[vrf-name='red']", R"({"net-vrf-name":"n"})"),
        update(kRecord + "/net-vrf-name-by-vrf[vrf-name='red']", "{}")));

TEST(ChangeWriter, WritesThePairWhoseValueWasNamed) {
  EXPECT_EQ(
      written(read(update(kRecord + "/net-vrf-name-by-vrf[vrf-name=red]/net-vrf-name", R"("n")"))),
      update(kRecord + "/net-vrf-name-by-vrf[vrf-name='red']", R"({"net-vrf-name":"n"})") + "\n");
}

TEST(ChangeWriter, SpellsKeysSoThatTheyAreReadAgain) {
  const std::string list = "/vela-l3:policy-source/policy-set";
  for (const std::string key : {R"([device-name=\"it's\"])", R"([device-name='say \"hi\"'])",
                                R"([device-name=it's \"it\"])", R"([device-name=' blank '])",
                                R"([device-name='a]b'])", R"([device-name='\\:'])"}) {
    const std::string once = written(read(R"({"delete":[")" + list + key + R"("]})"));
    EXPECT_EQ(written(read(once)), once);
  }
}

TEST(ChangeWriter, OfWhatWasAppliedGivesTheTimeAndAsksForNothing) {
  TextSink sink;
  JsonWriter json(sink, Layout::compact);
  ChangeWriter(json).lineApplied(read(R"({"time":3,"control":"stop","show":["v2"]})"), 4.000001);
  EXPECT_EQ(sink.text(), "{\"time\":4.000001,\"control\":\"stop\"}\n");
}

}  // namespace
}  // namespace Host
