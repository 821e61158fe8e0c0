#include "agent/Trial.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/agent/RunningAgent.h"

namespace HostTests {
namespace {

using testing::HasSubstr;

constexpr const char* kSite = R"({"vela-l3:policy-source":{"policy-set":[{"device-name":"fw1",
  "policy":[{"vrf-name":"red","rule":[{"priority":20000}]},{"vrf-name":"blue"}]}]},
  "vela-policy-monitor:status":{"device-policy-list":[{"device-name":"fw1",
  "net-vrf-name-by-vrf":[{"vrf-name":"red","net-vrf-name":"net-red"}]}]}})";

constexpr const char* kDevice =
    "/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']";
constexpr const char* kDevice2 =
    "/vela-l3v2:policy-source/policy-set[device-name='fw1']/policy[net-vrf-name='net-red']";

class Trial : public testing::Test {
 protected:
  /// The answer to a `try` of this change line.
  std::string tried(const std::string& change) {
    return client_.ask(R"({"request":"try","change":)" + change + "}");
  }

  Folder folder_;
  RunningAgent agent_{folder_,
                      {"--config", folder_.write("site.json", kSite), "--record",
                       folder_.path("record"), "--trace", folder_.path("trace")}};
  TestClient client_ = agent_.client();
};

TEST_F(Trial, TellsWhatWouldChange) {
  const std::string answer =
      tried(R"({"delete":[")" + std::string(kDevice) + R"(/rule[priority='20000']"]})");
  EXPECT_THAT(answer, testing::StartsWith(R"({"line":1,"changes":[{"event":"remove","path":")" +
                                          std::string(kDevice2) +
                                          R"(/rule[priority='20000']"},{"event":"set","path":")" +
                                          kDevice2 + R"(/timestamp","value":")"));
  EXPECT_THAT(answer, testing::EndsWith(R"("}],"warnings":[]})"));
}

TEST_F(Trial, ChangesNothing) {
  const std::string before = client_.ask(R"({"request":"show","of":["v1","v2","status"]})");
  const std::string record = folder_.read("record");
  const std::string trace = folder_.read("trace");
  tried(R"({"delete":["/vela-l3:policy-source/policy-set[device-name='fw1']"]})");
  const std::string after = client_.ask(R"({"request":"show","of":["v1","v2","status"]})");
  EXPECT_EQ(after.substr(after.find(',')), before.substr(before.find(',')));
  EXPECT_EQ(folder_.read("record"), record);
  EXPECT_EQ(folder_.read("trace"), trace);
  EXPECT_THAT(client_.ask(R"({"request":"stats"})"), HasSubstr(R"("applied":0,"failed":0,)"));
}

TEST_F(Trial, TellsAWatchNothing) {
  TestClient watching = agent_.client();
  watching.send(R"({"request":"watch"})"
                "\n");
  while (watching.line().find("synchronized") == std::string::npos) {
  }
  tried(R"({"delete":["/vela-l3:policy-source/policy-set[device-name='fw1']"]})");
  EXPECT_THAT(watching.ask(R"({"request":"show"})"), HasSubstr(R"({"line":2,"data":)"));
}

TEST_F(Trial, WarnsOfWhatAnAuditWouldFind) {
  const std::string answer = tried(
      R"({"update":[{"path":"/vela-policy-monitor:status/device-policy-list[device-name='fw1']/)"
      R"(net-vrf-name-by-vrf[vrf-name='blue']","value":{"net-vrf-name":"net-red"}}]})");
  EXPECT_THAT(answer, HasSubstr(R"("warnings":[")"));
  EXPECT_THAT(answer, HasSubstr("net-red"));
}

TEST_F(Trial, SaysWhyALineWouldBeRefused) {
  EXPECT_THAT(
      tried(R"({"delete":["/vela-l3:policy-source/policy-set[device-name='fw9']"]})"),
      HasSubstr(R"("changes":[],"warnings":[],"error":"nothing to delete at /vela-l3:policy)"));
  EXPECT_THAT(tried(R"({"time":5})"), HasSubstr(R"({"line":2,"error":"\"time\" is for a replay)"));
  EXPECT_THAT(tried(R"({"dele":[]})"), HasSubstr(R"("error":"column )"));
}

}  // namespace
}  // namespace HostTests
