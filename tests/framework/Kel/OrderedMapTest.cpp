#include <gtest/gtest.h>

#include <algorithm>
#include <compare>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

#include "Kel/OrderedMap.h"
#include "framework/Kel/Entry.h"
#include "framework/Kel/WalkLaws.h"

namespace Kel {
namespace {

/// A priority that counts its comparisons.
struct Priority {
  std::strong_ordering operator<=>(const Priority& other) const {
    ++compared;
    return value <=> other.value;
  }
  bool operator==(const Priority& other) const { return value == other.value; }

  static inline std::size_t compared = 0;
  std::uint32_t value = 0;
};

using Rule = Entry<Priority>;
using Rules = OrderedMap<Rule, &Rule::key>;
using Number = Entry<std::uint32_t>;

Brix::Ptr<Rule> rule(std::uint32_t priority) { return Rule::make(Priority{priority}); }

template <class Map>
struct Numbers {
  static constexpr bool visitsNewcomers = true;
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

using Maps = ::testing::Types<Numbers<OrderedMap<Number, &Number::key>>,
                              Numbers<OrderedMap<Number, &Number::keyByValue>>>;
INSTANTIATE_TYPED_TEST_SUITE_P(OrderedMap, WalkLaws, Maps);

std::vector<std::uint32_t> shuffled(std::uint32_t size) {
  std::vector<std::uint32_t> keys(size);
  std::iota(keys.begin(), keys.end(), 0U);
  std::shuffle(keys.begin(), keys.end(), std::mt19937(7));
  return keys;
}

void expectDescending(const Rules& rules) {
  std::vector<std::uint32_t> walked;
  for (const auto& [priority, entry] : rules) {
    EXPECT_EQ(priority.value, entry->key().value);
    walked.push_back(priority.value);
  }
  EXPECT_EQ(walked.size(), rules.size());
  EXPECT_TRUE(std::is_sorted(walked.rbegin(), walked.rend()));
}

TEST(OrderedMap, WalksFromTheHighestKeyToTheLowestInWhateverOrderTheyCame) {
  for (const std::uint32_t size : {1U, 5U, 64U, 65U, 129U, 3000U}) {
    Rules ascending;
    Rules descending;
    Rules random;
    for (std::uint32_t key = 0; key != size; ++key) {
      ascending.insert(rule(key));
      descending.insert(rule(size - 1 - key));
    }
    for (const std::uint32_t key : shuffled(size)) {
      random.insert(rule(key));
    }
    for (const Rules* rules : {&ascending, &descending, &random}) {
      ASSERT_EQ(rules->size(), size);
      expectDescending(*rules);
      EXPECT_NE(rules->find(Priority{size / 2}), nullptr);
      EXPECT_EQ(rules->find(Priority{size}), nullptr);
    }
  }
}

TEST(OrderedMap, VisitsANewcomerWhoseTurnIsStillToCome) {
  Rules rules;
  rules.insert(rule(30));
  rules.insert(rule(10));
  std::vector<std::uint32_t> visited;
  for (const auto& [priority, entry] : rules) {
    visited.push_back(priority.value);
    if (priority.value == 30) {
      rules.insert(rule(20));
      rules.insert(rule(40));
    }
  }
  EXPECT_EQ(visited, (std::vector<std::uint32_t>{30, 20, 10}));
}

TEST(OrderedMap, GoesOnBelowTheCurrentKeyAfterItsDeletion) {
  Rules rules;
  for (const std::uint32_t key : {50U, 40U, 30U, 20U, 10U}) {
    rules.insert(rule(key));
  }
  std::vector<std::uint32_t> visited;
  for (const auto& [priority, entry] : rules) {
    visited.push_back(priority.value);
    if (priority.value == 40) {
      rules.take(Priority{50});
      rules.take(priority);
      rules.take(Priority{30});
    }
  }
  EXPECT_EQ(visited, (std::vector<std::uint32_t>{50, 40, 20, 10}));
}

TEST(OrderedMap, InsertsTwentyThousandRulesInAnyOrderWithFewComparisons) {
  for (const bool random : {false, true}) {
    Rules rules;
    auto keys = shuffled(20'001);
    if (!random) {
      std::sort(keys.begin(), keys.end());
    }
    std::vector<Brix::Ptr<Rule>> entries;
    entries.reserve(keys.size());
    for (const std::uint32_t key : keys) {
      entries.push_back(rule(key));
    }
    Priority::compared = 0;
    for (auto& entry : entries) {
#ifdef NDEBUG
      rules.insert(std::move(entry));
#else
      const std::size_t before = Priority::compared;
      rules.insert(std::move(entry));
      Priority::compared -= (Priority::compared - before) / 2;  // the look-up of the assertion
#endif
    }
    EXPECT_LE(Priority::compared, 20'001U * 17);  // log2(20001) is 14.3
    expectDescending(rules);
  }
}

TEST(OrderedMap, AWalkThatDeletesStepsWithFewComparisons) {
  Rules rules;
  for (const std::uint32_t key : shuffled(20'001)) {
    rules.insert(rule(key));
  }
  Priority::compared = 0;
  for (const auto& [priority, entry] : rules) {
    static_cast<void>(entry);
  }
  EXPECT_EQ(Priority::compared, 0U);
  for (const auto& [priority, entry] : rules) {
    rules.take(priority);
  }
  EXPECT_TRUE(rules.empty());
  EXPECT_LE(Priority::compared, 20'001U * 3 * 17);
}

TEST(OrderedMap, GivesMemoryBackWhenItShrinks) {
  Rules rules;
  for (const std::uint32_t key : shuffled(20'000)) {
    rules.insert(rule(key));
  }
  EXPECT_LE(rules.heapBytes(), 20'000U * 24);
  for (const std::uint32_t key : shuffled(20'000)) {
    if (key % 100 != 0) {
      rules.take(Priority{key});
    }
  }
  EXPECT_EQ(rules.size(), 200U);
  EXPECT_LE(rules.heapBytes(), 40'000U);
  expectDescending(rules);
  rules.clear();
  EXPECT_EQ(rules.heapBytes(), 0U);
  EXPECT_EQ(Rule::alive, 0U);
}

TEST(OrderedMap, RulesInOrderFillTheirChunks) {
  Rules rules;
  for (std::uint32_t key = 0; key != 20'032; ++key) {
    rules.insert(rule(key));
  }
  EXPECT_LE(rules.heapBytes(), 20'032U * 12 + 1024 * 40);
}

TEST(OrderedMap, AnEntryThatEndsWithTheStepMayDestroyTheMap) {
  auto rules = std::make_unique<Rules>();
  rules->insert(rule(1));
  rules->insert(rule(2));
  int steps = 0;
  for (auto at = rules->begin(); !at.done(); ++at) {
    ++steps;
    (*at).second->onEnd = [&rules] { rules.reset(); };
    rules->take((*at).first);
  }
  EXPECT_EQ(steps, 1);
  EXPECT_EQ(Rule::alive, 0U);
}

TEST(OrderedMap, ReleasesAnEntryThatCouldNotBeInserted) {
  Rules rules;
  auto entry = rule(1);
  {
    const FailingMemory failing(2);
    EXPECT_THROW(rules.insert(std::move(entry)), std::bad_alloc);
  }
  EXPECT_EQ(Rule::alive, 0U);
  EXPECT_EQ(rules.heapBytes(), 0U);
}

TEST(OrderedMap, HoldsAMillionEntries) {
  {
    Rules rules;
    for (std::uint32_t key = 1'000'000; key-- != 0;) {
      rules.insert(rule(key));
    }
    EXPECT_EQ(rules.size(), 1'000'000U);
    EXPECT_NE(rules.find(Priority{0}), nullptr);
    EXPECT_NE(rules.find(Priority{999'999}), nullptr);
    EXPECT_EQ(rules.find(Priority{1'000'000}), nullptr);
  }
  EXPECT_EQ(Rule::alive, 0U);
}

}  // namespace
}  // namespace Kel
