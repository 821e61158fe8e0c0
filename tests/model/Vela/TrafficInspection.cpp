#include "Vela/TrafficInspection.h"

#include <gtest/gtest.h>

#include <compare>
#include <iomanip>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_set>

namespace Vela {
namespace {

TrafficInspection read(std::string_view text) {
  TrafficInspection value{0xff};
  std::string why;
  EXPECT_TRUE(kelParse(text, value, why)) << text << ": " << why;
  EXPECT_EQ(why, "");
  return value;
}

std::string whyNot(std::string_view text) {
  TrafficInspection value{0x02};
  std::string why;
  EXPECT_FALSE(kelParse(text, value, why)) << text;
  EXPECT_EQ(value.value, 0x02) << text << " touched the value";
  return why;
}

TEST(TrafficInspection, IsAnAggregateOfOneByte) {
  EXPECT_EQ(sizeof(TrafficInspection), 1U);
  EXPECT_TRUE(std::is_aggregate_v<TrafficInspection>);
  EXPECT_TRUE(std::is_trivially_copyable_v<TrafficInspection>);
  EXPECT_EQ(TrafficInspection().value, 0);
  EXPECT_EQ(TrafficInspection{0x02}.value, 2);
}

TEST(TrafficInspection, IsLocalByBitZeroAndUnifiedByBitOne) {
  static_assert(!TrafficInspection{0x00}.local() && !TrafficInspection{0x00}.unified());
  static_assert(TrafficInspection{0x01}.local() && !TrafficInspection{0x01}.unified());
  static_assert(!TrafficInspection{0x02}.local() && TrafficInspection{0x02}.unified());
  static_assert(TrafficInspection{0x03}.local() && TrafficInspection{0x03}.unified());
  static_assert(!TrafficInspection{0xfc}.local() && !TrafficInspection{0xfc}.unified());
}

TEST(TrafficInspection, ComparesAllBits) {
  EXPECT_EQ(TrafficInspection{0x02}, TrafficInspection{0x02});
  EXPECT_NE(TrafficInspection{0x02}, TrafficInspection{0x03});
  EXPECT_NE(TrafficInspection{0x02}, TrafficInspection{0x82});
  EXPECT_EQ(TrafficInspection{0x01} <=> TrafficInspection{0x02}, std::strong_ordering::less);
}

TEST(TrafficInspection, PrintsTheNamesOfTheSetBits) {
  EXPECT_EQ(TrafficInspection{0x00}.stringValue(), "");
  EXPECT_EQ(TrafficInspection{0x01}.stringValue(), "local");
  EXPECT_EQ(TrafficInspection{0x02}.stringValue(), "unified");
  EXPECT_EQ(TrafficInspection{0x03}.stringValue(), "local unified");
}

TEST(TrafficInspection, PrintsNothingForBitsWithoutAName) {
  EXPECT_EQ(TrafficInspection{0x04}.stringValue(), "");
  EXPECT_EQ(TrafficInspection{0xfe}.stringValue(), "unified");
}

TEST(TrafficInspection, AppendsBehindWhatStandsThere) {
  std::string out = "bits: ";
  kelAppend(out, TrafficInspection{0x03});
  EXPECT_EQ(out, "bits: local unified");
}

TEST(TrafficInspection, GoesToAStreamAsOneField) {
  std::ostringstream out;
  out << std::setw(15) << TrafficInspection{0x03} << '|' << TrafficInspection{} << '|';
  EXPECT_EQ(out.str(), "  local unified||");
}

TEST(TrafficInspection, ReadsNamesInAnyOrder) {
  EXPECT_EQ(read(""), TrafficInspection{0x00});
  EXPECT_EQ(read("local"), TrafficInspection{0x01});
  EXPECT_EQ(read("unified"), TrafficInspection{0x02});
  EXPECT_EQ(read("local unified"), TrafficInspection{0x03});
  EXPECT_EQ(read("unified local"), TrafficInspection{0x03});
}

TEST(TrafficInspection, ReadsAnyNumberOfBlanksBetweenNames) {
  EXPECT_EQ(read("  "), TrafficInspection{0x00});
  EXPECT_EQ(read(" unified   local "), TrafficInspection{0x03});
}

TEST(TrafficInspection, NamesTheUnknownOrRepeatedBit) {
  EXPECT_EQ(whyNot("remote"), "unknown bit \"remote\"; expected local, unified, both, or nothing");
  EXPECT_EQ(whyNot("local remote"),
            "unknown bit \"remote\"; expected local, unified, both, or nothing");
  EXPECT_EQ(whyNot("Local"), "unknown bit \"Local\"; expected local, unified, both, or nothing");
  EXPECT_EQ(whyNot("locals"), "unknown bit \"locals\"; expected local, unified, both, or nothing");
  EXPECT_EQ(whyNot("local,unified"),
            "unknown bit \"local,unified\"; expected local, unified, both, or nothing");
  EXPECT_EQ(whyNot("2"), "unknown bit \"2\"; expected local, unified, both, or nothing");
  EXPECT_EQ(whyNot("local local"), "repeated bit \"local\"; expected each name once");
  EXPECT_EQ(whyNot("unified local unified"), "repeated bit \"unified\"; expected each name once");
}

TEST(TrafficInspection, HashesEveryValueDifferently) {
  std::unordered_set<std::uint32_t> hashes;
  for (unsigned value = 0; value < 256; ++value) {
    hashes.insert(TrafficInspection{static_cast<std::uint8_t>(value)}.hash() & 0xffU);
  }
  EXPECT_EQ(hashes.size(), 256U);
  EXPECT_EQ(std::hash<TrafficInspection>()(TrafficInspection{0x02}),
            TrafficInspection{0x02}.hash());
}

}  // namespace
}  // namespace Vela
