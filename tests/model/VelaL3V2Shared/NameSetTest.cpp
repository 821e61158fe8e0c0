#include <gtest/gtest.h>

#include <string>

#include "VelaL3V2Shared/NameSet.h"

namespace {

using VelaL3V2Shared::NameSet;

std::string walked(const NameSet& names) {
  std::string all;
  for (const auto& [index, name] : names) {
    all += std::to_string(index) + "=" + Kel::textOf(name) + " ";
  }
  return all;
}

TEST(NameSet, StartsEmpty) {
  const NameSet names;
  EXPECT_TRUE(names.empty());
  EXPECT_EQ(names.size(), 0U);
  EXPECT_EQ(walked(names), "");
}

TEST(NameSet, IsWalkedInAscendingOrderOfTheIndices) {
  NameSet names;
  names.nameIs(4294967295U, "last");
  names.nameIs(7, "b");
  names.nameIs(0, "a");
  EXPECT_EQ(walked(names), "0=a 7=b 4294967295=last ");
  EXPECT_EQ(names.size(), 3U);
}

TEST(NameSet, ReplacesTheComponentOfAnIndex) {
  NameSet names;
  names.nameIs(1, "old");
  names.nameIs(1, "new");
  EXPECT_EQ(names.name(1), "new");
  EXPECT_EQ(names.size(), 1U);
}

TEST(NameSet, AMissingIndexReadsAsTheEmptyTextAndIsNotMade) {
  NameSet names;
  names.nameIs(1, "b");
  EXPECT_EQ(names.name(0), "");
  EXPECT_EQ(names.name(2), "");
  EXPECT_EQ(walked(names), "1=b ");
}

TEST(NameSet, AnEmptyComponentIsAComponent) {
  NameSet names;
  names.nameIs(0, "");
  EXPECT_FALSE(names.empty());
  EXPECT_NE(names, NameSet());
}

TEST(NameSet, EqualsASetOfTheSameComponents) {
  NameSet a;
  NameSet b;
  a.nameIs(0, "x");
  b.nameIs(1, "x");
  EXPECT_NE(a, b);
  b = a;
  EXPECT_EQ(a, b);
}

}  // namespace
