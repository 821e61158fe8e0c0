#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "Kel/TextTrace.h"
#include "support/Interruptions.h"
#include "support/OnThreads.h"

namespace {

using Kel::TextTrace::Levels;
using Kel::TextTrace::Line;

const Line kLine{1700000000.1234564, "VelaPolicyMonitor",   8, "VelaPolicyTranslate.cpp", 41,
                 "handleVrf",        "void X::f() vrf: red"};
constexpr const char* kLineText =
    "1700000000.123456 VelaPolicyMonitor 8 VelaPolicyTranslate.cpp:41 handleVrf: "
    "void X::f() vrf: red\n";

/// Replaces the sink while it lives.
class WithSink {
 public:
  explicit WithSink(std::shared_ptr<Kel::TextTrace::Sink> sink)
      : before_(Kel::TextTrace::sinkIs(std::move(sink))) {}
  ~WithSink() { Kel::TextTrace::sinkIs(before_); }
  WithSink(const WithSink&) = delete;
  WithSink& operator=(const WithSink&) = delete;

 private:
  std::shared_ptr<Kel::TextTrace::Sink> before_;
};

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string temporaryPath(const std::string& name) {
  std::string path = testing::TempDir() + "text-trace-" + std::to_string(getpid()) + "-" + name;
  std::filesystem::remove(path);
  return path;
}

Levels parsed(std::string_view text) {
  Levels levels = 0xffff;
  std::string why;
  EXPECT_TRUE(Kel::TextTrace::parseLevels(text, levels, why)) << why;
  return levels;
}

std::string refusal(std::string_view text) {
  Levels levels = 0xffff;
  std::string why;
  EXPECT_FALSE(Kel::TextTrace::parseLevels(text, levels, why)) << text;
  EXPECT_EQ(levels, 0xffffU) << "left as it was";
  return why;
}

TEST(TextTraceLevels, AreSinglesRangesAndListsOfBoth) {
  EXPECT_EQ(parsed("7"), 0x080U);
  EXPECT_EQ(parsed("6-8"), 0x1c0U);
  EXPECT_EQ(parsed("0-9"), 0x3ffU);
  EXPECT_EQ(parsed("6,8"), 0x140U);
  EXPECT_EQ(parsed("0-3,9"), 0x20fU);
  EXPECT_EQ(parsed("5-5"), 0x020U);
  EXPECT_EQ(parsed(""), 0U);
  EXPECT_EQ(parsed("none"), 0U);
}

TEST(TextTraceLevels, ARefusalSaysWhatWasFoundAndWhatIsExpected) {
  EXPECT_EQ(refusal("6-"),
            "\"6-\" is no set of levels; expected digits and rising ranges with commas between, "
            "such as 6-8 or 6,8 or 0-9, or none");
  for (const char* text :
       {"8-6", "10", "x", "6,", ",6", "6,,8", "6 8", "6-8-9", "-", "1-x", "+1"}) {
    EXPECT_NE(refusal(text).find(text), std::string::npos);
  }
}

TEST(TextTraceLevels, ThePrintedFormIsReadBack) {
  EXPECT_EQ(Kel::TextTrace::textOfLevels(0x1c0), "6-8");
  EXPECT_EQ(Kel::TextTrace::textOfLevels(0x20f), "0-3,9");
  EXPECT_EQ(Kel::TextTrace::textOfLevels(0x0c0), "6,7");
  EXPECT_EQ(Kel::TextTrace::textOfLevels(0), "none");
  for (Levels levels = 0; levels <= Kel::TextTrace::kAllLevels; ++levels) {
    EXPECT_EQ(parsed(Kel::TextTrace::textOfLevels(levels)), levels);
  }
}

TEST(TextTraceFacility, IsOneObjectPerNameAndStartsSilent) {
  Kel::TextTrace::Facility& first = Kel::TextTrace::facility("TestOfNames");
  EXPECT_EQ(&Kel::TextTrace::facility("TestOfNames"), &first);
  EXPECT_NE(&Kel::TextTrace::facility("TestOfName"), &first);
  EXPECT_EQ(first.name(), "TestOfNames");
  EXPECT_EQ(first.levels(), 0U);
}

TEST(TextTraceFacility, ListensToItsLevelsOnly) {
  Kel::TextTrace::Facility& facility = Kel::TextTrace::facility("TestOfLevels");
  facility.levelsAre(0x140);
  EXPECT_TRUE(facility.listens(6));
  EXPECT_FALSE(facility.listens(7));
  EXPECT_TRUE(facility.listens(8));
  EXPECT_EQ(Kel::TextTrace::levelsOfAny() & 0x140U, 0x140U);
  facility.levelsAre(0xffffffff);
  EXPECT_EQ(facility.levels(), 0x3ffU);
  facility.levelsAre(0);
}

TEST(TextTraceFacility, IsOneObjectWhenManyThreadsAskFirst) {
  for (int round = 0; round < 20; ++round) {
    const std::string name = "TestOfThreads" + std::to_string(round);
    std::array<Kel::TextTrace::Facility*, 4> found{};
    TestSupport::onThreads(found.size(),
                           [&](std::size_t i) { found[i] = &Kel::TextTrace::facility(name); });
    for (const auto* place : found) {
      EXPECT_EQ(place, found[0]);
    }
  }
}

TEST(TextTraceSettings, SetTheLevelsOfEveryFacilityNamed) {
  std::string why;
  EXPECT_TRUE(Kel::TextTrace::levelsAre("SettingA/6,8,SettingB/0-3,SettingC/", why)) << why;
  EXPECT_EQ(Kel::TextTrace::facility("SettingA").levels(), 0x140U);
  EXPECT_EQ(Kel::TextTrace::facility("SettingB").levels(), 0x00fU);
  EXPECT_EQ(Kel::TextTrace::facility("SettingC").levels(), 0U);
  EXPECT_TRUE(Kel::TextTrace::levelsAre("SettingA/none,SettingB/none", why)) << why;
  EXPECT_EQ(Kel::TextTrace::facility("SettingA").levels(), 0U);
}

TEST(TextTraceSettings, AFaultAnywhereSetsNothing) {
  std::string why;
  EXPECT_FALSE(Kel::TextTrace::levelsAre("SettingD/6,SettingE/8-6", why));
  EXPECT_EQ(why.find("facility SettingE: \"8-6\" is no set of levels"), 0U) << why;
  EXPECT_EQ(Kel::TextTrace::facility("SettingD").levels(), 0U);
  EXPECT_FALSE(Kel::TextTrace::levelsAre("6-8", why));
  EXPECT_EQ(why,
            "\"6-8\" names no facility; expected FACILITY/LEVELS, such as VelaPolicyMonitor/6-8, "
            "and further ones after a comma");
  EXPECT_FALSE(Kel::TextTrace::levelsAre("/6", why));
  EXPECT_FALSE(Kel::TextTrace::levelsAre("A/6/7", why));
  EXPECT_FALSE(Kel::TextTrace::levelsAre("A/6,,B/7", why));
  EXPECT_FALSE(Kel::TextTrace::levelsAre("A,B/6/7", why));
  EXPECT_EQ(why, "\"A,B/6/7\" has two slashes in one item; expected FACILITY/LEVELS");
}

int changes = 0;

TEST(TextTraceSettings, AChangeIsReportedAfterItWasMade) {
  const auto before = Kel::TextTrace::levelObserverIs([] { ++changes; });
  changes = 0;
  Kel::TextTrace::facility("TestOfChanges").levelsAre(0x40);
  EXPECT_EQ(changes, 1);
  Kel::TextTrace::facility("TestOfChanges").levelsAre(0);
  EXPECT_EQ(changes, 2);
  Kel::TextTrace::levelObserverIs(before);
}

TEST(TextTraceForm, ALineHasTimeFacilityLevelPlaceHandlerAndMessage) {
  std::string out;
  Kel::TextTrace::appendLine(out, kLine);
  EXPECT_EQ(out, kLineText);
}

TEST(TextTraceForm, ControlBytesAreEscapedAndNothingElse) {
  std::string out = "\n";  // what stands before stays
  Kel::TextTrace::appendEscaped(out, std::string_view("a\0b\n\x1f \x7f~\x80\xff\\x", 12));
  EXPECT_EQ(out, "\na\\x00b\\x0a\\x1f \\x7f~\x80\xff\\x");
  Kel::TextTrace::escapeFrom(out, 0);
  EXPECT_EQ(out.substr(0, 5), "\\x0aa");
}

TEST(TextTraceSink, AFileHasEachLineWhenItsWriteReturns) {
  const std::string path = temporaryPath("file");
  std::string why;
  const WithSink sink(Kel::TextTrace::fileSink(path, why));
  Kel::TextTrace::write(kLine);
  EXPECT_EQ(contentOf(path), kLineText);
  Kel::TextTrace::write(kLine);
  EXPECT_EQ(contentOf(path), std::string(kLineText) + kLineText);
}

TEST(TextTraceSink, AFileIsAppendedTo) {
  const std::string path = temporaryPath("append");
  std::ofstream(path) << "before\n";
  std::string why;
  const WithSink sink(Kel::TextTrace::fileSink(path, why));
  Kel::TextTrace::write(kLine);
  EXPECT_EQ(contentOf(path), std::string("before\n") + kLineText);
}

TEST(TextTraceSink, AKilledProcessHasLostNoLine) {
  const std::string path = temporaryPath("killed");
  const pid_t child = fork();
  if (child == 0) {
    std::string why;
    Kel::TextTrace::sinkIs(Kel::TextTrace::fileSink(path, why));
    Kel::TextTrace::write(kLine);
    raise(SIGKILL);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(contentOf(path), kLineText);
}

TEST(TextTraceSink, AFileThatCannotBeOpenedSaysWhichAndWhy) {
  std::string why;
  EXPECT_EQ(Kel::TextTrace::fileSink("/no/such/folder/trace", why), nullptr);
  EXPECT_EQ(why, "cannot open trace file /no/such/folder/trace: No such file or directory");
}

TEST(TextTraceSink, NullAndTheFileDashAreStandardError) {
  std::string why;
  for (const auto& sink :
       {Kel::TextTrace::fileSink("-", why), std::shared_ptr<Kel::TextTrace::Sink>()}) {
    const WithSink set(sink);
    testing::internal::CaptureStderr();
    Kel::TextTrace::write(kLine);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), kLineText);
  }
}

TEST(TextTraceSink, AFullDiskLosesLinesAndNothingElse) {
  std::string why;
  const auto full = Kel::TextTrace::fileSink("/dev/full", why);
  ASSERT_NE(full, nullptr) << why;
  const WithSink sink(full);
  const std::uint64_t before = Kel::TextTrace::linesLost();
  errno = 7;
  Kel::TextTrace::write(kLine);
  EXPECT_EQ(errno, 7);
  EXPECT_EQ(Kel::TextTrace::linesLost(), before + 1);
}

TEST(TextTraceSink, AClosedPipeLosesLinesAndItsSignalDoesNotArrive) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  std::string why;
  const WithSink sink(Kel::TextTrace::fileSink("/dev/fd/" + std::to_string(ends[1]), why));
  ASSERT_EQ(why, "");
  close(ends[0]);
  const std::uint64_t before = Kel::TextTrace::linesLost();
  Kel::TextTrace::write(kLine);
  EXPECT_EQ(Kel::TextTrace::linesLost(), before + 1);
  sigset_t pending;
  sigpending(&pending);
  EXPECT_EQ(sigismember(&pending, SIGPIPE), 0);
  close(ends[1]);
}

TEST(TextTraceSink, ASignalOfAPipeThatWasWaitingAlreadyGoesOnWaiting) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  std::string why;
  const WithSink sink(Kel::TextTrace::fileSink("/dev/fd/" + std::to_string(ends[1]), why));
  sigset_t signals;
  sigset_t before;
  sigemptyset(&signals);
  sigaddset(&signals, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &signals, &before);
  raise(SIGPIPE);
  Kel::TextTrace::write(kLine);
  sigset_t pending;
  sigpending(&pending);
  EXPECT_EQ(sigismember(&pending, SIGPIPE), 1);
  const timespec now{};
  EXPECT_EQ(sigtimedwait(&signals, nullptr, &now), SIGPIPE);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  close(ends[0]);
  close(ends[1]);
}

TEST(TextTraceSink, AWriteThatASignalInterruptsGoesOn) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe2(ends.data(), O_NONBLOCK), 0);
  std::string why;
  const WithSink sink(Kel::TextTrace::fileSink("/dev/fd/" + std::to_string(ends[1]), why));
  std::string filling(4096, 'x');
  while (write(ends[1], filling.data(), filling.size()) > 0) {
  }
  const std::uint64_t before = Kel::TextTrace::linesLost();
  std::string arrived;
  TestSupport::withInterruptions(
      [] { Kel::TextTrace::write(kLine); },
      [&] {
        while (!arrived.ends_with(kLineText)) {
          const ssize_t got = read(ends[0], filling.data(), filling.size());
          arrived.append(filling, 0, static_cast<std::size_t>(got < 0 ? 0 : got));
        }
      });
  EXPECT_EQ(Kel::TextTrace::linesLost(), before);
  close(ends[0]);
  close(ends[1]);
}

TEST(TextTraceSink, ALineAfterATornOneBeginsOnItsOwn) {
  const std::string path = temporaryPath("torn");
  const std::uint64_t before = Kel::TextTrace::linesLost();
  const pid_t child = fork();
  if (child == 0) {  // a limit on the size of files stands for a full disk
    signal(SIGXFSZ, SIG_IGN);
    std::string why;
    Kel::TextTrace::sinkIs(Kel::TextTrace::fileSink(path, why));
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = 10;
    setrlimit(RLIMIT_FSIZE, &limit);
    Kel::TextTrace::write(kLine);
    Kel::TextTrace::write(kLine);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_FSIZE, &limit);
    Kel::TextTrace::write(kLine);
    Kel::TextTrace::write(kLine);
    _exit(Kel::TextTrace::linesLost() == before + 2 ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(contentOf(path), "1700000000\n" + std::string(kLineText) + kLineText);
}

TEST(TextTraceSink, AFunctionThatThrowsLosesTheLineAndNothingElse) {
  const WithSink sink(
      Kel::TextTrace::callbackSink([](const Line&) { throw std::runtime_error("x"); }));
  const std::uint64_t before = Kel::TextTrace::linesLost();
  EXPECT_NO_THROW(Kel::TextTrace::write(kLine));
  EXPECT_NO_THROW(Kel::TextTrace::write(kLine));
  EXPECT_EQ(Kel::TextTrace::linesLost(), before + 2);
}

TEST(TextTraceSink, ALineFromInsideASinkIsLost) {
  int lines = 0;
  const WithSink sink(Kel::TextTrace::callbackSink([&](const Line& line) {
    ++lines;
    Kel::TextTrace::write(line);
  }));
  const std::uint64_t before = Kel::TextTrace::linesLost();
  Kel::TextTrace::write(kLine);
  EXPECT_EQ(lines, 1);
  EXPECT_EQ(Kel::TextTrace::linesLost(), before + 1);
  Kel::TextTrace::write(kLine);
  EXPECT_EQ(lines, 2) << "only lines from inside are lost";
}

TEST(TextTraceSink, LinesOfManyThreadsAreWholeAndAllThere) {
  const std::string path = temporaryPath("threads");
  std::string why;
  const WithSink sink(Kel::TextTrace::fileSink(path, why));
  TestSupport::onThreads(4, [](std::size_t) {
    for (int round = 0; round < 100; ++round) {
      Kel::TextTrace::write(kLine);
    }
  });
  std::ifstream file(path);
  int lines = 0;
  for (std::string line; std::getline(file, line); ++lines) {
    ASSERT_EQ(line + "\n", kLineText);
  }
  EXPECT_EQ(lines, 400);
}

/// Runs this program's test `name` alone with VELA_TRACE set; what it wrote to standard error.
std::string runWithEnvironment(const std::string& name, const std::string& setting) {
  const std::string log = temporaryPath("environment");
  const std::string self = std::filesystem::read_symlink("/proc/self/exe");
  const std::string command = "VELA_TRACE_CHILD=1 VELA_TRACE='" + setting + "' '" + self +
                              "' --gtest_filter=" + name + " >/dev/null 2>'" + log + "'";
  EXPECT_EQ(std::system(command.c_str()), 0);
  return contentOf(log);
}

bool isChild() { return std::getenv("VELA_TRACE_CHILD") != nullptr; }

TEST(TextTraceEnvironment, SetsLevelsAndLinesGoToStandardError) {
  if (isChild()) {
    EXPECT_EQ(Kel::TextTrace::facility("VelaPolicyMonitor").levels(), 0x1c0U);
    EXPECT_EQ(Kel::TextTrace::facility("Other").levels(), 0x001U);
    Kel::TextTrace::write(kLine);
  } else {
    EXPECT_EQ(runWithEnvironment("TextTraceEnvironment.SetsLevelsAndLinesGoToStandardError",
                                 "VelaPolicyMonitor/6-8,Other/0"),
              kLineText);
  }
}

TEST(TextTraceEnvironment, AFaultIsReportedAndIgnored) {
  if (isChild()) {
    EXPECT_EQ(Kel::TextTrace::facility("VelaPolicyMonitor").levels(), 0U);
  } else {
    EXPECT_EQ(
        runWithEnvironment("TextTraceEnvironment.AFaultIsReportedAndIgnored", "loud"),
        "VELA_TRACE is ignored: \"loud\" names no facility; expected FACILITY/LEVELS, such as "
        "VelaPolicyMonitor/6-8, and further ones after a comma\n");
  }
}

}  // namespace
