// vpm trace: what it prints of the binary trace of a run.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <random>
#include <thread>

#include "Lumo/Lumo.h"
#include "host/Running.h"

namespace HostTests {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const char* const kConfig = R"({
  "vela-l3:policy-source": {"policy-set": [{"device-name": "fw1", "policy": [
    {"vrf-name": "red", "rule": [{"priority": 20000, "origin": [
      {"name": "web", "match": {"dst-ip": ["10.1.0.0/16"]}}]}]}]}]},
  "vela-policy-monitor:status": {"device-policy-list": [{"device-name": "fw1",
    "net-vrf-name-by-vrf": [{"vrf-name": "red", "net-vrf-name": "net-red"}]}]}
})";

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    lines.push_back(line);
  }
  return lines;
}

/// A folder with the text trace "text" and the binary trace "trace" of the same run.
class TracedRun {
 public:
  explicit TracedRun(const std::string& log, const std::string& size = "64M") {
    const Outcome outcome =
        runVpm({"replay", "--config", folder.write("config.json", kConfig), "--trace", text(),
                "--trace-file", trace(), "--trace-size", size, folder.write("log", log)});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  }
  TracedRun()
      : TracedRun(R"({"time":12.5,"update":[{"path":"/vela-l3:policy-source/policy-set)"
                  R"([device-name='fw1']/policy[vrf-name='red']/rule[priority='20000'])"
                  R"(/origin[name='web']/match/dst-ip[.='10.2.0.0/16']"}]})") {}

  std::string text() const { return folder.path("text"); }
  std::string trace() const { return folder.path("trace"); }
  std::vector<std::string> textLines() const { return linesOf(folder.read("text")); }

  Folder folder;
};

std::vector<std::string> shown(const std::string& path, std::vector<std::string> options = {}) {
  options.insert(options.begin(), {"trace", path});
  const Outcome outcome = runVpm(options);
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_EQ(outcome.err, "");
  return linesOf(outcome.out);
}

TEST(Trace, PrintsTheLinesOfTheTextTrace) {
  const TracedRun run;
  const auto lines = shown(run.trace());
  EXPECT_EQ(lines, run.textLines());
  EXPECT_GT(lines.size(), 50U);
  EXPECT_EQ(lines.back().substr(0, 57),
            "12.500000 VelaPolicyMonitor 8 PolicyTranslatePerVrfSm.cpp");
}

TEST(Trace, OfTheEnvironmentGoesToStandardErrorUnlessTheOptionsSayOtherwise) {
  const Folder folder;
  const std::string translate =
      "VELA_TRACE=VelaPolicyMonitor/6 $VPM translate --output /dev/null " +
      folder.write("config.json", kConfig) + " 2>&1";
  const auto lines = linesOf(shell(translate).out);
  EXPECT_EQ(lines.size(), 4U);
  EXPECT_THAT(lines, testing::Each(StartsWith("0.000000 VelaPolicyMonitor 6 ")));
  EXPECT_EQ(shell(translate + " --trace " + folder.path("text") + " --trace-levels 7").out, "");
  EXPECT_THAT(linesOf(folder.read("text")),
              testing::Each(StartsWith("0.000000 VelaPolicyMonitor 7 ")));
}

TEST(Trace, OfARandomRunIsTheTextTraceByteForByte) {
  std::mt19937 random(20260101);
  std::string log;
  const auto upTo = [&random](unsigned limit) { return std::to_string(random() % limit); };
  for (int i = 0; i < 2000; ++i) {
    const std::string device = "/vela-l3:policy-source/policy-set[device-name='fw" + upTo(4) + "']";
    const std::string vrf = device + "/policy[vrf-name='vrf" + upTo(4) + "']";
    const std::string origin =
        vrf + "/rule[priority='" + std::to_string(10000 + random() % 20) + "']/origin[name='o'";
    log += R"({"time":)" + std::to_string(i / 3) + "." + upTo(10) + ",";
    switch (random() % 8) {
      case 0:
        log += R"("replace":[{"path":")" + vrf + R"(","value":{}}]})";
        break;
      case 1:
        log += R"("update":[{"path":"/vela-policy-monitor:status/device-policy-list)"
               R"([device-name='fw)" +
               upTo(4) + R"(']/net-vrf-name-by-vrf[vrf-name='vrf)" + upTo(4) +
               R"(']/net-vrf-name","value":"net-\n\t)" + upTo(3) + R"("}]})";
        break;
      case 2:
        log += R"("update":[{"path":")" + origin + R"(]/action","value":")" +
               (random() % 2 == 0 ? "drop" : "forward") + R"("}]})";
        break;
      default:
        log += R"("update":[{"path":")" + origin + "]/match/src-ip[.='10." + upTo(9) +
               R"(.0.0/16']"}]})";
    }
    log += "\n";
  }
  const TracedRun run(log);
  const Outcome printed = runVpm({"trace", run.trace()});
  EXPECT_EQ(printed.exitCode, 0) << printed.err;
  EXPECT_GT(printed.out.size(), 1000000U);
  EXPECT_TRUE(printed.out == run.folder.read("text"));
}

TEST(Trace, OfARingThatHasWrappedIsTheEndOfTheTextTrace) {
  std::string log;
  for (int i = 0; i < 2000; ++i) {
    log += R"({"notify":["/vela-l3:policy-source/policy-set[device-name='fw1']"]})"
           "\n";
  }
  const TracedRun run(log, "32K");
  const auto text = run.textLines();
  const auto lines = shown(run.trace());
  EXPECT_LT(lines.size(), text.size() / 2);
  EXPECT_GT(lines.size(), 200U);
  EXPECT_TRUE(std::equal(lines.rbegin(), lines.rend(), text.rbegin()));
}

TEST(Trace, OfOneSegmentAreTheLinesInIt) {
  const TracedRun run;
  EXPECT_EQ(shown(run.trace() + "/segment-0000"), run.textLines());
  EXPECT_THAT(shown(run.trace() + "/segment-0001"), IsEmpty());
}

TEST(Trace, ShowsOnlyWhatIsAskedFor) {
  const TracedRun run;
  const auto textLines = run.textLines();
  const auto expect = [&](const std::vector<std::string>& options, auto wanted) {
    std::vector<std::string> expected;
    std::copy_if(textLines.begin(), textLines.end(), std::back_inserter(expected), wanted);
    EXPECT_THAT(expected, testing::Not(IsEmpty()));
    EXPECT_LT(expected.size(), textLines.size());
    EXPECT_EQ(shown(run.trace(), options), expected) << options.front();
  };
  using Text = const std::string&;
  expect({"--level", "6,7"},
         [](Text line) { return line.find("Monitor 8 ") == std::string::npos; });
  expect({"--handler", "handleDstIp"},
         [](Text line) { return line.find(" handleDstIp: ") != std::string::npos; });
  expect({"--class", "PolicyTranslateMatchSm"},
         [](Text line) { return line.find("::PolicyTranslateMatchSm::") != std::string::npos; });
  expect({"--class", "VelaPolicyMonitor::PolicyTranslateRootSm"},
         [](Text line) { return line.find("::PolicyTranslateRootSm::") != std::string::npos; });
  expect({"--from", "12.5"}, [](Text line) { return line[0] == '1'; });
  expect({"--to", "12"}, [](Text line) { return line[0] == '0'; });
  expect({"--grep", "10.2.0.0/16"},
         [](Text line) { return line.find("10.2.0.0/16") != std::string::npos; });
  expect({"--last", "3"}, [&](Text line) { return &line > &textLines.back() - 3; });
  EXPECT_THAT(shown(run.trace(), {"--class", "Sm"}), IsEmpty()) << "a class is named whole";
}

TEST(Trace, AsJsonHasTheValuesByTheirNames) {
  const TracedRun run;
  EXPECT_THAT(shown(run.trace(),
                    {"--json", "--class", "PolicyTranslatePerVrfSm", "--grep", "add priority"}),
              ElementsAre(StartsWith(
                  R"({"time":0.000000,"level":6,"file":"PolicyTranslatePerVrfSm.cpp","line":)")));
  EXPECT_THAT(
      shown(run.trace(), {"--json", "--grep", "add priority"}).at(0),
      HasSubstr(R"("class":"VelaPolicyMonitor::PolicyTranslatePerVrfSm","handler":"handleRule",)"
                R"("message":"void VelaPolicyMonitor::PolicyTranslatePerVrfSm::)"
                R"(handleRule(VelaL3::VelaPriority) VRF name: red add priority 20000",)"
                R"("values":{"VRF_name":"red","add_priority":"20000"}})"));
}

TEST(Trace, AsATimelineHasASliceForEachEntryWithItsExit) {
  const TracedRun run;
  const Outcome outcome = runVpm({"trace", run.trace(), "--chrome"});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  const auto lines = linesOf(outcome.out);
  EXPECT_EQ(lines.front(), "[");
  EXPECT_EQ(lines.back(), "]");
  std::size_t slices = 0;
  std::size_t instants = 0;
  for (const std::string& line : lines) {
    slices += line.find(R"("ph":"X")") != std::string::npos ? 1 : 0;
    instants += line.find(R"("ph":"i")") != std::string::npos ? 1 : 0;
  }
  EXPECT_EQ(slices + instants + 2, lines.size());
  // Each slice is two lines of the trace. An update of one prefix has no entry line.
  EXPECT_EQ(2 * slices + instants, run.textLines().size());
  EXPECT_GT(slices, 20U);
  EXPECT_THAT(outcome.out, HasSubstr(R"({"name":"VelaPolicyMonitor::PolicyTranslateMatchSm::)"
                                     R"x(handleDstIp(const Norv::IpGenPrefix&)","ph":"i")x"));
}

TEST(Trace, CountsTheLinesOfEachSite) {
  const TracedRun run;
  const auto lines = shown(run.trace(), {"--stats"});
  EXPECT_EQ(lines.at(0), "records      " + std::to_string(run.textLines().size()) +
                             ", printed times 0.000000 to 12.500000");
  EXPECT_EQ(lines.at(1), "dropped      0");
  EXPECT_EQ(lines.at(2), "segments     8 of 8388608 bytes, 1 in use");
  EXPECT_EQ(lines.at(3), "overwritten  0 segments");
  EXPECT_EQ(lines.at(4), "written by   process " + std::to_string(getpid()));
  EXPECT_THAT(lines, testing::Contains(
                         testing::AllOf(StartsWith("       1      6  PolicyTranslatePerVrfSm.cpp:"),
                                        HasSubstr("VRF name: %s add priority %s"))));
  EXPECT_THAT(shown(run.trace(), {"--stats", "--json"}).at(0),
              StartsWith("{\"records\":" + std::to_string(run.textLines().size()) +
                         ",\"dropped\":0,\"segments\":8,\"segments-in-use\":1,"));
}

TEST(Trace, OfNothingIsRefused) {
  const TracedRun run;
  const auto refused = [](const std::string& path) {
    const Outcome outcome = runVpm({"trace", path});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.out, "");
    return outcome.err;
  };
  EXPECT_THAT(refused(run.folder.path("nothing")),
              HasSubstr("/nothing: cannot be read: No such file or directory"));
  std::filesystem::create_directory(run.folder.path("empty"));
  EXPECT_THAT(refused(run.folder.path("empty")), HasSubstr("/empty: this is no trace, as "));
  EXPECT_THAT(refused(run.text()),
              HasSubstr(run.text() + ": this is no trace, as there is no " +
                        run.folder.path("metadata") + "; expected the folder of --trace-file"));
  run.folder.write("trace/segment-0003", "something else");
  EXPECT_THAT(refused(run.trace()), HasSubstr("segment-0003: this is no segment of a trace"));
  const std::string metadata = run.folder.read("trace/metadata");
  run.folder.write("trace/metadata", metadata.substr(0, metadata.size() / 2));
  EXPECT_THAT(refused(run.trace()), HasSubstr("the file is cut off"));
  std::filesystem::remove(run.folder.path("trace/metadata"));
  EXPECT_THAT(refused(run.trace()), HasSubstr("/trace: this is no trace, as there is no "));
}

TEST(Trace, WithADamagedSegmentIsPrintedUpToTheDamage) {
  const TracedRun run;
  std::string segment = run.folder.read("trace/segment-0000");
  // The first record has no values; the second one gets a site that is not there.
  constexpr std::size_t kSecond = sizeof(Lumo::PacketHeader) + Lumo::kRecordHeader;
  segment[kSecond + 3] = '\x7f';
  run.folder.write("trace/segment-0000", segment);
  const Outcome outcome = runVpm({"trace", run.trace()});
  EXPECT_EQ(outcome.exitCode, 3);
  EXPECT_EQ(linesOf(outcome.out), std::vector{run.textLines().front()});
  EXPECT_THAT(outcome.err, HasSubstr("segment-0000: byte " + std::to_string(kSecond) +
                                     ": a record names the site 21307"));
  std::filesystem::resize_file(run.folder.path("trace/segment-0000"), 1000);
  EXPECT_THAT(runVpm({"trace", run.trace()}).err,
              HasSubstr("segment-0000: the file was cut off; its last records are missing"));
}

constexpr Lumo::ValueType kNumber{Lumo::Kind::natural, 4, "uint32_t"};

const Lumo::Site& numberSite() {
  Lumo::Site site;
  site.facility = "F";
  site.level = 6;
  site.file = "a.cpp";
  site.line = 1;
  site.scope = "void A::";
  site.form = "f()";
  site.pieces = {{" ", nullptr}, {"", &kNumber}};
  static const Lumo::Site& only = Lumo::registerSite(site);
  return only;
}

/// Starts a process that writes numbers into a ring of the smallest size and then is killed.
pid_t startWriter(const std::string& folder, std::uint32_t first, std::uint32_t end) {
  const Lumo::Site& site = numberSite();
  const pid_t child = fork();
  if (child == 0) {
    std::string why;
    const auto ring = Lumo::TraceFile::open(folder, 4096, 8, why);
    for (std::uint32_t i = first; ring != nullptr && i < end; ++i) {
      std::byte* const place = ring->begin(site.id, 4, 0, 0);
      std::memcpy(place, &i, 4);
      ring->finish(place + 4);
      if (i % 50 == 0) {  // a quarter of the ring in the time between two looks of the reader
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
      }
    }
    raise(SIGKILL);
  }
  return child;
}

std::vector<std::string> numbered(std::uint32_t first, std::uint32_t end) {
  std::vector<std::string> lines;
  for (std::uint32_t i = first; i < end; ++i) {
    lines.push_back("0.000000 F 6 a.cpp:1 f: void A::f() " + std::to_string(i));
  }
  return lines;
}

TEST(Trace, FollowsAProcessThroughWrapsOfTheRingToItsEnd) {
  const Folder folder;
  signal(SIGCHLD, SIG_IGN);  // a child that has ended is gone at once
  startWriter(folder.path("trace"), 0, 2500);
  while (!std::filesystem::exists(folder.path("trace/metadata"))) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  const Outcome outcome = runVpm({"trace", folder.path("trace"), "--follow", "--exit-at-end"});
  signal(SIGCHLD, SIG_DFL);
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_EQ(linesOf(outcome.out), numbered(0, 2500));
}

TEST(Trace, FollowsOnToTheNextProcessThatWritesThere) {
  const Folder folder;
  signal(SIGCHLD, SIG_IGN);
  startWriter(folder.path("trace"), 0, 150);
  while (!std::filesystem::exists(folder.path("trace/metadata"))) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  const pthread_t here = pthread_self();
  std::thread next([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(250));
    startWriter(folder.path("trace"), 150, 900);
    std::this_thread::sleep_for(std::chrono::milliseconds(900));
    pthread_kill(here, SIGTERM);
  });
  const Outcome outcome = runVpm({"trace", folder.path("trace"), "--follow"});
  next.join();
  signal(SIGCHLD, SIG_DFL);
  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_EQ(linesOf(outcome.out), numbered(0, 900));
}

TEST(Trace, OptionsThatDoNotGoTogetherAreRefused) {
  const TracedRun run;
  for (const auto& options : std::vector<std::vector<std::string>>{{"--chrome", "--follow"},
                                                                   {"--chrome", "--stats"},
                                                                   {"--stats", "--last", "3"},
                                                                   {"--exit-at-end"},
                                                                   {"--level", "11"},
                                                                   {"--from", "noon"}}) {
    std::vector<std::string> arguments{"trace", run.trace()};
    arguments.insert(arguments.end(), options.begin(), options.end());
    EXPECT_EQ(runVpm(arguments).exitCode, 2) << options.front();
  }
}

TEST(Trace, SizeOfTheFileIsRefusedWhenItIsNone) {
  for (const char* const size : {"", "K", "31K", "9G", "8M8", "-1", "1T", "99999999999999999999"}) {
    const Outcome outcome =
        runVpm({"translate", "--trace-file", "t", "--trace-size", size, "no-document"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, HasSubstr("is no size of a trace; expected 32K to 8G")) << size;
  }
}

TEST(Trace, ThatCannotBeWrittenEndsARun) {
  const Folder folder;
  const Outcome outcome = runVpm({"translate", folder.write("config.json", kConfig), "--trace-file",
                                  folder.path("no/such/folder")});
  EXPECT_EQ(outcome.exitCode, 3);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, HasSubstr("no/such/folder: the trace cannot be written: cannot create"));
}

}  // namespace
}  // namespace HostTests
