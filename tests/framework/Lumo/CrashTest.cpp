#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <set>
#include <thread>

#include "TraceTools.h"

// What is in the files when the process is gone, whenever that was.

namespace {

using LumoTest::Folder;
using LumoTest::kBlock;
using LumoTest::kNumber;
using LumoTest::readWithBabeltrace;

using Block = std::array<std::uint32_t, 250>;

Block blockOf(std::uint32_t number) {
  Block block{};
  block.fill(number);
  return block;
}

/// The segments of a folder behind one another.
std::string segmentsOf(const Folder& folder, std::size_t count) {
  std::string bytes;
  for (std::size_t i = 0; i < count; ++i) {
    bytes += folder.content("segment-000" + std::to_string(i));
  }
  return bytes;
}

/// The numbers of the blocks, oldest first; every block must be whole and follow the one before.
std::vector<std::uint32_t> wholeBlocks(const std::string& bytes, std::size_t size) {
  std::vector<std::uint32_t> numbers;
  std::uint64_t last = 0;
  EXPECT_TRUE(Lumo::forEachRecord(
      std::as_bytes(std::span(bytes)), size, Lumo::siteOf, [&](const Lumo::Record& record) {
        EXPECT_GT(record.stamp, last);
        last = record.stamp;
        Block block{};
        std::memcpy(block.data(), record.values.at(0).bytes.data(), sizeof block);
        EXPECT_EQ(block, blockOf(block[0])) << "torn";
        EXPECT_TRUE(numbers.empty() || block[0] == numbers.back() + 1) << "reordered or lost";
        numbers.push_back(block[0]);
      }));
  return numbers;
}

TEST(Crash, AKillAtAnyTimeLeavesWholeOrderedRecords) {
  constexpr std::size_t kSize = 8192;
  constexpr std::size_t kCount = 3;
  const Lumo::Site& site = LumoTest::siteWith(kBlock);
  for (int kill = 0; kill < 40; ++kill) {
    const Folder folder("kill");
    std::array<int, 2> started{};
    ASSERT_EQ(pipe(started.data()), 0);
    const pid_t child = fork();
    if (child == 0) {
      const auto ring = LumoTest::openRing(folder.path(), kSize, kCount);
      LumoTest::put(*ring, site, blockOf(1));
      static_cast<void>(!write(started[1], "x", 1));
      for (std::uint32_t i = 2;; ++i) {
        LumoTest::put(*ring, site, blockOf(i), i);
      }
    }
    char byte = 0;
    ASSERT_EQ(read(started[0], &byte, 1), 1);
    std::this_thread::sleep_for(std::chrono::microseconds(kill * 37 % 900));
    ASSERT_EQ(::kill(child, SIGKILL), 0);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
    close(started[0]);
    close(started[1]);

    const std::vector<std::uint32_t> numbers = wholeBlocks(segmentsOf(folder, kCount), kSize);
    ASSERT_FALSE(numbers.empty());
    const auto reading = readWithBabeltrace(folder.path());
    EXPECT_EQ(reading.status, 0) << reading.errors;
    EXPECT_EQ(reading.errors, "");
    EXPECT_EQ(reading.lines.size(), numbers.size());
  }
}

/// The headers of all segments: as long as they are the same, a reader sees the same records.
std::string headersIn(const std::string& bytes, std::size_t size) {
  std::string headers;
  for (std::size_t at = 0; at < bytes.size(); at += size) {
    headers += bytes.substr(at, sizeof(Lumo::PacketHeader));
  }
  return headers;
}

/// The segments of a folder in memory, because they are looked at after every instruction.
class MappedSegments {
 public:
  MappedSegments(const Folder& folder, std::size_t size, std::size_t count) : size_(size) {
    for (std::size_t i = 0; i < count; ++i) {
      const std::string path = folder.path() + "/segment-000" + std::to_string(i);
      const int file = open(path.c_str(), O_RDONLY);
      segments_.push_back(mmap(nullptr, size, PROT_READ, MAP_SHARED, file, 0));
      EXPECT_NE(segments_.back(), MAP_FAILED) << path;
      close(file);
    }
  }
  ~MappedSegments() {
    for (void* const segment : segments_) {
      munmap(segment, size_);
    }
  }
  MappedSegments(const MappedSegments&) = delete;
  MappedSegments& operator=(const MappedSegments&) = delete;

  bool differFrom(const std::string& bytes) const {
    bool same = bytes.size() == size_ * segments_.size();
    for (std::size_t i = 0; same && i < segments_.size(); ++i) {
      same = std::memcmp(bytes.data() + i * size_, segments_[i], size_) == 0;
    }
    return !same;
  }
  std::string copy() const {
    std::string bytes;
    for (const void* const segment : segments_) {
      bytes.append(static_cast<const char*>(segment), size_);
    }
    return bytes;
  }

 private:
  std::size_t size_;
  std::vector<void*> segments_;
};

// The child is executed one instruction at a time, and after each one the files are what they would
// be if it had been killed there.
TEST(Crash, AfterEveryInstructionOfSeveralWrapsTheTraceIsWhole) {
  constexpr std::size_t kSize = 4096;  // three blocks to a segment
  constexpr std::size_t kCount = 2;
  const Folder folder("step");
  const Lumo::Site& site = LumoTest::siteWith(kBlock);
  const pid_t child = fork();
  if (child == 0) {
    const auto ring = LumoTest::openRing(folder.path(), kSize, kCount);
    for (std::uint32_t i = 1; i <= 6; ++i) {
      LumoTest::put(*ring, site, blockOf(i));
    }
    std::array<Block, 8> blocks{};
    for (std::uint32_t i = 0; i < 8; ++i) {
      blocks[i] = blockOf(7 + i);
    }
    ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    raise(SIGSTOP);
    for (const Block& block : blocks) {
      LumoTest::put(*ring, site, block);
    }
    raise(SIGKILL);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSTOPPED(status)) << "this machine does not let a test trace its own child";

  const MappedSegments files(folder, kSize, kCount);
  std::string last;
  std::set<std::string> seen;
  std::uint32_t newest = 6;
  std::size_t steps = 0;
  while (WIFSTOPPED(status)) {
    if (files.differFrom(last)) {
      const std::string bytes = files.copy();
      last = bytes;
      const std::vector<std::uint32_t> numbers = wholeBlocks(bytes, kSize);
      ASSERT_GE(numbers.size(), 3U) << "more than one segment was lost, at step " << steps;
      ASSERT_TRUE(numbers.back() == newest || numbers.back() == newest + 1) << "at step " << steps;
      newest = numbers.back();
      if (seen.insert(headersIn(bytes, kSize)).second) {
        const auto reading = readWithBabeltrace(folder.path());
        ASSERT_EQ(reading.status, 0) << "at step " << steps << ": " << reading.errors;
        ASSERT_EQ(reading.errors, "") << "at step " << steps;
        ASSERT_EQ(reading.lines.size(), numbers.size()) << "at step " << steps;
      }
    }
    ++steps;
    ASSERT_EQ(ptrace(PTRACE_SINGLESTEP, child, nullptr, nullptr), 0);
    ASSERT_EQ(waitpid(child, &status, 0), child);
    if (WIFSTOPPED(status) && WSTOPSIG(status) == SIGKILL) {
      break;
    }
  }
  EXPECT_EQ(newest, 14U) << "all eight records were seen to arrive";
  EXPECT_GT(seen.size(), 20U) << "the instructions in between were seen";
}

TEST(Crash, AProcessThatCrashesLeavesItsLastRecord) {
  for (const int crash : {SIGSEGV, SIGABRT}) {
    const Folder folder("crash");
    const Lumo::Site& site = LumoTest::siteWith(kNumber);
    const pid_t child = fork();
    if (child == 0) {
      signal(crash, SIG_DFL);
      const rlimit none{0, 0};
      setrlimit(RLIMIT_CORE, &none);
      const auto ring = LumoTest::openRing(folder.path());
      LumoTest::put(*ring, site, std::uint32_t{41}, 1'000'000'000, 1);
      LumoTest::put(*ring, site, std::uint32_t{42}, 1'000'000'000, 1);
      raise(crash);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
    const auto reading = readWithBabeltrace(folder.path());
    EXPECT_EQ(reading.status, 0) << reading.errors;
    ASSERT_EQ(reading.lines.size(), 2U);
    EXPECT_NE(reading.lines.back().find("number = 42"), std::string::npos);
  }
}

}  // namespace
