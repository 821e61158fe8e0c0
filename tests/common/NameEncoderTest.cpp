#include <gtest/gtest.h>

#include <initializer_list>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "common/NameEncoder.h"

namespace {

using VelaL3V2Shared::NameEncoder;
using VelaL3V2Shared::NameSet;

NameSet setOf(std::initializer_list<std::pair<NameSet::Index, const char*>> names) {
  NameSet set;
  for (const auto& [index, name] : names) {
    set.nameIs(index, name);
  }
  return set;
}

TEST(NameEncoder, JoinsComponentsByColons) {
  EXPECT_EQ(NameEncoder::encode(setOf({{0, "dev1"}})), "dev1");
  EXPECT_EQ(NameEncoder::encode(setOf({{0, "a"}, {1, "b"}, {2, "c"}})), "a:b:c");
}

TEST(NameEncoder, EscapesColonsAndBackslashesAndNothingElse) {
  EXPECT_EQ(NameEncoder::encode(setOf({{0, "dev1"}, {1, "red"}, {2, "x:y"}})), "dev1:red:x\\:y");
  EXPECT_EQ(NameEncoder::encode(setOf({{0, "a:b\\c"}})), "a\\:b\\\\c");
  EXPECT_EQ(NameEncoder::encode(setOf({{0, "a b\"c\n\xff"}})), "a b\"c\n\xff");
}

TEST(NameEncoder, KeepsEmptyComponents) {
  EXPECT_EQ(NameEncoder::encode(setOf({{0, ""}, {1, "b"}})), ":b");
  EXPECT_EQ(NameEncoder::encode(setOf({{0, "a"}, {1, ""}})), "a:");
  EXPECT_EQ(NameEncoder::encode(setOf({{0, ""}, {1, ""}})), ":");
}

TEST(NameEncoder, LeavesNoTraceOfGapsInTheIndices) {
  EXPECT_EQ(NameEncoder::encode(setOf({{5, "only"}})), "only");
  EXPECT_EQ(NameEncoder::encode(setOf({{7, "b"}, {2, "a"}})), "a:b");
  EXPECT_EQ(NameEncoder::encode(setOf({{4294967295U, "last"}, {0, "first"}})), "first:last");
}

TEST(NameEncoder, TheEmptySetAndOneEmptyComponentBothGiveTheEmptyText) {
  EXPECT_EQ(NameEncoder::encode(NameSet()), "");
  EXPECT_EQ(NameEncoder::encode(setOf({{0, ""}})), "");
}

TEST(NameEncoder, TheEmptyTextGivesTheEmptySet) {
  EXPECT_EQ(NameEncoder::decode(""), NameSet());
  EXPECT_TRUE(NameEncoder::decode("").empty());
}

TEST(NameEncoder, ASingleColonGivesTwoEmptyComponents) {
  EXPECT_EQ(NameEncoder::decode(":"), setOf({{0, ""}, {1, ""}}));
}

TEST(NameEncoder, AnUnescapedColonAtTheEndGivesALastEmptyComponent) {
  EXPECT_EQ(NameEncoder::decode("a:"), setOf({{0, "a"}, {1, ""}}));
}

TEST(NameEncoder, ABackslashAtTheVeryEndIsDropped) {
  EXPECT_EQ(NameEncoder::decode("a\\"), setOf({{0, "a"}}));
  EXPECT_EQ(NameEncoder::decode("\\"), setOf({{0, ""}}));
  EXPECT_EQ(NameEncoder::decode("a:\\"), setOf({{0, "a"}, {1, ""}}));
}

TEST(NameEncoder, ABackslashTakesTheNextByteWhateverItIs) {
  EXPECT_EQ(NameEncoder::decode("\\a\\\\\\:\\\xff"), setOf({{0, "a\\:\xff"}}));
}

TEST(NameEncoder, ComponentsWithColonsAndBackslashesComeBackIntact) {
  const NameSet names = setOf({{0, "a:b\\c"}});
  EXPECT_EQ(NameEncoder::decode("a\\:b\\\\c"), names);
  EXPECT_EQ(NameEncoder::decode(NameEncoder::encode(names)), names);
}

TEST(NameEncoder, APairIdAsFirstComponentHasItsColonEscaped) {
  const NameSet names = setOf({{0, "fwA:fwB_HAPair"}, {1, "red"}});
  EXPECT_EQ(NameEncoder::encode(names), "fwA\\:fwB_HAPair:red");
  EXPECT_EQ(NameEncoder::decode("fwA\\:fwB_HAPair:red"), names);
}

TEST(NameEncoder, ComponentsAreAsLongAsTheyLike) {
  const std::string longName(100'000, ':');
  NameSet names;
  names.nameIs(0, longName);
  names.nameIs(1, "end");
  const Kel::String text = NameEncoder::encode(names);
  EXPECT_EQ(text.size(), 200'004U);
  EXPECT_EQ(NameEncoder::decode(text), names);
}

TEST(NameEncoder, KeepsNulBytes) {
  NameSet names;
  names.nameIs(0, std::string("a\0b", 3));
  EXPECT_EQ(NameEncoder::encode(names).size(), 3U);
  EXPECT_EQ(NameEncoder::decode(NameEncoder::encode(names)), names);
}

/// Every text of up to six bytes of ":", "\", a letter and a byte above 0x7f.
template <class Each>
void forEveryShortText(const Each& each) {
  constexpr char kBytes[] = {':', '\\', 'a', '\xe9'};
  std::vector<std::string> texts{""};
  for (std::size_t at = 0; at < texts.size(); ++at) {
    each(texts[at]);
    for (const char byte : kBytes) {
      if (texts[at].size() < 6) {
        texts.push_back(texts[at] + byte);
      }
    }
  }
  EXPECT_EQ(texts.size(), 5461U);  // 1 + 4 + 16 + 64 + 256 + 1024 + 4096
}

/// Where the unescaped colons of `text` stand, found from the run of backslashes before each.
std::vector<std::size_t> separatorsOf(const std::string& text) {
  std::vector<std::size_t> at;
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::size_t backslashes = 0;
    while (backslashes < i && text[i - 1 - backslashes] == '\\') {
      ++backslashes;
    }
    if (text[i] == ':' && backslashes % 2 == 0) {
      at.push_back(i);
    }
  }
  return at;
}

TEST(NameEncoder, EveryShortTextDecodesToOneMoreComponentThanUnescapedColons) {
  forEveryShortText([](const std::string& text) {
    const NameSet names = NameEncoder::decode(text);
    const std::size_t expected = text.empty() ? 0 : separatorsOf(text).size() + 1;
    EXPECT_EQ(names.size(), expected) << text;
    NameSet::Index next = 0;
    for (const auto& [index, name] : names) {
      EXPECT_EQ(index, next++) << text;
    }
  });
}

TEST(NameEncoder, EveryComponentOfAShortTextIsItsPieceWithoutEscapes) {
  forEveryShortText([](const std::string& text) {
    if (text.empty()) {
      return;
    }
    std::vector<std::size_t> ends = separatorsOf(text);
    ends.push_back(text.size());
    std::size_t begin = 0;
    NameSet expected;
    for (std::size_t index = 0; index < ends.size(); ++index) {
      std::string piece;
      for (std::size_t i = begin; i < ends[index]; ++i) {
        if (text[i] == '\\' && ++i == ends[index]) {
          break;  // the last byte of the text
        }
        piece += text[i];
      }
      expected.nameIs(static_cast<NameSet::Index>(index), piece);
      begin = ends[index] + 1;
    }
    EXPECT_EQ(NameEncoder::decode(text), expected) << text;
  });
}

TEST(NameEncoder, EveryShortComponentComesBackBesideAnother) {
  forEveryShortText([](const std::string& text) {
    const NameSet names = setOf({{0, text.c_str()}, {1, "z"}, {2, text.c_str()}});
    EXPECT_EQ(NameEncoder::decode(NameEncoder::encode(names)), names) << text;
    if (!text.empty()) {
      const NameSet alone = setOf({{0, text.c_str()}});
      EXPECT_EQ(NameEncoder::decode(NameEncoder::encode(alone)), alone) << text;
    }
  });
}

TEST(NameEncoder, NoTwoSetsButTheEmptyOnesHaveTheSameText) {
  std::vector<std::string> texts;
  forEveryShortText([&](const std::string& text) { texts.push_back(text); });
  std::set<std::string> encoded;
  const auto expectNew = [&encoded](const NameSet& names) {
    const Kel::String text = NameEncoder::encode(names);
    EXPECT_TRUE(encoded.insert(std::string(text.view())).second) << text.view();
  };
  for (const std::string& text : texts) {
    expectNew(setOf({{0, text.c_str()}}));
  }
  // All pairs of components of up to three bytes, and all triples of up to one.
  for (const std::string& first : texts) {
    for (std::size_t i = 0; first.size() <= 3 && texts[i].size() <= 3; ++i) {
      expectNew(setOf({{0, first.c_str()}, {1, texts[i].c_str()}}));
      for (std::size_t j = 0; first.size() + texts[i].size() <= 1 && texts[j].size() <= 1; ++j) {
        expectNew(setOf({{0, first.c_str()}, {1, texts[i].c_str()}, {2, texts[j].c_str()}}));
      }
    }
  }
  EXPECT_EQ(encoded.size(), 5461U + 85 * 85 + 9 * 5);
}

TEST(NameEncoder, EncodingAgainWhatEveryShortTextDecodesToIsStable) {
  forEveryShortText([](const std::string& text) {
    const NameSet names = NameEncoder::decode(text);
    const Kel::String again = NameEncoder::encode(names);
    if (!again.empty()) {
      EXPECT_EQ(NameEncoder::decode(again), names) << text;
    }
    EXPECT_LE(again.size(), 2 * text.size()) << text;
  });
}

}  // namespace
