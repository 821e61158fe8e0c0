// Traces of one device, VRF, rule or handler.

#include "tracing/TraceScope.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "host/Running.h"

namespace HostTests {
namespace {

using testing::AllOf;
using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using Lines = std::vector<std::string>;

Lines linesOf(const std::string& text) {
  Lines lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    lines.push_back(line);
  }
  return lines;
}

std::string joined(const Lines& lines) {
  std::string text;
  for (const std::string& line : lines) {
    text += line + "\n";
  }
  return text;
}

const std::vector<std::string> kDevices{"fw1", "fw2"};
const std::vector<std::string> kVrfs{"red", "blue"};
const std::vector<std::string> kRules{"10000", "20000"};

std::string listOf(const std::vector<std::string>& keys, const auto& entry) {
  std::string list = "[";
  for (const std::string& key : keys) {
    list += (list == "[" ? "" : ",") + entry(key);
  }
  return list + "]";
}

/// Two devices with two VRFs, each with two rules and an interface. The prefix of a rule and the
/// address of an interface tell where they are.
std::string config() {
  const auto place = [](const std::string& device, const std::string& vrf) {
    return std::to_string(device == "fw1" ? 1 : 2) + "." + std::to_string(vrf == "red" ? 1 : 2);
  };
  return R"({"vela-l3:policy-source":{"policy-set":)" +
         listOf(kDevices,
                [&](const std::string& device) {
                  return R"({"device-name":")" + device + R"(","policy":)" +
                         listOf(kVrfs,
                                [&](const std::string& vrf) {
                                  return R"({"vrf-name":")" + vrf + R"(","rule":)" +
                                         listOf(kRules,
                                                [&](const std::string& rule) {
                                                  return R"({"priority":)" + rule +
                                                         R"(,"origin":[{"name":"o","match":)"
                                                         R"({"dst-ip":["10.)" +
                                                         place(device, vrf) + "." + rule.front() +
                                                         R"(/32"]}}]})";
                                                }) +
                                         "}";
                                }) +
                         "}";
                }) +
         R"(},"vela-l3:service-device-source":{"service-device":)" +
         listOf(kDevices,
                [&](const std::string& device) {
                  return R"({"device-name":")" + device + R"(","vrf":)" +
                         listOf(kVrfs,
                                [&](const std::string& vrf) {
                                  return R"({"vrf-name":")" + vrf +
                                         R"(","l3-intf":[{"address":"172.)" + place(device, vrf) +
                                         R"(.1"}]})";
                                }) +
                         "}";
                }) +
         R"(},"vela-policy-monitor:status":{"device-policy-list":)" +
         listOf(kDevices,
                [&](const std::string& device) {
                  return R"({"device-name":")" + device + R"(","net-vrf-name-by-vrf":)" +
                         listOf(kVrfs,
                                [&](const std::string& vrf) {
                                  return R"({"vrf-name":")" + vrf + R"(","net-vrf-name":"net-)" +
                                         vrf + R"("})";
                                }) +
                         "}";
                }) +
         "}}";
}

const std::string kSet = "/vela-l3:policy-source/policy-set[device-name='fw1']";
const std::string kMatch =
    kSet + "/policy[vrf-name='red']/rule[priority='20000']/origin[name='o']/match";

/// Changes at every level, several of them to low machines that nobody above has called.
std::string changes() {
  return R"({"update":[{"path":")" + kMatch +
         R"(/src-ip[.='10.9.9.0/24']"}]})"
         "\n"
         R"({"update":[{"path":"/vela-l3:service-device-source/service-device[device-name='fw2'])"
         R"(/vrf[vrf-name='blue']/l3-intf[address='172.2.2.1']/reachable-subnet[.='10.8.8.0/24']"}]})"
         "\n"
         R"({"delete":[")" +
         kSet +
         R"(/policy[vrf-name='blue']/rule[priority='20000']"]})"
         "\n"
         R"({"update":[{"path":")" +
         kSet +
         R"(/policy[vrf-name='blue']/rule[priority='20000'])"
         R"(/origin[name='new']/match/dst-ip[.='10.1.2.7/32']"}]})"
         "\n"
         R"({"delete":["/vela-l3:policy-source/policy-set[device-name='fw2']"]})"
         "\n";
}

/// The lines of a run that is traced as `options` say.
Lines traced(const Folder& folder, std::vector<std::string> options = {}) {
  options.insert(options.begin(),
                 {"replay", "--config", folder.write("c.json", config()), "--trace",
                  folder.path("text"), "--trace-file", folder.path("bin")});
  options.push_back(folder.write("log", changes()));
  const Outcome outcome = runVpm(options);
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  Lines lines = linesOf(folder.read("text"));
  EXPECT_EQ(linesOf(runVpm({"trace", folder.path("bin")}).out), lines) << "both traces agree";
  return lines;
}

Lines shown(const Folder& folder, const std::vector<std::string>& filter) {
  std::vector<std::string> arguments{"trace", folder.path("bin")};
  arguments.insert(arguments.end(), filter.begin(), filter.end());
  return linesOf(runVpm(arguments).out);
}

TEST(TraceScope, OfARunIsWhatTheReaderOfTheWholeTraceChooses) {
  const Folder whole;
  traced(whole);
  const std::vector<std::pair<std::string, Lines>> scopes{
      {"device=fw1", {"--device", "fw1"}},
      {"vrf=blue", {"--vrf", "blue"}},
      {"rule=20000", {"--rule", "20000"}},
      {"handler=handleDstIp", {"--handler", "handleDstIp"}},
      {"device=fw2,vrf=red", {"--device", "fw2", "--vrf", "red"}},
      {"device=fw1,vrf=red,rule=20000,handler=handleSrcIp",
       {"--device", "fw1", "--vrf", "red", "--rule", "20000", "--handler", "handleSrcIp"}}};
  for (const auto& [scope, filter] : scopes) {
    const Folder narrowed;
    const Lines lines = traced(narrowed, {"--trace-only", scope});
    EXPECT_THAT(lines, Not(IsEmpty())) << scope;
    EXPECT_EQ(lines, shown(whole, filter)) << scope;
  }
}

TEST(TraceScope, EveryLineBelongsToOneDeviceOrIsOfAWalkOfTheRoots) {
  const Folder folder;
  Lines left = traced(folder);
  for (const std::string& device : kDevices) {
    for (const std::string& line : shown(folder, {"--device", device})) {
      const auto at = std::ranges::find(left, line);
      ASSERT_NE(at, left.end()) << line;
      left.erase(at);
    }
  }
  EXPECT_THAT(left, Not(IsEmpty()));
  for (const std::string& line : left) {
    EXPECT_TRUE(line.find("RootSm::") != std::string::npos) << line;
    EXPECT_THAT(line, Not(HasSubstr("const String&"))) << "a keyed handler belongs to its key";
  }
}

TEST(TraceScope, ADeviceHasTheLinesOfAllThatIsBelowIt) {
  const Folder folder;
  traced(folder);
  const Lines one = shown(folder, {"--device", "fw1"});
  EXPECT_THAT(
      one, Each(AllOf(Not(HasSubstr("fw2")), Not(HasSubstr("10.2.")), Not(HasSubstr("172.2.")))));
  const std::string text = joined(one);
  // From a change that only the match machine was told of, in a rule that came later, and from the
  // service-device tree.
  for (const char* const part :
       {" add src ip: 10.9.9.0/24", " add dst ip: 10.1.2.7/32", " l3 intf: 172.1.2.1",
        " Device name: fw1", " add VRF red/net-red", " remove priority 20000"}) {
    EXPECT_THAT(text, HasSubstr(part));
  }
  const Lines other = shown(folder, {"--device", "fw2"});
  EXPECT_THAT(other, Each(Not(HasSubstr("fw1"))));
  EXPECT_THAT(joined(other), HasSubstr("add subnet 10.8.8.0/24"));
}

TEST(TraceScope, AVrfAndARuleAreThoseOfTheirDevice) {
  const Folder folder;
  traced(folder);
  const Lines rule = shown(folder, {"--device", "fw1", "--vrf", "red", "--rule", "20000"});
  const std::string text = joined(rule);
  EXPECT_THAT(text, HasSubstr("add src ip: 10.9.9.0/24"));
  EXPECT_THAT(text, HasSubstr("add dst ip: 10.1.1.2/32"));
  EXPECT_THAT(text, HasSubstr("VRF name: red add priority 20000"));
  EXPECT_THAT(rule, Each(AllOf(Not(HasSubstr("blue")), Not(HasSubstr("priority: 10000")),
                               Not(HasSubstr("10.1.2.")), Not(HasSubstr("10.2.")))));
  EXPECT_THAT(shown(folder, {"--device", "fw1", "--rule", "10001"}), IsEmpty());
  EXPECT_THAT(shown(folder, {"--device", "fw3"}), IsEmpty());
}

TEST(TraceScope, IsReadFromItsText) {
  Host::TraceSubject subject;
  std::string why;
  EXPECT_TRUE(Host::parseTraceSubject("device=fw,1,vrf=,rule=30000", subject, why));
  EXPECT_EQ(subject.device, "fw,1");
  EXPECT_EQ(subject.vrf, "");
  EXPECT_EQ(subject.rule, "30000");
  EXPECT_TRUE(Host::parseTraceSubject("handler=cleanup", subject, why));
  EXPECT_EQ(subject.device, "fw,1") << "what is not named stays";
  EXPECT_EQ(subject.handler, "cleanup");
}

TEST(TraceScope, ThatIsNoneIsRefusedAndChangesNothing) {
  Host::TraceSubject subject;
  std::string why;
  EXPECT_FALSE(Host::parseTraceSubject("device=fw1,rule=9999", subject, why));
  EXPECT_EQ(why, "\"9999\" is no priority of a rule; expected 10000 to 30000");
  EXPECT_EQ(subject.device, "");
  for (const char* const text : {"", "fw1", "devise=fw1", "rule=x"}) {
    EXPECT_FALSE(Host::parseTraceSubject(text, subject, why)) << text;
  }
  EXPECT_EQ(runVpm({"translate", "--trace-only", "fw1", "d.json"}).exitCode, 2);
}

}  // namespace
}  // namespace HostTests
