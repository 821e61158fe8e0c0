#include <gtest/gtest.h>

#include <cstdint>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Brix/String.h"
#include "Kel/ValueMap.h"
#include "framework/Kel/WalkLaws.h"

namespace Kel {
namespace {

using Names = ValueMap<Brix::String, Brix::String>;

struct Numbers {
  using Map = ValueMap<std::uint32_t, std::uint64_t>;
  static constexpr bool visitsNewcomers = true;
  bool insert(std::uint32_t key) { return collection.put(key, key * 2U); }
  bool erase(std::uint32_t key) { return collection.erase(key); }
  bool contains(std::uint32_t key) const {
    const std::uint64_t* const value = collection.find(key);
    EXPECT_TRUE(value == nullptr || *value == key * 2U);
    return value != nullptr;
  }
  std::size_t size() const { return collection.size(); }
  std::size_t heapBytes() const { return collection.heapBytes(); }
  void clear() { collection.clear(); }
  auto begin() const { return collection.begin(); }
  auto end() const { return collection.end(); }
  static std::uint32_t keyAt(const Map::Iterator& at) { return (*at).first; }

  Map collection;
};

INSTANTIATE_TYPED_TEST_SUITE_P(ValueMap, WalkLaws, Numbers);

std::vector<std::pair<std::string, std::string>> contents(const Names& names) {
  std::vector<std::pair<std::string, std::string>> all;
  for (const auto& [key, value] : names) {
    all.emplace_back(key.view(), value.view());
  }
  return all;
}

TEST(ValueMap, WalksFromTheLowestKeyToTheHighest) {
  Names names;
  for (const char* key : {"red", "blue", "green"}) {
    EXPECT_TRUE(names.put(key, std::string("net-") + key));
  }
  EXPECT_EQ(contents(names),
            (std::vector<std::pair<std::string, std::string>>{
                {"blue", "net-blue"}, {"green", "net-green"}, {"red", "net-red"}}));
}

TEST(ValueMap, TellsCreationFromOverwriting) {
  Names names;
  EXPECT_TRUE(names.put("red", "net-red"));
  EXPECT_FALSE(names.put("red", "other"));
  EXPECT_EQ(names.size(), 1U);
  ASSERT_NE(names.find("red"), nullptr);
  EXPECT_EQ(*names.find("red"), "other");
  EXPECT_TRUE(names.erase("red"));
  EXPECT_FALSE(names.erase("red"));
  EXPECT_TRUE(names.empty());
}

TEST(ValueMap, FindsByEveryKindOfText) {
  Names names;
  names.put("red", "net-red");
  EXPECT_NE(names.find(Brix::String("red")), nullptr);
  EXPECT_NE(names.find(std::string_view("red")), nullptr);
  EXPECT_EQ(names.find("re"), nullptr);
  EXPECT_EQ(Names().find("red"), nullptr);
}

TEST(ValueMap, TakesReferencesIntoItselfForKeysAndValues) {
  Names names;
  for (int i = 0; i != 10; ++i) {
    names.put("key", "value");
    names.put(*names.find("key"), *names.find("key"));
    EXPECT_EQ(names.size(), 2U);
    for (const auto& [key, value] : names) {
      names.erase(key);
    }
    EXPECT_TRUE(names.empty());
  }
}

TEST(ValueMap, OwnsRoomForItsEntries) {
  Names names;
  names.put("red", "net-red");
  names.put("blue", "net-blue");
  EXPECT_GE(names.heapBytes(), 2 * 2 * sizeof(Brix::String));
  EXPECT_LE(names.heapBytes(), 100U);
}

TEST(ValueMap, AWalkStandsOnCopies) {
  Names names;
  names.put("red", "net-red");
  for (const auto& [key, value] : names) {
    names.put("red", "other");
    EXPECT_EQ(value, "net-red");
    names.clear();
    EXPECT_EQ(key, "red");
  }
}

TEST(ValueMap, OverwritesWithoutMemory) {
  ValueMap<int, int> map;
  map.put(1, 1);
  const FailingMemory failing(1);
  EXPECT_FALSE(map.put(1, 2));
  EXPECT_FALSE(FailingMemory::failed());
  EXPECT_EQ(*map.find(1), 2);
}

}  // namespace
}  // namespace Kel
