#include "state/JournalReader.h"

#include <gtest/gtest.h>

namespace Host {
namespace {

std::string record(std::uint64_t number, std::string_view line) {
  std::string text;
  appendRecord(text, number, line);
  return text;
}

TEST(JournalReader, ReadsWhatWasAppendedAndAPersonCanReadItToo) {
  const std::string text = record(9, R"({"time":1})") + record(10, "");
  EXPECT_EQ(text, "9 42a98e6c {\"time\":1}\n10 926eb497 \n");
  JournalReader reader(text);
  const auto first = reader.next();
  ASSERT_TRUE(first);
  EXPECT_EQ(first->number, 9U);
  EXPECT_EQ(first->line, R"({"time":1})");
  EXPECT_EQ(reader.next()->number, 10U);
  EXPECT_FALSE(reader.next());
  EXPECT_TRUE(reader.atEnd());
}

TEST(JournalReader, FindsEveryFlippedBitOfARecord) {
  const std::string good = record(9, R"({"time":1})");
  for (std::size_t i = 0; i < 8 * good.size(); ++i) {
    std::string bad = good;
    bad[i / 8] = static_cast<char>(bad[i / 8] ^ (1 << (i % 8)));
    JournalReader reader(bad);
    EXPECT_FALSE(reader.next()) << "bit " << i;
    EXPECT_FALSE(reader.atEnd());
  }
}

TEST(JournalReader, TellsAnIncompleteEndFromABadRecordBeforeGoodOnes) {
  const std::string first = record(1, "{}");
  const std::string second = record(2, "{\"signal\":false}");
  for (std::size_t length = 1; length < second.size(); ++length) {
    const std::string text = first + second.substr(0, length);
    JournalReader reader(text);
    reader.next();
    EXPECT_FALSE(reader.next());
    EXPECT_EQ(reader.offset(), first.size());
    EXPECT_FALSE(reader.hasMore());
    EXPECT_TRUE(reader.isIncomplete());
  }
  for (std::size_t i = 0; i < first.size(); ++i) {
    std::string text = first + second;
    text[i] = static_cast<char>(text[i] ^ 0x11);  // the line end, too
    JournalReader reader(text);
    EXPECT_FALSE(reader.next());
    EXPECT_EQ(reader.offset(), 0U);
    EXPECT_TRUE(reader.hasMore()) << "byte " << i;
  }
}

}  // namespace
}  // namespace Host
