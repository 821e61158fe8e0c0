#include "control/Show.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/control/FakeAgent.h"

namespace HostTests {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kPolicy =
    R"("vela-l3v2:policy-source":{"policy-set":[{"device-name":"fw1","policy":[)"
    R"({"net-vrf-name":"net red","timestamp":"12.500000","rule":[{"priority":20000,"origin":[)"
    R"({"name":"web","tags":"","policy-modifier":["stateless"],"action":"drop",)"
    R"("log-enabled":true,"match":{"dst-ip":["10.1.0.0/16","10.2.0.0/16","10.3.0.0/16",)"
    R"("10.4.0.0/16","2001:db8::/32"],"dst-ip-range":[{"first":"10.0.0.1","last":"10.0.0.9"}],)"
    R"("dst-l4-app":[{"port":443,"protocol":6}],"dst-l4-app-range":)"
    R"([{"first":1,"last":9,"protocol":17}]}}]}]}]}]})";

std::string dataOf(const std::string& document) { return R"(,"data":{)" + document + "}"; }

TEST(Show, PrintsATreeThatFitsATerminal) {
  const FakeAgent agent(always(dataOf(kPolicy)));
  const Outcome outcome = agent.ctl({"show"});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out, R"(vela-l3v2:policy-source
  policy-set fw1
    policy "net red" timestamp=12.500000
      rule 20000
        origin web tags="" action=drop log-enabled=true
          policy-modifier stateless
          match
            dst-ip 10.1.0.0/16 10.2.0.0/16 10.3.0.0/16 10.4.0.0/16 2001:db8::/32
            dst-ip-range 10.0.0.1-10.0.0.9
            dst-l4-app 443/6
            dst-l4-app-range 1-9/17
)");
}

TEST(Show, BreaksLongLinesButNoName) {
  std::string prefixes = R"("172.16.0.0/24")";
  for (int i = 1; i < 12; ++i) {
    prefixes += R"(,"172.16.)" + std::to_string(i) + R"(.0/24")";
  }
  const std::string name(100, 'n');
  const FakeAgent agent(always(dataOf(
      R"("vela-l3v2:service-device-source":{"service-device":[{"device-name":")" + name +
      R"(","net-vrf":[{"net-vrf-name":"n","vrf-name":"v","l3-intf":[{"address":"10.0.0.1",)" +
      R"("reachable-subnet":[)" + prefixes + "]}]}]}]}")));
  EXPECT_EQ(agent.ctl({"show"}).out,
            "vela-l3v2:service-device-source\n  service-device\n      " + name + R"(
    net-vrf n vrf-name=v
      l3-intf 10.0.0.1
        reachable-subnet 172.16.0.0/24 172.16.1.0/24 172.16.2.0/24 172.16.3.0/24
                         172.16.4.0/24 172.16.5.0/24 172.16.6.0/24 172.16.7.0/24
                         172.16.8.0/24 172.16.9.0/24 172.16.10.0/24
                         172.16.11.0/24
)");
}

TEST(Show, PrintsTheSameJsonThatTranslatePrints) {
  const Folder folder;
  const std::string document = folder.write("site.json", R"({"vela-l3:policy-source":{"policy-set":
    [{"device-name":"fw1","policy":[{"vrf-name":"red","rule":[{"priority":20000,"origin":[
    {"name":"web","tags":"a \"b\" \n","match":{"dst-ip":["10.1.0.0/16","10.2.0.0/16"],
    "dst-l4-app":[{"port":443,"protocol":6}]}}]}]}]}]},"vela-policy-monitor:status":
    {"device-policy-list":[{"device-name":"fw1","traffic-inspection":"local",
    "net-vrf-name-by-vrf":[{"vrf-name":"red","net-vrf-name":"net-red"}]}]}})");
  const std::string translated = runVpm({"translate", document}).out;
  ASSERT_THAT(translated, HasSubstr("net-red"));
  std::string line = translated;
  std::erase(line, '\n');
  FakeAgent agent(
      [&](std::size_t, const std::string&) { return R"({"line":1,"data":)" + line + "}\n"; });
  EXPECT_EQ(agent.ctl({"show", "--v2", "--status", "--json"}).out, translated);
  EXPECT_THAT(agent.told(), ElementsAre(R"({"request":"show","of":["v2","status"]})"));
}

TEST(Show, AsksForWhatIsAtAPathOfAnyModule) {
  FakeAgent agent(always(dataOf("")));
  const std::string v1 = "/vela-l3:policy-source/policy-set[device-name='fw1']";
  const std::string status = "/vela-policy-monitor:status";
  EXPECT_EQ(agent.ctl({"show", v1}).err, "vpm: there is nothing at " + v1 + "\n");
  EXPECT_EQ(agent.ctl({"show", status, "--json"}).out, "{}\n");
  EXPECT_EQ(agent.ctl({"show", status, "--v2"}).exitCode, 2);
  agent.ctl({"show"});
  EXPECT_THAT(agent.told(), ElementsAre(R"({"request":"show","path":")" + v1 + "\"}",
                                        R"({"request":"show","path":")" + status + "\"}",
                                        R"({"request":"show","of":["v2"]})"));
}

TEST(Show, RefusesAPathThatIsNoneAndShowsWhere) {
  FakeAgent agent(always(""));
  const Outcome outcome = agent.ctl({"show", "/vela-l3v2:policy-source/policy-sets"});
  EXPECT_EQ(outcome.exitCode, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, HasSubstr("PATH:1:26: error: "));
  EXPECT_THAT(outcome.err, HasSubstr("did you mean \"policy-set\"?"));
  EXPECT_THAT(agent.told(), ElementsAre());
}

}  // namespace
}  // namespace HostTests
