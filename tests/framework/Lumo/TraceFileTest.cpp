#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <numeric>

#include "Lumo/Metadata.h"
#include "Lumo/Packet.h"
#include "Lumo/TraceFile.h"
#include "TraceTools.h"
#include "framework/Kel/FailingMemory.h"
#include "support/FailingCall.h"
#include "support/OnThreads.h"

namespace {

using LumoTest::Folder;
using LumoTest::kBlock;
using LumoTest::kNumber;
using LumoTest::memoryRing;
using LumoTest::numbersIn;
using LumoTest::openRing;
using LumoTest::put;
using LumoTest::readWithBabeltrace;
using LumoTest::siteWith;

const Lumo::Site& numberSite() {
  static const Lumo::Site& site = siteWith(kNumber);
  return site;
}

std::vector<std::uint32_t> upTo(std::uint32_t first, std::uint32_t last) {
  std::vector<std::uint32_t> numbers(last - first + 1);
  std::iota(numbers.begin(), numbers.end(), first);
  return numbers;
}

// 4096 bytes hold a header of 80 and 125 records of 32.
constexpr std::uint32_t kPerSegment = 125;

TEST(TraceFile, AnUnusedRingIsReadAsAnEmptyTrace) {
  const Folder folder("unused");
  const auto ring = openRing(folder.path());
  EXPECT_EQ(numbersIn(*ring), std::vector<std::uint32_t>{});
  const auto reading = readWithBabeltrace(folder.path());
  EXPECT_EQ(reading.status, 0) << reading.errors;
  EXPECT_EQ(reading.errors, "");
  EXPECT_TRUE(reading.lines.empty());
}

TEST(TraceFile, ARecordIsReadWhileTheWriterLives) {
  const Folder folder("live");
  const auto ring = openRing(folder.path());
  put(*ring, numberSite(), std::uint32_t{7}, 2'500'000'000, 2.5);
  const auto reading = readWithBabeltrace(folder.path(), "--clock-seconds --no-delta");
  EXPECT_EQ(reading.errors, "");
  ASSERT_EQ(reading.lines.size(), 1U);
  EXPECT_EQ(reading.lines[0],
            "[2.500000000] void Space::Class::f() number: %s: { seconds = 2.5, subject = 0 }, "
            "{ number = 7 }");
}

TEST(TraceFile, AFullRingForgetsItsOldestSegment) {
  const auto ring = memoryRing(4096, 3);
  for (std::uint32_t i = 1; i <= kPerSegment * 3; ++i) {
    put(*ring, numberSite(), i);
  }
  EXPECT_EQ(numbersIn(*ring), upTo(1, kPerSegment * 3));
  put(*ring, numberSite(), kPerSegment * 3 + 1);
  EXPECT_EQ(numbersIn(*ring), upTo(kPerSegment + 1, kPerSegment * 3 + 1));
}

TEST(TraceFile, IsReadAfterEveryRecordOfSeveralWraps) {
  const Folder folder("wraps");
  const auto ring = openRing(folder.path(), 4096, 2);
  const Lumo::Site& blocks = siteWith(kBlock);  // three to a segment
  std::array<std::uint32_t, 250> block{};
  for (std::uint32_t i = 1; i <= 14; ++i) {
    block[0] = i;
    ASSERT_TRUE(put(*ring, blocks, block, i));
    const auto reading = readWithBabeltrace(folder.path());
    ASSERT_EQ(reading.status, 0) << "after record " << i << ": " << reading.errors;
    ASSERT_EQ(reading.lines.size(), i <= 6 ? i : 4 + (i - 1) % 3) << "after record " << i;
  }
  EXPECT_EQ(numbersIn(*ring), upTo(10, 14));
}

TEST(TraceFile, StampsRiseStrictlyWhateverTheClockSays) {
  const auto ring = memoryRing();
  for (const std::uint64_t time : {100U, 100U, 50U, 0U, 200U, 199U}) {
    put(*ring, numberSite(), std::uint32_t{1}, time);
  }
  std::vector<std::uint64_t> stamps;
  Lumo::forEachRecord(ring->memory(), ring->segmentSize(), Lumo::siteOf,
                      [&](const Lumo::Record& record) { stamps.push_back(record.stamp); });
  EXPECT_EQ(stamps, (std::vector<std::uint64_t>{100, 101, 102, 103, 200, 201}));
}

TEST(TraceFile, AClockBeforeTheEpochStillGivesAReadableTrace) {
  const Folder folder("early");
  const auto ring = openRing(folder.path());
  for (std::uint32_t i = 1; i <= kPerSegment * 5; ++i) {
    put(*ring, numberSite(), i, 0, -1.0);
  }
  const auto reading = readWithBabeltrace(folder.path());
  EXPECT_EQ(reading.status, 0) << reading.errors;
  EXPECT_EQ(reading.lines.size(), kPerSegment * 4U);
}

TEST(TraceFile, ThePrintedTimeIsKeptAsItIs) {
  const auto ring = memoryRing();
  for (const double seconds : {1700000000.1234567, -3.5, 1e300}) {
    put(*ring, numberSite(), std::uint32_t{1}, 1, seconds);
  }
  std::vector<double> times;
  Lumo::forEachRecord(ring->memory(), ring->segmentSize(), Lumo::siteOf,
                      [&](const Lumo::Record& record) { times.push_back(record.seconds); });
  EXPECT_EQ(times, (std::vector<double>{1700000000.1234567, -3.5, 1e300}));
}

TEST(TraceFile, ARecordLargerThanASegmentIsDroppedAndCounted) {
  const auto ring = memoryRing();
  constexpr std::size_t kLargest = 4096 - 80 - 28;
  EXPECT_EQ(ring->begin(numberSite().id, kLargest + 1, 1, 0), nullptr);
  EXPECT_EQ(ring->discarded(), 1U);
  EXPECT_NE(ring->begin(numberSite().id, kLargest, 1, 0), nullptr);
  ring->abandon();
  EXPECT_EQ(ring->discarded(), 1U);
}

TEST(TraceFile, ReadersLearnThatRecordsWereDropped) {
  const Folder folder("dropped");
  const auto ring = openRing(folder.path());
  put(*ring, numberSite(), std::uint32_t{1}, 1'000'000'000);
  ring->begin(numberSite().id, 10'000, 1'500'000'000, 0);
  put(*ring, numberSite(), std::uint32_t{2}, 2'000'000'000);
  const auto reading = readWithBabeltrace(folder.path());
  EXPECT_EQ(reading.status, 0) << reading.errors;
  EXPECT_EQ(reading.lines.size(), 2U);
  EXPECT_NE(reading.errors.find("discarded events between"), std::string::npos) << reading.errors;
  EXPECT_EQ(ring->discarded(), 1U);

  for (std::uint32_t i = 0; i < kPerSegment * 4; ++i) {
    put(*ring, numberSite(), i);
  }
  EXPECT_EQ(readWithBabeltrace(folder.path()).errors, "")
      << "the segment in question is overwritten";
}

TEST(TraceFile, AnAbandonedRecordLeavesNoTrace) {
  const auto ring = memoryRing();
  put(*ring, numberSite(), std::uint32_t{1});
  std::byte* const place = ring->begin(numberSite().id, 4, 0, 0);
  ASSERT_NE(place, nullptr);
  std::memset(place, 0xff, 4);
  ring->abandon();
  EXPECT_EQ(numbersIn(*ring), upTo(1, 1));
  put(*ring, numberSite(), std::uint32_t{2});
  EXPECT_EQ(numbersIn(*ring), upTo(1, 2));
}

TEST(TraceFile, ASiteIsInTheMetadataBeforeItsFirstRecord) {
  const Folder folder("sites");
  const auto ring = openRing(folder.path());
  const Lumo::Site& late = siteWith(kNumber, "late(int)");
  EXPECT_EQ(folder.content("metadata").find("late(int)"), std::string::npos);
  ring->begin(late.id, 4, 0, 0);
  EXPECT_NE(folder.content("metadata").find("late(int)"), std::string::npos);
  ring->abandon();
}

TEST(TraceFile, WithoutMetadataTheRecordsOfANewSiteAreDroppedUntilThereIsRoomAgain) {
  const Folder folder("nometadata");
  const auto ring = openRing(folder.path(), 4096, 2);
  ASSERT_TRUE(put(*ring, numberSite(), std::uint32_t{1}));
  // A folder in the place of the new file stands for a disk that takes no file.
  std::filesystem::create_directory(folder.path() + "/.metadata.new");
  const Lumo::Site& late = siteWith(kNumber, "unlucky(int)");
  EXPECT_FALSE(put(*ring, late, std::uint32_t{2}));
  EXPECT_TRUE(put(*ring, numberSite(), std::uint32_t{3})) << "known sites are not concerned";
  std::filesystem::remove(folder.path() + "/.metadata.new");
  EXPECT_FALSE(put(*ring, late, std::uint32_t{4})) << "not tried at every record";
  for (std::uint32_t i = 0; i < kPerSegment; ++i) {
    put(*ring, numberSite(), i);
  }
  EXPECT_TRUE(put(*ring, late, std::uint32_t{5})) << "tried again in the next segment";
  EXPECT_EQ(ring->discarded(), 2U);
  EXPECT_EQ(readWithBabeltrace(folder.path()).status, 0);
}

TEST(TraceFile, WithoutMemoryTheRecordsOfANewSiteAreDroppedUntilThereIsSomeAgain) {
  const auto ring = memoryRing();
  ASSERT_TRUE(put(*ring, numberSite(), std::uint32_t{1}));
  const Lumo::Site& late = siteWith(kNumber, "poor(int)");
  {
    const FailingMemory memory(1);  // that for the text of the metadata
    EXPECT_FALSE(put(*ring, late, std::uint32_t{2}));
    EXPECT_TRUE(FailingMemory::failed());
  }
  EXPECT_TRUE(put(*ring, numberSite(), std::uint32_t{3}));
  for (std::uint32_t i = 0; i < kPerSegment; ++i) {
    put(*ring, numberSite(), i);
  }
  // Told by its size: a sanitizer asks for memory of its own.
  const std::size_t copy =
      sizeof(Lumo::MetadataHeader) + Lumo::metadataText({}, Lumo::siteCount()).size();
  TestSupport::withFailing({SYS_mmap, ENOMEM, 1, static_cast<std::uint32_t>(copy)}, [&] {
    EXPECT_FALSE(put(*ring, late, std::uint32_t{4})) << "nor for the copy that a core file holds";
  });
  for (std::uint32_t i = 0; i < kPerSegment; ++i) {
    put(*ring, numberSite(), i);
  }
  EXPECT_TRUE(put(*ring, late, std::uint32_t{5}));
  EXPECT_EQ(ring->discarded(), 2U);
}

TEST(TraceFile, AskedForWhatCannotBeThereIsNone) {
  std::string why;
  EXPECT_EQ(Lumo::TraceFile::inMemory(4095, 4, why), nullptr);
  EXPECT_NE(why.find("4 trace segments of 4095 bytes are not possible"), std::string::npos) << why;
  const Folder folder("impossible");
  EXPECT_EQ(Lumo::TraceFile::open(folder.path(), 4096, 1, why), nullptr);
  EXPECT_NE(why.find("1 trace segments of 4096 bytes are not possible"), std::string::npos) << why;
  EXPECT_FALSE(std::filesystem::exists(folder.path()));
}

TEST(TraceFile, ItsMetadataBeingRefusedSaysWhichAndWhy) {
  const Folder folder("refused");
  std::filesystem::create_directories(folder.path() + "/.metadata.new");
  const std::string expected = "cannot write " + folder.path() + "/metadata: Is a directory";
  std::string why;
  EXPECT_EQ(Lumo::TraceFile::open(folder.path(), 4096, 2, why), nullptr);
  EXPECT_EQ(why, expected);
  why.clear();
  EXPECT_FALSE(memoryRing(4096, 2)->saveTo(folder.path(), why));
  EXPECT_EQ(why, expected);
}

TEST(TraceFile, IsNotSavedWhereNoTraceCanBeMadeNorFromInsideARecord) {
  const auto ring = memoryRing();
  std::string why;
  EXPECT_FALSE(ring->saveTo("/no/such/folder", why));
  EXPECT_EQ(why, "cannot create trace directory /no/such/folder: No such file or directory");
  const Folder folder("inside");
  ASSERT_NE(ring->begin(numberSite().id, 4, 0, 0), nullptr);
  EXPECT_FALSE(ring->saveTo(folder.path(), why));
  EXPECT_EQ(why, "the trace cannot be saved from inside one of its own records");
  ring->abandon();
  EXPECT_TRUE(ring->saveTo(folder.path(), why)) << why;
}

TEST(TraceFile, WithoutRandomNumbersIsNamedAfterItsProcess) {
  const Folder folder("named");
  TestSupport::withFailing({SYS_getrandom, ENOSYS}, [&folder] { openRing(folder.path()); });
  const auto process = static_cast<std::uint32_t>(getpid());
  std::array<char, 64> uuid{};
  std::snprintf(uuid.data(), uuid.size(), "\"%02x%02x%02x%02x-0000-4000-8000-000000000000\"",
                process & 255U, process >> 8U & 255U, process >> 16U & 255U, process >> 24U);
  EXPECT_NE(folder.content("metadata").find(uuid.data()), std::string::npos) << uuid.data();
}

TEST(TraceFile, ARingInMemoryIsSavedAsTheSameTrace) {
  const Folder folder("saved");
  const auto ring = memoryRing(4096, 2);
  for (std::uint32_t i = 1; i <= kPerSegment * 2 + 5; ++i) {
    put(*ring, numberSite(), i, i * 1000);
  }
  std::string why;
  ASSERT_TRUE(ring->saveTo(folder.path(), why)) << why;
  const std::string bytes = folder.content("segment-0000") + folder.content("segment-0001");
  EXPECT_EQ(numbersIn(std::as_bytes(std::span(bytes)), 4096),
            upTo(kPerSegment + 1, kPerSegment * 2 + 5));
  const auto reading = readWithBabeltrace(folder.path());
  EXPECT_EQ(reading.status, 0) << reading.errors;
  EXPECT_EQ(reading.lines.size(), kPerSegment + 5U);
}

TEST(TraceFile, RecordsOfManyThreadsAreWholeAndAllThere) {
  const auto ring = memoryRing(std::size_t{1} << 16U, 8);
  constexpr std::uint32_t kEach = 2000;
  TestSupport::onThreads(4, [&](std::size_t thread) {
    for (std::uint32_t i = 0; i < kEach; ++i) {
      put(*ring, numberSite(), static_cast<std::uint32_t>(thread << 24U) | i);
    }
  });
  EXPECT_EQ(ring->discarded(), 0U);
  std::array<std::uint32_t, 4> next{};
  for (const std::uint32_t number : numbersIn(*ring)) {
    ASSERT_EQ(number & 0xffffffU, next[number >> 24U]++) << "thread " << (number >> 24U);
  }
  EXPECT_EQ(next, (std::array<std::uint32_t, 4>{kEach, kEach, kEach, kEach}));
}

Lumo::TraceFile* ringOfHandler = nullptr;
bool takenInHandler = true;

TEST(TraceFile, ARecordFromASignalHandlerInsideARecordIsDropped) {
  const auto ring = memoryRing();
  ringOfHandler = ring.get();
  signal(SIGUSR1,
         [](int) { takenInHandler = put(*ringOfHandler, numberSite(), std::uint32_t{9}); });
  put(*ring, numberSite(), std::uint32_t{1});
  std::byte* const place = ring->begin(numberSite().id, 4, 0, 0);
  const std::uint32_t two = 2;
  std::memcpy(place, &two, 4);
  raise(SIGUSR1);
  ring->finish(place + 4);
  signal(SIGUSR1, SIG_DFL);
  EXPECT_FALSE(takenInHandler);
  EXPECT_EQ(ring->discarded(), 1U);
  EXPECT_EQ(numbersIn(*ring), upTo(1, 2));
}

}  // namespace
