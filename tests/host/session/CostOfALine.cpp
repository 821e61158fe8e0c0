#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Kel/TextTrace.h"
#include "change/ChangeReader.h"
#include "session/Session.h"
#include "text/SourceText.h"

namespace HostTests {
namespace {

/// How many writes and announcements, and how many objects, one line makes on a tree of `rules`.
std::vector<std::size_t> costOf(const std::string& line, int rules) {
  const Host::Trees trees;
  Host::VirtualClock clock(1);
  Host::Translation translation(trees);
  Host::Session session(trees, translation, clock);
  Host::ChangeReader reader;
  const auto apply = [&](const std::string& text) {
    const Host::SourceText source("line", text);
    Host::Change change;
    EXPECT_TRUE(reader.read(source.text(), change).empty()) << text;
    EXPECT_FALSE(session.apply(change)) << text;
  };
  std::string entries;
  for (int i = 0; i < rules; ++i) {
    entries += (i == 0 ? "" : ",") + std::string(R"({"priority":)") + std::to_string(10001 + i) +
               R"(,"origin":[{"name":"a","match":{"l3-app":[6]}}]})";
  }
  apply(R"({"control":"start","update":[{"path":"/vela-l3:policy-source","value":{"policy-set":)"
        R"([{"device-name":"fw1","policy":[{"vrf-name":"red","rule":[)" +
        entries +
        R"(]}]}]}},{"path":"/vela-policy-monitor:status","value":{"device-policy-list":)"
        R"([{"device-name":"fw1","net-vrf-name-by-vrf":[{"vrf-name":"red",)"
        R"("net-vrf-name":"n"}]}]}}]})");
  const std::size_t writes = session.statistics().writes;
  std::size_t published = 0;
  const auto countLines =
      Kel::TextTrace::callbackSink([&published](const Kel::TextTrace::Line&) { ++published; });
  auto& facility = Kel::TextTrace::facility("VelaPolicyMonitor");
  const auto levels = facility.levels();
  const auto before = Kel::TextTrace::sinkIs(countLines);
  facility.levelsAre(Kel::TextTrace::kAllLevels);
  apply(line);
  facility.levelsAre(levels);
  Kel::TextTrace::sinkIs(before);
  return {session.statistics().writes - writes, published};
}

TEST(CostOfALine, IsThatOfTheLineAndNotOfTheTree) {
  const std::string rule =
      "/vela-l3:policy-source/policy-set[device-name=fw1]/policy[vrf-name=red]"
      "/rule[priority=10005]";
  const std::vector<std::string> lines{
      R"({"update":[{"path":")" + rule + R"(/origin[name=a]/tags","value":"x"}]})",
      R"({"update":[{"path":")" + rule + R"(/origin[name=b]","value":{"match":{}}}]})",
      R"({"replace":[{"path":")" + rule + R"(","value":{"origin":[{"name":"c"}]}}]})",
      R"({"delete":[")" + rule + R"("]})",
      R"({"notify":[")" + rule + R"(/origin[name=a]/match"]})"};
  for (const std::string& line : lines) {
    const auto small = costOf(line, 10);
    EXPECT_GT(small[0], 0U) << line;
    EXPECT_GT(small[1], 0U) << line;
    EXPECT_EQ(small, costOf(line, 2000)) << line;
  }
}

}  // namespace
}  // namespace HostTests
