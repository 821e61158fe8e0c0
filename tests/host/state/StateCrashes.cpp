// Whenever the machine goes down or the disk fails, what was acknowledged is there again.

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <stdexcept>

#include "host/Running.h"
#include "host/state/MortalFiles.h"
#include "host/state/StateRun.h"

namespace HostTests {
namespace {

constexpr int kLines = 12;
constexpr int kLinesInATurn = 3;

/// Thousands of small folders take a disk minutes.
std::filesystem::path inMemory() {
  const std::filesystem::path memory("/dev/shm");
  return std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
}

/// Version 1 after so many lines, when nothing goes wrong.
const std::vector<std::string>& undisturbed() {
  static const std::vector<std::string> all = [] {
    std::vector<std::string> after;
    const Folder folder(inMemory());
    StateRun run(folder.path("state"));
    after.push_back(run.version1());
    for (int i = 0; i < kLines; ++i) {
      EXPECT_EQ(run.apply(lineOf(i)), "");
      after.push_back(run.version1());
    }
    return after;
  }();
  return all;
}

/// A run with turns of a few lines each, until it is over or the machine goes down. Returns how
/// many lines were acknowledged.
int liveAndDie(const std::string& folder, MortalFiles& files) {
  int acknowledged = 0;
  try {
    StateRun run(folder, files);
    for (int i = 0; i < kLines; ++i) {
      EXPECT_EQ(run.apply(lineOf(i)), "");
      if (i % kLinesInATurn == kLinesInATurn - 1) {
        EXPECT_EQ(run.sync(), "");
        acknowledged = i + 1;
        run.state.tend(run.trees);
      }
    }
    run.state.end(run.trees);
    acknowledged = kLines;
  } catch (const MortalFiles::Death&) {
  }
  return acknowledged;
}

/// What is in the folder after a restart is the state after so many lines, or more.
void expectAtLeast(int lines, const std::string& folder, const std::string& what) {
  const StateRun again(folder);
  const auto& all = undisturbed();
  const auto found = std::find(all.begin() + lines, all.end(), again.version1());
  EXPECT_NE(found, all.end()) << what << ", " << lines << " lines acknowledged";
}

TEST(StateCrashes, LoseNothingThatWasAcknowledgedWhereverTheMachineGoesDown) {
  std::mt19937 random(1);
  std::size_t n = 1;
  for (bool died = true; died; ++n) {
    const Folder folder(inMemory());
    MortalFiles files;
    files.diesAt = n;
    const int acknowledged = liveAndDie(folder.path("state"), files);
    died = files.operations == n;
    if (files.operations == 1) {
      continue;  // not even the folder is there
    }
    const std::string what = "operation " + std::to_string(n);
    const std::vector<MortalFiles::Survives> fates{
        [](std::size_t) -> std::size_t { return 0; }, [](std::size_t all) { return all; },
        [&](std::size_t all) {
          return std::uniform_int_distribution<std::size_t>(0, all)(random);
        }};
    for (std::size_t i = 0; i < fates.size(); ++i) {
      const std::string left = folder.path("left" + std::to_string(i));
      files.materialise(folder.path("state"), left, fates[i]);
      expectAtLeast(acknowledged, left, what + ", fate " + std::to_string(i));
    }
    // Of a process that is killed, all is left.
    expectAtLeast(acknowledged, folder.path("state"), what + ", killed");
  }
  EXPECT_GT(n, 60U);
}

/// The same with operations that fail for a while.
void liveWithFailures(std::size_t from, std::size_t to) {
  const std::string what = "failing " + std::to_string(from) + " to " + std::to_string(to);
  const Folder folder(inMemory());
  MortalFiles files;
  files.failsFrom = from;
  files.failsTo = to;
  std::optional<StateRun> run;
  try {
    run.emplace(folder.path("state"), files);
  } catch (const std::runtime_error&) {
    return;  // a folder that cannot be begun is the end of the agent
  }
  bool kept = true;  // what is in memory is on disk, or is said to be
  int restarts = 0;
  const auto apply = [&](int number) {
    const std::string before = run->version1();
    const std::string why = run->apply(lineOf(number));
    EXPECT_TRUE(why.empty() || run->version1() == before) << what;
    kept = kept || why.empty();
    return why;
  };
  const auto endTurn = [&] {
    kept = run->sync().empty() && kept;
    if (kept) {
      const std::string left = folder.path("left" + std::to_string(++restarts));
      files.materialise(folder.path("state"), left, [](std::size_t) { return 0U; });
      EXPECT_EQ(StateRun(left).version1(), run->version1()) << what;
    }
    run->state.tend(run->trees);
  };
  for (int i = 0; i < kLines; ++i) {
    apply(i);
    if (i % kLinesInATurn == kLinesInATurn - 1) {
      endTurn();
    }
  }
  while (files.operations < to) {  // the agent goes on, and the disk recovers
    apply(1);
    endTurn();
  }
  endTurn();
  EXPECT_EQ(apply(1), "") << what << ": " << run->said;
  endTurn();
  EXPECT_TRUE(kept) << what;
}

TEST(StateCrashes, AnOperationThatFailsCostsNoMoreThanTheLinesThatWereToldSo) {
  const Folder folder(inMemory());
  MortalFiles files;
  liveAndDie(folder.path("state"), files);
  for (std::size_t n = 1; n <= files.operations; ++n) {
    for (const std::size_t more : {0U, 9U}) {
      liveWithFailures(n, n + more);
    }
  }
}

}  // namespace
}  // namespace HostTests
