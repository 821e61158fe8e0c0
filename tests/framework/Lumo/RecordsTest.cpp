#include <gtest/gtest.h>

#include "Lumo/Records.h"
#include "TraceTools.h"

namespace {

using LumoTest::kNumber;
using LumoTest::memoryRing;
using LumoTest::put;
using LumoTest::siteWith;

/// A copy of a ring with three records that a test may spoil.
class Spoiled {
 public:
  Spoiled() {
    const auto ring = memoryRing(4096, 2);
    for (std::uint32_t i = 1; i <= 3; ++i) {
      put(*ring, siteWith(kNumber), i);
    }
    const auto* const bytes = reinterpret_cast<const char*>(ring->memory().data());
    bytes_.assign(bytes, ring->memory().size());
  }
  template <class T>
  void set(std::size_t at, T value) {
    std::memcpy(bytes_.data() + at, &value, sizeof value);
  }
  /// How many records were delivered, and whether all was well.
  std::pair<int, bool> read() const {
    int records = 0;
    const bool whole = Lumo::forEachRecord(std::as_bytes(std::span(bytes_)), 4096, Lumo::siteOf,
                                           [&](const Lumo::Record&) { ++records; });
    return {records, whole};
  }

 private:
  std::string bytes_;
};

constexpr std::size_t kContent = offsetof(Lumo::PacketHeader, contentBits);
constexpr std::size_t kFirst = sizeof(Lumo::PacketHeader);

TEST(Records, AreDeliveredWithSiteTimesAndValues) {
  const auto ring = memoryRing();
  const Lumo::Site& site = siteWith(kNumber);
  put(*ring, site, std::uint32_t{0x01020304}, 5'000'000'000, 5.25);
  int records = 0;
  EXPECT_TRUE(Lumo::forEachRecord(ring->memory(), ring->segmentSize(), Lumo::siteOf,
                                  [&](const Lumo::Record& record) {
                                    ++records;
                                    EXPECT_EQ(record.site, &site);
                                    EXPECT_EQ(record.stamp, 5'000'000'000U);
                                    EXPECT_EQ(record.seconds, 5.25);
                                    ASSERT_EQ(record.values.size(), 1U);
                                    EXPECT_EQ(record.values[0].type, &kNumber);
                                    EXPECT_EQ(record.values[0].bytes, "\x04\x03\x02\x01");
                                  }));
  EXPECT_EQ(records, 1);
}

TEST(Records, AnUnspoiledRingIsReadToItsEnd) { EXPECT_EQ(Spoiled().read(), std::pair(3, true)); }

TEST(Records, ASegmentThatIsNoPacketIsReported) {
  Spoiled ring;
  ring.set(4096, std::uint32_t{0});
  EXPECT_EQ(ring.read(), std::pair(0, false));
}

TEST(Records, AContentSizeThatCannotBeIsReported) {
  for (const std::uint64_t bits :
       {std::uint64_t{0}, std::uint64_t{79 * 8}, std::uint64_t{4097 * 8}}) {
    Spoiled ring;
    ring.set(kContent, bits);
    EXPECT_EQ(ring.read(), std::pair(0, false)) << bits;
  }
}

TEST(Records, AnUnknownSiteEndsItsSegment) {
  Spoiled ring;
  ring.set(kFirst + 32, std::uint32_t{0xfffffff0});
  EXPECT_EQ(ring.read(), std::pair(1, false));
}

TEST(Records, ARecordThatEndsBehindTheContentEndsItsSegment) {
  Spoiled ring;
  ring.set(kContent, std::uint64_t{(kFirst + 2 * 32 + 20) * 8});
  EXPECT_EQ(ring.read(), std::pair(2, false));
}

TEST(Records, TextWithoutItsNulEndsItsSegment) {
  const auto ring = memoryRing(4096, 2);
  const Lumo::Site& site = siteWith(LumoTest::kText);
  put(*ring, site, std::array<char, 4>{'w', 'e', 'b', '\0'});
  put(*ring, site, std::array<char, 4>{'w', 'e', 'b', 's'});
  std::vector<std::string> texts;
  EXPECT_FALSE(Lumo::forEachRecord(
      ring->memory(), ring->segmentSize(), Lumo::siteOf,
      [&](const Lumo::Record& record) { texts.emplace_back(record.values[0].bytes); }));
  EXPECT_EQ(texts, std::vector<std::string>{"web"});
}

TEST(Records, ARecordCutOffAnywhereIsNone) {
  const auto ring = memoryRing(4096, 2);
  put(*ring, siteWith(kNumber), 1U);
  const std::string record(reinterpret_cast<const char*>(ring->memory().data()) + kFirst, 32);
  int records = 0;
  const auto count = [&records](const Lumo::Record&) { ++records; };
  for (std::size_t size = 0; size != 32; ++size) {
    EXPECT_EQ(Lumo::readRecords(record.substr(0, size), Lumo::siteOf, count), 0U) << size;
  }
  EXPECT_EQ(records, 0);
  EXPECT_EQ(Lumo::readRecords(record + record.substr(0, 31), Lumo::siteOf, count), 32U);
  EXPECT_EQ(records, 1);
}

TEST(Records, AFaultInOneSegmentIsReportedThoughTheOthersAreWhole) {
  const auto ring = memoryRing(4096, 3);
  for (std::uint32_t i = 0; i != 3 * 125; ++i) {
    put(*ring, siteWith(kNumber), i);
  }
  std::string bytes(reinterpret_cast<const char*>(ring->memory().data()), ring->memory().size());
  bytes[kFirst + 3] = bytes[4096 + kFirst + 3] = '\xff';  // the site of the first record
  int records = 0;
  EXPECT_FALSE(Lumo::forEachRecord(std::as_bytes(std::span(bytes)), 4096, Lumo::siteOf,
                                   [&records](const Lumo::Record&) { ++records; }));
  EXPECT_EQ(records, 125);
}

}  // namespace
