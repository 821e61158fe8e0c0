#include "state/StateFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <thread>

#include "host/Running.h"
#include "host/state/StateRun.h"
#include "state/StateError.h"

namespace HostTests {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr Host::StateFolder::Settings kNoSnapshots{std::size_t{1} << 30U,
                                                   std::chrono::milliseconds(0), false};

class StateFolder : public testing::Test {
 protected:
  /// A run of so many lines that ends without warning; what version 1 was then.
  std::string live(int lines, Host::StateFolder::Settings settings = kNoSnapshots) {
    StateRun run(path_, QuickFiles::instance(), settings);
    for (int i = 0; i < lines; ++i) {
      EXPECT_EQ(run.apply(lineOf(i)), "");
    }
    EXPECT_EQ(run.sync(), "");
    return run.version1();
  }
  std::string journal() const { return folder_.read("state/journal-1"); }
  /// Why the folder cannot be gone on from.
  std::string refusal() {
    try {
      const StateRun run(path_);
    } catch (const Host::StateError& error) {
      return error.what();
    }
    return "none";
  }

  Folder folder_;
  const std::string path_ = folder_.path("state");
};

TEST_F(StateFolder, IsTheUsersAlone) {
  live(1);
  const auto modeOf = [](const std::string& path) {
    struct stat about {};
    EXPECT_EQ(::stat(path.c_str(), &about), 0) << path;
    return about.st_mode & 0777U;
  };
  EXPECT_EQ(modeOf(path_), 0700U);
  EXPECT_EQ(modeOf(path_ + "/snapshot-1"), 0700U);
  for (const char* const file : {"/lock", "/journal-1", "/documents.json",
                                 "/snapshot-1/configuration.json", "/snapshot-1/manifest"}) {
    EXPECT_EQ(modeOf(path_ + file), 0600U) << file;
  }
}

TEST_F(StateFolder, IsForOneAgentAtATime) {
  const StateRun first(path_);
  EXPECT_THAT(refusal(), HasSubstr("state/lock: process " + std::to_string(::getpid()) +
                                   " works on this folder; stop it first"));
}

TEST_F(StateFolder, HasTheJournalAsAChangeLogThatAPersonCanRead) {
  StateRun run(path_, QuickFiles::instance(), kNoSnapshots);
  run.apply(lineOf(1));
  EXPECT_THAT(journal(),
              testing::MatchesRegex(R"(1 [0-9a-f]{8} \{"time":1.25,"update":\[\{"path":"/vela-l3:)"
                                    R"(policy-source/policy-set\[device-name='fw1'\]/policy.*)"
                                    R"("tags":"1"\}\]\}\}\],"control":"initialize"\}.)"));
}

TEST_F(StateFolder, LeavesLinesOutThatChangeNothingOfVersion1) {
  StateRun run(path_, QuickFiles::instance(), kNoSnapshots);
  EXPECT_EQ(run.apply(R"({"time":4,"control":"suspend","show":["v2"]})"), "");
  EXPECT_EQ(journal(), "");
}

TEST_F(StateFolder, GoesOnWhereAKilledAgentWas) {
  const std::string before = live(13);
  StateRun again(path_);
  EXPECT_EQ(again.version1(), before);
  EXPECT_EQ(again.said, "");
  EXPECT_EQ(again.apply(lineOf(13)), "");
  again.sync();
  const std::string after = again.version1();
  EXPECT_NE(after, before);
  again.state.end(again.trees);
}

TEST_F(StateFolder, LoadsVersion2AsTheSnapshotHasItForTheLibraryToReconcile) {
  {
    StateRun run(path_, QuickFiles::instance(), kNoSnapshots);
    run.apply(lineOf(0));
    run.apply(lineOf(1));
    run.state.end(run.trees);
  }
  const Host::Trees trees;
  Host::StateFolder state(path_, [](const std::string&) {});
  state.load(trees);
  ASSERT_EQ(trees.policyV2->policySet().size(), 1U);
  EXPECT_EQ(trees.policyV2->policySet("fw1")->policy("net-0")->timestamp(), 1.25);
}

TEST_F(StateFolder, AfterAGoodEndTheNextStartHasNoJournalToRead) {
  std::string before;
  {
    StateRun run(path_, QuickFiles::instance(), kNoSnapshots);
    run.apply(lineOf(1));
    run.state.end(run.trees);
    before = run.version1();
  }
  EXPECT_EQ(folder_.read("state/journal-2"), "");
  EXPECT_FALSE(std::filesystem::exists(path_ + "/journal-1"));
  EXPECT_FALSE(std::filesystem::exists(path_ + "/snapshot-1"));
  EXPECT_EQ(StateRun(path_).version1(), before);
}

TEST_F(StateFolder, CutsOffARecordThatWasBeingWrittenAndSaysSo) {
  const std::string one = live(1);
  const std::size_t first = journal().size();
  std::filesystem::remove_all(path_);
  const std::string two = live(2);
  const std::string whole = journal();
  for (std::size_t size = first + 1; size < whole.size(); ++size) {
    std::filesystem::resize_file(path_ + "/journal-1", size);
    StateRun run(path_, QuickFiles::instance(), kNoSnapshots);
    EXPECT_EQ(run.version1(), one) << size;
    EXPECT_EQ(run.said, path_ +
                            "/journal-1: the last record is incomplete, as happens when a "
                            "machine goes down while it is being written; cut off " +
                            std::to_string(size - first) + " bytes at offset " +
                            std::to_string(first) + "\n");
    EXPECT_EQ(journal().size(), first);
    // What follows is good again.
    EXPECT_EQ(run.apply(lineOf(1)), "");
    EXPECT_EQ(journal(), whole);
  }
  EXPECT_EQ(StateRun(path_).version1(), two);
}

TEST_F(StateFolder, RefusesAJournalThatIsDamagedBeforeItsEndAndLeavesItAlone) {
  live(3);
  const std::string whole = journal();
  const std::size_t second = whole.find('\n') + 1;
  const std::size_t third = whole.find('\n', second) + 1;
  for (std::size_t i = 0; i < whole.size(); ++i) {
    std::string bad = whole;
    bad[i] = static_cast<char>(bad[i] ^ 0x04);
    folder_.write("state/journal-1", bad);
    const std::size_t offset = i < second ? 0 : i < third ? second : third;
    if (offset < third) {
      EXPECT_THAT(refusal(),
                  StartsWith(path_ + "/journal-1: damaged at offset " + std::to_string(offset) +
                             ": what should be record " + (offset == 0 ? "1" : "2") +
                             " does not have its checksum, and good records follow. "))
          << i;
      EXPECT_EQ(journal(), bad);
    } else {
      StateRun run(path_);
      EXPECT_THAT(run.said,
                  HasSubstr(i + 1 < whole.size() ? "does not have its checksum" : "is incomplete"));
    }
  }
}

TEST_F(StateFolder, RefusesAGapBetweenJournals) {
  live(3);
  const std::string whole = journal();
  folder_.write("state/journal-1", whole.substr(whole.find('\n') + 1));
  EXPECT_THAT(refusal(), HasSubstr("journal-1: damaged at offset 0: record 2 follows record 0"));
  std::filesystem::remove(path_ + "/journal-1");
  EXPECT_THAT(refusal(), HasSubstr("journal-1: this journal is missing. "));
}

TEST_F(StateFolder, RefusesADamagedSnapshotAndOneThatIsMissing) {
  live(3);
  const std::string file = "state/snapshot-1/configuration.json";
  const std::string good = folder_.read(file);
  std::string bad = good;
  bad[bad.size() / 2] ^= 1;
  folder_.write(file, bad);
  EXPECT_THAT(refusal(), HasSubstr(file + ": the file is damaged: it has " +
                                   std::to_string(good.size()) + " bytes with the checksum "));
  std::filesystem::remove_all(path_ + "/snapshot-1");
  EXPECT_THAT(refusal(), HasSubstr("journal-1: a journal without a snapshot; put the folder back"));
}

TEST_F(StateFolder, KeepsWhatTheDocumentsSaidWhenTheyWereReadLast) {
  StateRun run(path_);
  run.apply(lineOf(1));
  const Host::Trees documents;
  documents.policyV1->policySetIs("from a document");
  run.state.documentsAre(documents);
  const Host::Trees read;
  run.state.loadDocuments(read);
  EXPECT_EQ(version1Of(read), version1Of(documents));
}

TEST_F(StateFolder, OnAFullDiskRefusesLinesBeforeTheyAreAppliedAndGoesOnWhenThereIsRoom) {
  StateRun run(path_, QuickFiles::instance(), kNoSnapshots);
  ASSERT_EQ(run.apply(lineOf(1)), "");
  const std::string before = run.version1();
  const std::size_t size = journal().size();
  auto* const old = std::signal(SIGXFSZ, SIG_IGN);
  struct rlimit limit {};
  ::getrlimit(RLIMIT_FSIZE, &limit);
  const struct rlimit tight { size + 10, limit.rlim_max };
  ::setrlimit(RLIMIT_FSIZE, &tight);
  const std::string why = run.apply(lineOf(2));
  const std::string sync = run.sync();
  ::setrlimit(RLIMIT_FSIZE, &limit);
  std::signal(SIGXFSZ, old);
  EXPECT_EQ(why, "not applied, since it could not be kept: " + path_ +
                     "/journal-1: cannot be written: File too large");
  EXPECT_EQ(sync, "");
  EXPECT_EQ(run.version1(), before);
  EXPECT_EQ(journal().size(), size);
  EXPECT_EQ(run.apply(lineOf(2)), "");
}

TEST_F(StateFolder, WritesSnapshotsBesideTheWork) {
  constexpr Host::StateFolder::Settings kInAChild{0, std::chrono::milliseconds(0), true};
  StateRun run(path_, QuickFiles::instance(), kInAChild);
  int line = 0;
  const auto work = [&] {
    EXPECT_EQ(run.apply(lineOf(line++)), "");
    EXPECT_EQ(run.sync(), "");
    run.state.tend(run.trees);
  };
  while (!std::filesystem::exists(path_ + "/snapshot-3/manifest") && line < 10000) {
    work();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_LT(line, 10000) << run.said;
  EXPECT_FALSE(std::filesystem::exists(path_ + "/snapshot-1"));
  work();
  const std::string now = run.version1();
  std::filesystem::copy(path_, folder_.path("copy"), std::filesystem::copy_options::recursive);
  EXPECT_EQ(StateRun(folder_.path("copy")).version1(), now);
  EXPECT_EQ(run.said, "");
}

}  // namespace
}  // namespace HostTests
