#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Brix/String.h"
#include "Kel/EntryMap.h"
#include "framework/Kel/Entry.h"
#include "framework/Kel/NoSpareBlocks.h"
#include "framework/Kel/WalkLaws.h"

namespace Kel {
namespace {

using Number = Entry<std::uint32_t>;
using Named = Entry<Brix::String>;
using NamedMap = EntryMap<Named, &Named::key>;

template <class Map>
struct Numbers {
  static constexpr bool visitsNewcomers = false;
  bool insert(std::uint32_t key) {
    if (collection.find(key) != nullptr) {
      return false;
    }
    collection.insert(Number::make(key));
    return true;
  }
  bool erase(std::uint32_t key) { return static_cast<bool>(collection.take(key)); }
  bool contains(std::uint32_t key) const { return collection.find(key) != nullptr; }
  std::size_t size() const { return collection.size(); }
  std::size_t heapBytes() const { return collection.heapBytes(); }
  void clear() { collection.clear(); }
  auto begin() const { return collection.begin(); }
  auto end() const { return collection.end(); }
  static std::uint32_t keyAt(const typename Map::Iterator& at) { return (*at).first; }

  Map collection;
};

using Maps = ::testing::Types<Numbers<EntryMap<Number, &Number::key>>,
                              Numbers<EntryMap<Number, &Number::keyByValue>>>;
INSTANTIATE_TYPED_TEST_SUITE_P(EntryMap, WalkLaws, Maps);

TEST(EntryMap, FindsByTheKeyThatTheEntryItselfHolds) {
  NamedMap map;
  const auto entry = Named::make("web");
  map.insert(entry);
  EXPECT_EQ(map.find(Brix::String("web")), entry.get());
  EXPECT_EQ(map.find(Brix::String("dns")), nullptr);
  EXPECT_EQ(map.size(), 1U);
}

TEST(EntryMapDeathTest, TakesNoSecondEntryOfAKeyInATestBuild) {
  NamedMap map;
  map.insert(Named::make("web"));
  EXPECT_DEBUG_DEATH(
      {
        map.insert(Named::make("web"));
        map.take("web");
      },
      "the key is in the map already");
  EXPECT_EQ(map.size(), 1U);
}

TEST(EntryMap, FindsTextOfEveryKindWithoutMakingAString) {
  NamedMap map;
  for (int i = 0; i != 100; ++i) {
    map.insert(Named::make("name " + std::to_string(i)));
  }
  const FailingMemory none(1);
  EXPECT_NE(map.find("name 42"), nullptr);
  EXPECT_NE(map.find(std::string_view("name 42")), nullptr);
  EXPECT_EQ(map.find("name 100"), nullptr);
  EXPECT_FALSE(FailingMemory::failed());
}

TEST(EntryMap, WalksAsPairsOfKeyAndEntry) {
  NamedMap map;
  map.insert(Named::make("a"));
  map.insert(Named::make("b"));
  std::map<std::string, std::string> seen;
  for (const auto& [name, entry] : map) {
    static_assert(std::is_same_v<decltype(name), const Brix::String&>);
    static_assert(std::is_same_v<decltype(entry), const Brix::Ptr<Named>&>);
    seen.emplace(name.c_str(), entry->key().c_str());
  }
  EXPECT_EQ(seen, (std::map<std::string, std::string>{{"a", "a"}, {"b", "b"}}));
  const std::vector<std::pair<Brix::String, Brix::Ptr<Named>>> copied(map.begin(), map.end());
  EXPECT_EQ(copied.size(), 2U);
}

TEST(EntryMap, HoldsOneReferenceToEachEntry) {
  NamedMap map;
  const auto entry = Named::make("web");
  map.insert(entry);
  EXPECT_EQ(entry->refCount(), 2U);
  EXPECT_EQ(map.take("web"), entry);
  EXPECT_EQ(entry->refCount(), 1U);
  EXPECT_EQ(map.take("web"), nullptr);
}

TEST(EntryMap, TakesAnEntryByAReferenceToItsOwnKey) {
  NamedMap map;
  for (int i = 0; i != 20; ++i) {
    map.insert(Named::make(std::to_string(i)));
  }
  while (!map.empty()) {
    const Named* const entry = map.find((*map.begin()).first);
    map.take(entry->key());
  }
  EXPECT_EQ(Named::alive, 0U);
}

TEST(EntryMap, AWalkKeepsTheDeletedEntryItStandsOn) {
  NamedMap map;
  map.insert(Named::make("web"));
  for (const auto& [name, entry] : map) {
    map.take(name);
    EXPECT_EQ(Named::alive, 1U);
    EXPECT_EQ(name, "web");
    EXPECT_EQ(entry->refCount(), 1U);
  }
  EXPECT_EQ(Named::alive, 0U);
}

TEST(EntryMap, AnEntryThatEndsWithTheStepMayChangeTheMap) {
  NamedMap map;
  for (const char* name : {"a", "b", "c", "d"}) {
    map.insert(Named::make(name));
  }
  std::vector<std::string> seen;
  for (const auto& [name, entry] : map) {
    seen.emplace_back(name.c_str());
    entry->onEnd = [&map] {
      if (!map.empty()) {
        map.take((*map.begin()).first);
      }
    };
    map.take(name);
  }
  EXPECT_EQ(Named::alive, 0U);
  EXPECT_LT(seen.size(), 4U);
  EXPECT_EQ(std::set<std::string>(seen.begin(), seen.end()).size(), seen.size());
}

TEST(EntryMap, AnEntryThatEndsWithTheStepMayDestroyTheMap) {
  auto map = std::make_unique<NamedMap>();
  map->insert(Named::make("a"));
  map->insert(Named::make("b"));
  int steps = 0;
  for (auto at = map->begin(); !at.done(); ++at) {
    ++steps;
    (*at).second->onEnd = [&map] { map.reset(); };
    map->take(Brix::String((*at).first));
  }
  EXPECT_EQ(steps, 1);
  EXPECT_EQ(Named::alive, 0U);
}

TEST(EntryMap, IsEmptyForTheEntriesThatEndWithIt) {
  auto map = std::make_unique<NamedMap>();
  std::size_t seen = 99;
  for (const char* name : {"a", "b"}) {
    auto entry = Named::make(name);
    entry->onEnd = [&seen, all = map.get()] { seen = all->size(); };
    map->insert(std::move(entry));
  }
  map->clear();
  EXPECT_EQ(seen, 0U);
  EXPECT_EQ(Named::alive, 0U);
}

TEST(EntryMap, ReleasesWhatDyingEntriesInsert) {
  {
    NamedMap map;
    auto entry = Named::make("a");
    entry->onEnd = [&map] { map.insert(Named::make("late")); };
    map.insert(std::move(entry));
  }
  EXPECT_EQ(Named::alive, 0U);
}

TEST(EntryMap, ReleasesAnEntryThatCouldNotBeInserted) {
  EntryMap<Number, &Number::key> map;
  auto entry = Number::make(1);
  {
    const NoSpareBlocks spare;
    const FailingMemory failing(1);
    EXPECT_THROW(map.insert(std::move(entry)), std::bad_alloc);
  }
  EXPECT_EQ(Number::alive, 0U);
  EXPECT_TRUE(map.empty());
}

TEST(EntryMap, SpendsTwelveBytesOnAnEntryAndNoneOnItsKey) {
  EntryMap<Number, &Number::key> map;
  for (std::uint32_t key = 0; key != 8; ++key) {
    map.insert(Number::make(key));
  }
  EXPECT_EQ(map.heapBytes(), 8U + 8 * 12U);
  map.clear();
  map.reserve(10);
  EXPECT_EQ(map.heapBytes(), 8U + 32 * 2U + 10 * 12U);
}

TEST(EntryMap, HoldsAMillionEntries) {
  {
    EntryMap<Number, &Number::key> map;
    for (std::uint32_t key = 0; key != 1'000'000; ++key) {
      map.insert(Number::make(key));
    }
    std::uint64_t sum = 0;
    for (const auto& [key, entry] : map) {
      sum += key;
      if (key % 3 == 0) {
        map.take(key);
      }
    }
    EXPECT_EQ(sum, 499'999'500'000U);
    EXPECT_EQ(map.size(), 666'666U);
    EXPECT_EQ(Number::alive, 666'666U);
    EXPECT_EQ(map.find(3U), nullptr);
    EXPECT_NE(map.find(4U), nullptr);
  }
  EXPECT_EQ(Number::alive, 0U);
}

}  // namespace
}  // namespace Kel
