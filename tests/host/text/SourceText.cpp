#include "text/SourceText.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace HostTests {
namespace {

using Host::SourceText;

TEST(SourceText, CountsLinesAndColumnsFromOne) {
  const SourceText source("x", "ab\ncd\r\n\nef");
  EXPECT_EQ(source.placeOf(0).line, 1U);
  EXPECT_EQ(source.placeOf(0).column, 1U);
  EXPECT_EQ(source.placeOf(4).line, 2U);
  EXPECT_EQ(source.placeOf(4).column, 2U);
  EXPECT_EQ(source.placeOf(8).line, 4U);
  EXPECT_EQ(source.placeOf(8).column, 1U);
  EXPECT_EQ(source.placeOf(10).column, 3U) << "behind the last character";
}

TEST(SourceText, CountsCharactersAndEachByteThatIsNone) {
  const SourceText source("x", "\xc3\xa9\xf0\x9f\x98\x80\xff\xffz");
  EXPECT_EQ(source.placeOf(8).column, 5U);
}

TEST(SourceText, ShowsTheLineWithItsEndsCut) {
  const SourceText source("x", "first\n" + std::string(200, 'a') + "Z" + std::string(200, 'b'));
  const SourceText::Excerpt excerpt = source.excerpt(6 + 200, 1);
  EXPECT_EQ(excerpt.text, "..." + std::string(60, 'a') + "Z" + std::string(39, 'b') + "...");
  EXPECT_EQ(excerpt.caret, 63U);
  EXPECT_EQ(excerpt.underlined, 1U);
}

TEST(SourceText, ShowsAWholeShortLineAndUnderlinesOnlyThere) {
  const SourceText source("x", "{\n\t\"a\": \"b\n}");
  const SourceText::Excerpt excerpt = source.excerpt(8, 100);
  EXPECT_EQ(excerpt.text, " \"a\": \"b");
  EXPECT_EQ(excerpt.caret, 6U);
  EXPECT_EQ(excerpt.underlined, 2U);
}

TEST(SourceText, ShowsNothingThatWouldCommandATerminal) {
  const SourceText source("x", "a\x1b[2J\xff\x7f z");
  EXPECT_EQ(source.excerpt(0, 1).text, "a?[2J?? z");
}

TEST(SourceText, KeepsZeroBytesBehindTheText) {
  const SourceText source("x", "ab");
  const char* const behind = source.text().data() + source.text().size();
  EXPECT_TRUE(std::all_of(behind, behind + SourceText::kPadding, [](char c) { return c == 0; }));
}

TEST(SourceText, LeavesAByteOrderMarkOut) {
  EXPECT_EQ(SourceText("x", "\xef\xbb\xbf{}").text(), "{}");
}

TEST(SourceText, KnowsTheWellFormedCharacters) {
  EXPECT_EQ(Host::utf8Length("a"), 1U);
  EXPECT_EQ(Host::utf8Length("\xc3\xa9"), 2U);
  EXPECT_EQ(Host::utf8Length("\xe2\x82\xac"), 3U);
  EXPECT_EQ(Host::utf8Length("\xf4\x8f\xbf\xbf"), 4U);
  for (const char* const bad :
       {"", "\x80", "\xc0\x80", "\xc3", "\xc3z", "\xe0\x80\x80", "\xed\xa0\x80", "\xf0\x80\x80\x80",
        "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xff"}) {
    EXPECT_EQ(Host::utf8Length(bad), 0U);
  }
}

}  // namespace
}  // namespace HostTests
