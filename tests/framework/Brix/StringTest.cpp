#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Brix/Counted.h"
#include "Brix/String.h"

namespace Brix {
namespace {

using std::string_view_literals::operator""sv;

TEST(String, IsEmptyByDefaultAndOwnsNothing) {
  const String empty;
  EXPECT_TRUE(empty.empty());
  EXPECT_EQ(empty.size(), 0U);
  EXPECT_EQ(empty.view(), "");
  EXPECT_STREQ(empty.c_str(), "");
  EXPECT_EQ(empty, String(""));
  EXPECT_EQ(empty.hash(), String::hashOf(""));
  static_assert(sizeof(String) == sizeof(void*));
}

TEST(String, IsMadeFromTextOfEveryKind) {
  EXPECT_EQ(String("web"), "web");
  EXPECT_EQ(String(std::string("web")), "web"sv);
  EXPECT_EQ(String("web"sv), std::string("web"));
}

TEST(String, CopiesShareTheirText) {
  const String first("a name long enough not to fit any small buffer");
  const String second = first;
  String third;
  third = second;
  EXPECT_EQ(first.c_str(), second.c_str());
  EXPECT_EQ(first.c_str(), third.c_str());
}

TEST(String, ACopyOutlivesTheOriginal) {
  String copy;
  {
    const String original("fw1");
    copy = original;
  }
  EXPECT_EQ(copy, "fw1");
}

TEST(String, MovingLeavesAnEmptyString) {
  String first("fw1");
  const char* const bytes = first.c_str();
  const String second = std::move(first);
  EXPECT_TRUE(first.empty());  // NOLINT(bugprone-use-after-move): that is what is stated
  EXPECT_EQ(second.c_str(), bytes);
}

TEST(String, AssigningToItselfChangesNothing) {
  String text("fw1");
  auto& same = text;
  text = same;
  EXPECT_EQ(text, "fw1");
  text = std::move(same);
  EXPECT_EQ(text, "fw1");
}

TEST(String, KeepsBytesOfEveryValueAndEndsWithNul) {
  std::string every;
  for (int byte = 0; byte != 256; ++byte) {
    every.push_back(static_cast<char>(byte));
  }
  const String text(every);
  EXPECT_EQ(text.size(), 256U);
  EXPECT_EQ(text.view(), every);
  EXPECT_EQ(text.c_str()[256], '\0');
}

TEST(String, ComparesBytesAsUnsignedNumbers) {
  const std::vector<String> ascending{"",   "\0"sv, "A",    "a",    "a\0"sv, "aa",
                                      "ab", "b",    "\x7F", "\x80", "\x80z", "\xFF"};
  for (std::size_t i = 0; i != ascending.size(); ++i) {
    for (std::size_t j = 0; j != ascending.size(); ++j) {
      EXPECT_EQ(ascending[i] < ascending[j], i < j) << i << " " << j;
      EXPECT_EQ(ascending[i] == ascending[j], i == j) << i << " " << j;
    }
  }
}

TEST(String, EqualTextsHaveEqualHashesWhereverTheyLie) {
  const std::string buffer = "xdevice-name-of-some-length";
  for (std::size_t length = 0; length != buffer.size(); ++length) {
    const std::string_view here = std::string_view(buffer).substr(1, length);
    const std::string elsewhere(here);  // another address, another alignment
    EXPECT_EQ(String(here).hash(), String(elsewhere).hash());
    EXPECT_EQ(String(here).hash(), String::hashOf(elsewhere));
  }
}

TEST(String, TextsThatDifferOnlyInZeroBytesAreDifferentAndHashDifferently) {
  std::set<std::uint32_t> hashes;
  for (std::size_t zeros = 0; zeros != 20; ++zeros) {
    hashes.insert(String(std::string(zeros, '\0')).hash());
  }
  EXPECT_EQ(hashes.size(), 20U);
}

TEST(String, HashesOfNumberedNamesSpreadOverLowAndHighBits) {
  std::set<std::uint32_t> low;
  std::set<std::uint32_t> high;
  for (int i = 0; i != 4096; ++i) {
    const std::uint32_t hash = String("rule-" + std::to_string(i)).hash();
    low.insert(hash & 0xFFFU);
    high.insert(hash >> 20U);
  }
  // 4096 balls thrown at random into 4096 boxes hit about 2589 of them.
  EXPECT_GT(low.size(), 2400U);
  EXPECT_GT(high.size(), 2400U);
}

TEST(String, IsAKeyOfStandardContainers) {
  const std::unordered_set<String> names{"a", "b", "a"};
  EXPECT_EQ(names.size(), 2U);
  EXPECT_TRUE(names.contains("b"));
}

TEST(String, RefusesATextOfMoreThanTwoGibibytesBeforeTouchingIt) {
  const std::string_view tooLong("x", 0x8000'0000U);
  EXPECT_THROW(String{tooLong}, std::length_error);
}

TEST(String, PrintsAndReadsAsItIs) {
  std::ostringstream out;
  out << String("fw:1");
  EXPECT_EQ(out.str(), "fw:1");
  std::string appended = "name=";
  kelAppend(appended, String("fw:1"));
  EXPECT_EQ(appended, "name=fw:1");
  String parsed;
  std::string why;
  EXPECT_TRUE(kelParse("any \\ text", parsed, why));
  EXPECT_EQ(parsed, "any \\ text");
}

TEST(String, MayBeCopiedByManyThreadsWhileTheThreadSafeSwitchIsOn) {
  threadSafePointers.store(true);
  {
    const String shared("shared by all threads");
    std::vector<std::jthread> threads;
    for (int i = 0; i != 4; ++i) {
      threads.emplace_back([mine = shared] {
        for (int round = 0; round != 5000; ++round) {
          const String copy = mine;
          ASSERT_EQ(copy.size(), 21U);
        }
      });
    }
  }
  threadSafePointers.store(false);
}

}  // namespace
}  // namespace Brix
