#include "protocol/RequestReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "text/SourceText.h"

namespace HostTests {
namespace {

using Host::Request;

constexpr const char* kV2 = "/vela-l3v2:policy-source/policy-set[device-name='fw1']";

/// A line as it lies in a buffer: with padding behind it.
class RequestReader : public testing::Test {
 protected:
  bool isRequest(const std::string& line) {
    return reader_.isRequest(Host::SourceText("line", line).text());
  }
  Request read(const std::string& line) {
    const Host::SourceText source("line", line);
    Request request;
    const auto faults = reader_.read(source.text(), request);
    EXPECT_TRUE(faults.empty()) << line << ": " << (faults.empty() ? "" : faults[0].message);
    return request;
  }
  /// The first fault, with its column before it.
  std::string wrongWith(const std::string& line) {
    const Host::SourceText source("line", line);
    Request request;
    const auto faults = reader_.read(source.text(), request);
    return faults.empty() ? "" : std::to_string(faults[0].offset + 1) + ": " + faults[0].message;
  }

  Host::RequestReader reader_;
};

TEST_F(RequestReader, TellsRequestsFromChangeLines) {
  EXPECT_TRUE(isRequest(R"({"request":"show"})"));
  EXPECT_TRUE(isRequest(R"({"path":"/x", "request" : 5})"));
  EXPECT_FALSE(isRequest(R"({"update":[{"path":"/x","value":"request"}]})"));
  EXPECT_FALSE(isRequest(R"({"update":[{"request":"show"}]})"));
  EXPECT_FALSE(isRequest(R"(["request"])"));
  EXPECT_FALSE(isRequest(R"("request")"));
  EXPECT_FALSE(isRequest("{}"));
}

TEST_F(RequestReader, ReadsWhatToShow) {
  const Request plain = read(R"({"request":"show"})");
  EXPECT_EQ(plain.kind, Request::Kind::show);
  EXPECT_TRUE(plain.v2 && !plain.v1 && !plain.status);
  const Request of = read(R"({"of":["status","v1"],"request":"show"})");
  EXPECT_TRUE(of.v1 && of.status && !of.v2);
  const Request path = read(std::string(R"({"request":"show","path":")") + kV2 + R"("})");
  ASSERT_TRUE(path.path);
  EXPECT_EQ(Host::pathOf(Host::stepsOf(*path.path)), kV2);
}

TEST_F(RequestReader, ReadsRequestsWithoutMembers) {
  EXPECT_EQ(read(R"({"request":"audit"})").kind, Request::Kind::audit);
  EXPECT_EQ(read(R"({"request":"stats"})").kind, Request::Kind::stats);
  EXPECT_EQ(read(R"({"request":"reload"})").kind, Request::Kind::reload);
  EXPECT_EQ(read(R"({"request":"stop"})").kind, Request::Kind::stop);
  EXPECT_EQ(read(R"({"request":"watch"})").kind, Request::Kind::watch);
}

TEST_F(RequestReader, ReadsWhatToWaitForAndWhatToTrace) {
  const Request wait = read(R"({"request":"wait","device":"fw1","timeout":1.5})");
  EXPECT_EQ(wait.kind, Request::Kind::wait);
  EXPECT_EQ(wait.device, "fw1");
  EXPECT_EQ(wait.timeout, 1.5);
  const Request trace = read(R"({"request":"trace","levels":"6-8","vrf":"","rule":"20000"})");
  EXPECT_EQ(trace.kind, Request::Kind::trace);
  EXPECT_EQ(trace.levels, "6-8");
  EXPECT_EQ(trace.vrf, "");
  EXPECT_EQ(trace.rule, "20000");
  EXPECT_FALSE(trace.device || trace.handler);
}

TEST_F(RequestReader, ReadsAChangeToTry) {
  const Request request = read(R"({"request":"try","change":{"control":"stop","signal":false}})");
  EXPECT_EQ(request.kind, Request::Kind::tryOut);
  ASSERT_TRUE(request.change);
  EXPECT_EQ(request.change->control, Host::Verb::stop);
  EXPECT_FALSE(request.change->signal);
}

TEST_F(RequestReader, SaysWhatIsWrongAndWhere) {
  EXPECT_EQ(
      wrongWith(R"({"request":"shwo"})"),
      "12: \"shwo\" is unknown here; expected one of show, audit, explain, try, watch, trace, "
      "stats, wait, reload, stop; did you mean \"show\"?");
  EXPECT_EQ(wrongWith(R"({"request":5})"), "12: expected text, found a number");
  EXPECT_EQ(wrongWith(R"({"request":"show","off":[]})"),
            "19: \"off\" is unknown here; expected one of of, path; did you mean \"of\"?");
  EXPECT_EQ(wrongWith(R"({"request":"stop","now":true})"),
            "19: \"now\" is unknown here; this request has no other members");
  EXPECT_EQ(wrongWith(R"({"request":"show","of":["v3"]})"),
            "25: \"v3\" is unknown here; expected one of v1, v2, status; did you mean \"v1\"?");
  EXPECT_EQ(wrongWith(R"({"request":"show","request":"show"})"),
            "19: this object has had \"request\" already");
  EXPECT_EQ(wrongWith(R"({"request":"explain"})"),
            "1: the member \"path\" is missing: what is to be explained");
  EXPECT_EQ(wrongWith(R"({"request":"try"})"),
            "1: the member \"change\" is missing: the change line to try");
  EXPECT_THAT(wrongWith(R"({"request":"wait","timeout":-1})"),
              testing::StartsWith("29: -1 is no time to wait; expected seconds"));
  EXPECT_THAT(wrongWith(R"({"request":"explain","path":"/nowhere:x"})"),
              testing::StartsWith("31: there is no container"));
  EXPECT_THAT(wrongWith(R"({"request":"try","change":{"delet":[]}})"),
              testing::StartsWith("28: \"delet\" is unknown here"));
  EXPECT_THAT(wrongWith(R"({"request":"show"} x)"), testing::StartsWith("20: "));
}

TEST_F(RequestReader, RefusesWhatToShowTwice) {
  EXPECT_EQ(wrongWith(std::string(R"({"request":"show","of":["v2"],"path":")") + kV2 + R"("})"),
            "1: \"path\" says what to show; \"of\" has no use beside it");
}

}  // namespace
}  // namespace HostTests
