#include "change/TreeComparison.h"

#include <gtest/gtest.h>

#include <sstream>

#include "change/ChangeWriter.h"
#include "change/TreeEditor.h"
#include "data/TreeWriter.h"
#include "document/Configuration.h"
#include "host/Running.h"

namespace HostTests {
namespace {

/// Trees with what a document says.
class Loaded : public Host::Trees {
 public:
  explicit Loaded(const std::string& text) {
    std::ostringstream said;
    Host::Report report(said, false);
    Host::Progress progress(said, false);
    Host::readConfiguration(Host::SourceText("document", text), *this, report, progress);
    EXPECT_EQ(said.str(), "");
  }

  std::string text() const {
    Host::TextSink sink;
    Host::JsonWriter json(sink, Host::Layout::compact);
    json.openObject();
    for (const Host::Node* const top : Host::Schema::instance().tops()) {
      if (!top->state) {
        Host::TreeWriter(json, Host::Content::configuration).container(*top, *this);
      }
    }
    json.closeObject();
    json.endLine();
    return sink.text();
  }
};

const std::string kSet = "/vela-l3:policy-source/policy-set[device-name='fw1']";
const std::string kPolicy = kSet + "/policy[vrf-name='red']";
const std::string kRule = kPolicy + "/rule[priority='20000']";
const std::string kWeb = kRule + "/origin[name='web']";
const std::string kRecord = "/vela-policy-monitor:status/device-policy-list[device-name='fw1']";

std::string policy(const std::string& members) {
  return R"({"vela-l3:policy-source":{"policy-set":[{"device-name":"fw1","policy":[{"vrf-name":"red")" +
         (members.empty() ? "" : "," + members) + "}]}]}}";
}
std::string origin(const std::string& members) {
  return policy(R"("rule":[{"priority":20000,"origin":[{"name":"web")" +
                (members.empty() ? "" : "," + members) + "}]}]");
}
std::string record(const std::string& members) {
  return R"({"vela-policy-monitor:status":{"device-policy-list":[{"device-name":"fw1",)" + members +
         "}]}}";
}

/// The change from `before` to `after`, for what runs; applied, it must lead to `expected`.
std::string changeOf(const std::string& before, const std::string& after,
                     const std::string& running, const std::string& expected) {
  const Loaded one(before);
  const Loaded two(after);
  const Loaded live(running);
  const Host::Change change = Host::TreeComparison(one, two, live).run();
  Host::TextSink sink;
  Host::JsonWriter json(sink, Host::Layout::compact);
  Host::ChangeWriter(json).line(change);
  Host::Touched touched;
  Host::TreeEditor(live, touched).edit(change);
  EXPECT_EQ(live.text(), Loaded(expected).text());
  return sink.text().substr(0, sink.text().size() - 1);
}
std::string changeOf(const std::string& before, const std::string& after) {
  return changeOf(before, after, before, after);
}
std::string updateOf(const std::string& path, const std::string& value) {
  return R"({"update":[{"path":")" + path + R"(","value":)" + value + "}]}";
}

TEST(TreeComparison, OfEqualStatesIsNoChange) {
  EXPECT_EQ(changeOf(origin(R"("tags":"a","match":{"l3-app":[6]})"),
                     origin(R"("match":{"l3-app":[6]},"tags":"a")")),
            "{}");
}

TEST(TreeComparison, TellsLeavesThatDifferAlone) {
  EXPECT_EQ(changeOf(origin(R"("tags":"a","log":true)"), origin(R"("tags":"b","log":true)")),
            updateOf(kWeb + "/tags", R"("b")"));
  EXPECT_EQ(changeOf(origin(R"("tags":"a","action":"drop")"), origin(R"("tags":"a")")),
            updateOf(kWeb + "/action", R"("forward")"));
}

TEST(TreeComparison, TellsEntriesThatCameWholeAndWithoutWhatTheyDoNotSay) {
  EXPECT_EQ(changeOf(policy(""), origin(R"("log":true,"match":{"src-ip":["10.0.0.0/8"],)"
                                        R"("dst-l4-app":[{"port":80,"protocol":6}]})")),
            updateOf(kRule, R"({"origin":[{"name":"web","match":{"src-ip":["10.0.0.0/8"],)"
                            R"("dst-l4-app":[{"port":80,"protocol":6}]},"log":true}]})"));
}

TEST(TreeComparison, TellsOfTheRecordBeforeTheDeviceThatIsToFindIt) {
  const std::string device = R"({"vela-l3:policy-source":{"policy-set":[{"device-name":"fw1"}]},)";
  const std::string names = R"("net-vrf-name-by-vrf":[{"vrf-name":"red","net-vrf-name":"n"}])";
  EXPECT_EQ(changeOf("{}", device + record(names).substr(1)),
            R"({"update":[{"path":")" + kRecord + R"(","value":{)" + names + R"(}},{"path":")" +
                kSet + R"(","value":{}}]})");
}

TEST(TreeComparison, TellsEntriesThatWent) {
  EXPECT_EQ(changeOf(origin(""), policy("")), R"({"delete":[")" + kRule + R"("]})");
  EXPECT_EQ(changeOf(origin(R"("match":{})"), origin("")),
            R"({"delete":[")" + kWeb + R"(/match"]})");
}

TEST(TreeComparison, TellsMembersOfLeafListsAndRecords) {
  EXPECT_EQ(
      changeOf(origin(R"("match":{"l3-app":[1,6],"dst-l4-app":[{"port":80,"protocol":6}]})"),
               origin(R"("match":{"l3-app":[6,17],"dst-l4-app":[{"port":81,"protocol":6}]})")),
      R"({"delete":[")" + kWeb + R"(/match/l3-app[.='1']",")" + kWeb +
          R"(/match/dst-l4-app[port='80'][protocol='6']"],"update":[{"path":")" + kWeb +
          R"(/match/l3-app[.='17']"},{"path":")" + kWeb +
          R"(/match/dst-l4-app[port='81'][protocol='6']","value":{}}]})");
}

TEST(TreeComparison, TellsPairsOfAMapping) {
  const auto pair = [](const std::string& vrf, const std::string& name) {
    return R"({"vrf-name":")" + vrf + R"(","net-vrf-name":")" + name + "\"}";
  };
  EXPECT_EQ(
      changeOf(record(R"("net-vrf-name-by-vrf":[)" + pair("a", "x") + "," + pair("b", "y") + "]"),
               record(R"("net-vrf-name-by-vrf":[)" + pair("b", "z") + "]")),
      R"({"delete":[")" + kRecord + R"(/net-vrf-name-by-vrf[vrf-name='a']"],"update":[{"path":")" +
          kRecord + R"(/net-vrf-name-by-vrf[vrf-name='b']","value":{"net-vrf-name":"z"}}]})");
}

TEST(TreeComparison, LeavesTheTimeOfASignalThatIsNotSaidAnyMore) {
  const std::string stamped = policy(R"("timestamp":"5.000000")");
  EXPECT_EQ(changeOf(stamped, policy(""), stamped, stamped), "{}");
  EXPECT_EQ(changeOf(stamped, policy(R"("timestamp":"6.000000")")),
            updateOf(kPolicy + "/timestamp", R"("6.000000")"));
}

TEST(TreeComparison, LeavesWhatWasChangedOtherwise) {
  EXPECT_EQ(changeOf(origin(R"("tags":"a")"), origin(R"("tags":"a","log":true)"),
                     origin(R"("tags":"own","match":{})"),
                     origin(R"("tags":"own","match":{},"log":true)")),
            updateOf(kWeb + "/log", "true"));
}

TEST(TreeComparison, LeavesOutWhatIsAsItShouldBeAlready) {
  EXPECT_EQ(changeOf(origin(R"("tags":"a","match":{"l3-app":[1]})"), origin(R"("tags":"b")"),
                     origin(R"("tags":"b")"), origin(R"("tags":"b")")),
            "{}");
  EXPECT_EQ(changeOf(policy(""), origin(R"("tags":"a")"), origin(R"("tags":"a")"),
                     origin(R"("tags":"a")")),
            "{}");
}

TEST(TreeComparison, BringsAnEntryBackWholeWhenSomethingInItHasChanged) {
  EXPECT_EQ(changeOf(origin(R"("tags":"a","log":true)"), origin(R"("tags":"b","log":true)"),
                     policy(""), origin(R"("tags":"b","log":true)")),
            updateOf(kRule, R"({"origin":[{"name":"web","tags":"b","log":true}]})"));
  EXPECT_EQ(changeOf(origin(R"("tags":"a")"), origin(R"("tags":"a")"), policy(""), policy("")),
            "{}");
}

}  // namespace
}  // namespace HostTests
