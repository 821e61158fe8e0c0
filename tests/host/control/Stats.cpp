#include "control/Stats.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/control/FakeAgent.h"

namespace HostTests {
namespace {

using testing::HasSubstr;

constexpr const char* kStats =
    R"(,"stats":{"applied":12,"failed":1,"types":[{"type":"Vela::Rule","objects":7,"bytes":896},)"
    R"({"type":"a\"b\\c\nd","objects":1000000,"bytes":2}],"uptime":86400,"new-count":5})";

TEST(Stats, PrintsListsAndTablesThatFitATerminal) {
  const FakeAgent agent(always(kStats));
  const Outcome outcome = agent.ctl({"stats"});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(outcome.out, R"(applied       12
failed         1
uptime     86400
new-count      5

TYPE        OBJECTS  BYTES
Vela::Rule        7    896
a"b\c\x0ad  1000000      2
)");
}

TEST(Stats, PutsANameThatIsTooWideOnALineOfItsOwn) {
  const std::string name(90, 'n');
  const FakeAgent agent(always(R"(,"stats":{"types":[{"type":")" + name +
                               R"(","objects":1,"bytes":2},{"type":"x","objects":3,"bytes":4}]})"));
  const std::string blanks(80 - 16, ' ');
  EXPECT_EQ(agent.ctl({"stats"}).out, "\nTYPE" + blanks.substr(4) + "  OBJECTS  BYTES\n" + name +
                                          "\n" + blanks + "        1      2\nx" + blanks.substr(1) +
                                          "        3      4\n");
}

TEST(Stats, PrintsWhatPrometheusCollects) {
  const FakeAgent agent(always(kStats));
  EXPECT_EQ(agent.ctl({"stats", "--prometheus"}).out,
            R"(# HELP vpm_change_lines_applied_total Change lines applied without an error.
# TYPE vpm_change_lines_applied_total counter
vpm_change_lines_applied_total 12
# HELP vpm_change_lines_failed_total Change lines with an error, refused or not.
# TYPE vpm_change_lines_failed_total counter
vpm_change_lines_failed_total 1
# HELP vpm_uptime_seconds How long the agent has been running.
# TYPE vpm_uptime_seconds gauge
vpm_uptime_seconds 86400
# HELP vpm_new_count A count of the agent.
# TYPE vpm_new_count untyped
vpm_new_count 5
# HELP vpm_objects Objects that exist, by type.
# TYPE vpm_objects gauge
vpm_objects{type="Vela::Rule"} 7
vpm_objects{type="a\"b\\c\nd"} 1000000
# HELP vpm_object_bytes Bytes of the objects that exist, by type.
# TYPE vpm_object_bytes gauge
vpm_object_bytes{type="Vela::Rule"} 896
vpm_object_bytes{type="a\"b\\c\nd"} 2
)");
}

TEST(Stats, PrintsWhatEntitiesDidForPrometheus) {
  const FakeAgent agent(
      always(R"(,"stats":{"entities":[{"type":"T","notifications":9,"unchanged-writes":2}]})"));
  EXPECT_EQ(agent.ctl({"stats", "--prometheus"}).out,
            R"(# HELP vpm_notifications_total Changes that entities published, by type.
# TYPE vpm_notifications_total counter
vpm_notifications_total{type="T"} 9
# HELP vpm_unchanged_writes_total Writes to entities that found what they wrote, by type.
# TYPE vpm_unchanged_writes_total counter
vpm_unchanged_writes_total{type="T"} 2
)");
}

TEST(Stats, PrintsJson) {
  const FakeAgent agent(always(kStats));
  EXPECT_THAT(agent.ctl({"stats", "--json"}).out,
              HasSubstr(R"(    { "type": "Vela::Rule", "objects": 7, "bytes": 896 },)"));
}

TEST(Stats, RefusesTwoFormsAtOnce) {
  const FakeAgent agent(always(kStats));
  const Outcome outcome = agent.ctl({"stats", "--json", "--prometheus"});
  EXPECT_EQ(outcome.exitCode, 2);
  EXPECT_EQ(outcome.out, "");
}

}  // namespace
}  // namespace HostTests
