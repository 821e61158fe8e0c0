#include "control/Apply.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>

#include "host/control/FakeAgent.h"

namespace HostTests {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kDelete =
    R"({"delete":["/vela-l3:policy-source/policy-set[device-name='fw1']"]})";

TEST(Apply, SaysWhichLinesFailedAndPrintsWhatWasToBeShown) {
  FakeAgent agent([](std::size_t number, const std::string& line) {
    const std::string start = R"({"line":)" + std::to_string(number);
    return line.empty()                    ? ""
           : line.starts_with("{\"show\"") ? start + R"(,"stats":{"applied":1}})" + "\n"
           : line == "{}"                  ? start + "}\n"
                                           : start + R"(,"error":"there is no fw9"})" + "\n";
  });
  const std::string log =
      agent.folder().write("changes.log", "{}\n\n{\"delete\":[]}\r\n{\"show\":[\"stats\"]}");
  const Outcome outcome = agent.ctl({"apply", log});
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.out, "{\"line\":4,\"stats\":{\"applied\":1}}\n");
  EXPECT_EQ(outcome.err, log + ":3: error: there is no fw9\nvpm: 2 applied, 1 failed\n");
  EXPECT_THAT(agent.told(), ElementsAre("{}", "", "{\"delete\":[]}", "{\"show\":[\"stats\"]}"));
}

TEST(Apply, SendsManyLinesBeforeTheFirstAnswer) {
  // Answers come in bundles of a hundred, so that a client that waits for each waits for ever.
  std::string kept;
  const FakeAgent agent([&kept](std::size_t number, const std::string&) {
    kept += R"({"line":)" + std::to_string(number) + "}\n";
    return number % 100 == 0 ? std::exchange(kept, "") : "";
  });
  std::string lines;
  for (int i = 0; i < 5000; ++i) {
    lines += "{}\n";
  }
  const Outcome outcome = agent.ctl({"apply", agent.folder().write("changes.log", lines)});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(outcome.err, "vpm: 5000 applied, 0 failed\n");
}

TEST(Apply, NeverLetsMoreThanAWindowOfLinesBeOpen) {
  std::atomic<std::size_t> heard{0};
  const FakeAgent agent([&heard](std::size_t number, const std::string&) {
    heard = number;
    return "";
  });
  std::string lines;
  for (int i = 0; i < 5000; ++i) {
    lines += "{}\n";
  }
  const std::string log = agent.folder().write("changes.log", lines);
  std::thread client([&] { agent.ctl({"apply", log}); });
  for (int i = 0; i < 200 && heard < 1024; ++i) {
    ::usleep(10'000);
  }
  ::usleep(50'000);
  EXPECT_EQ(heard, 1024U);
  ::shutdown(agent.client(), SHUT_RDWR);
  client.join();
}

TEST(Apply, TakesAnswersThatAreLargerThanTheSocketHolds) {
  const std::string large(300'000, 'x');
  const FakeAgent agent(always(R"(,"v2":")" + large + "\""));
  std::string lines;
  for (int i = 0; i < 50; ++i) {
    lines += "{\"show\":[\"v2\"]}" + std::string(30'000, ' ') + "\n";
  }
  const Outcome outcome = agent.ctl({"apply", agent.folder().write("changes.log", lines)});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_GT(outcome.out.size(), 50 * large.size());
}

TEST(Apply, TakesNoRequestsFromALog) {
  FakeAgent agent([](std::size_t number, const std::string& line) {
    return line.empty() ? "" : R"({"line":)" + std::to_string(number) + "}\n";
  });
  const std::string log = agent.folder().write(
      "changes.log", "{\"request\":\"stop\"}\n{\"re\\u0071uest\":\"stop\"}\n{}\n");
  const Outcome outcome = agent.ctl({"apply", log});
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_THAT(outcome.err, HasSubstr(log + ":1: error: column 2: "));
  EXPECT_THAT(outcome.err, HasSubstr(log + ":2: error: column 2: "));
  EXPECT_THAT(outcome.err, HasSubstr("vpm: 1 applied, 2 failed\n"));
  EXPECT_THAT(agent.told(), ElementsAre("", "", "{}"));
}

TEST(Apply, SaysWhatIsInDoubtWhenTheAgentGoes) {
  const FakeAgent agent([](std::size_t number, const std::string&) {
    return R"({"line":)" + std::to_string(number) + "}\n" +
           std::string(number == 2 ? 1 : 0, FakeAgent::kClose);
  });
  const std::string log = agent.folder().write("changes.log", "{}\n{}\n{}\n{}\n");
  const Outcome outcome = agent.ctl({"apply", log});
  EXPECT_EQ(outcome.exitCode, 3);
  EXPECT_THAT(outcome.err, HasSubstr("vpm: 2 applied, 0 failed\n"
                                     "vpm: what became of lines 3 to 4 is not known\n"
                                     "vpm: error: the agent at "));
}

TEST(Apply, TriesLinesAndSaysWhatWouldChange) {
  FakeAgent agent([](std::size_t number, const std::string&) -> std::string {
    return R"({"line":)" + std::to_string(number) +
           (number == 1 ? R"(,"changes":[{"event":"remove","path":"/a/b"},{"event":"set",)"
                          R"("path":"/a/c","value":"x"}],"warnings":["two VRFs share n"]})"
                        : R"(,"changes":[],"warnings":[],"error":"it is not there"})") +
           "\n";
  });
  const std::string log =
      agent.folder().write("changes.log", std::string(kDelete) + "\n" + kDelete + "\n{]\n");
  const Outcome outcome = agent.ctl({"apply", "--dry-run", log});
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_EQ(outcome.out,
            log + ":1:\n- /a/b\n~ /a/c = \"x\"\n" + log + ":1: warning: two VRFs share n\n");
  EXPECT_THAT(outcome.err, HasSubstr(log + ":2: error: it is not there\n"));
  EXPECT_THAT(outcome.err, HasSubstr(log + ":3: error: column 2: "));
  EXPECT_THAT(outcome.err, HasSubstr("vpm: 1 tried, 2 failed\n"));
  const std::string asked = std::string(R"({"request":"try","change":)") + kDelete + "}";
  EXPECT_THAT(agent.told(), ElementsAre(asked, asked, ""));
}

TEST(Apply, ColoursWhatWouldChangeWhenAsked) {
  const FakeAgent agent(always(R"(,"changes":[{"event":"add","path":"/a"}],"warnings":[])"));
  const std::string log = agent.folder().write("changes.log", "{}\n");
  EXPECT_THAT(agent.ctl({"apply", "--dry-run", "--color", "always", log}).out,
              HasSubstr("\033[32m+ /a\033[0m\n"));
  EXPECT_THAT(agent.ctl({"apply", "--dry-run", log}).out, HasSubstr("\n+ /a\n"));
}

TEST(Apply, PrintsWhatWouldChangeForPrograms) {
  const FakeAgent agent(always(R"(,"changes":[],"warnings":[])"));
  const std::string log = agent.folder().write("changes.log", "{}\n{}\n");
  EXPECT_EQ(agent.ctl({"apply", "--dry-run", "--json", log}).out,
            "{\"line\":1,\"changes\":[],\"warnings\":[]}\n"
            "{\"line\":2,\"changes\":[],\"warnings\":[]}\n");
}

TEST(Apply, SendsNothingWhenTheLogCannotBeRead) {
  FakeAgent agent(always(""));
  const Outcome outcome = agent.ctl({"apply", "/nowhere/changes.log"});
  EXPECT_EQ(outcome.exitCode, 2);
  EXPECT_EQ(outcome.err, "/nowhere/changes.log: error: No such file or directory\n");
  EXPECT_THAT(agent.told(), ElementsAre());
}

}  // namespace
}  // namespace HostTests
