#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <iterator>
#include <random>
#include <set>
#include <type_traits>
#include <unordered_set>
#include <vector>

#include "Brix/String.h"
#include "Kel/Set.h"
#include "framework/Kel/WalkLaws.h"

namespace Kel {
namespace {

/// A key of an odd size without alignment, as a prefix is.
struct Odd {
  explicit Odd(std::uint32_t number) {
    for (std::size_t i = 0; i != bytes.size(); ++i) {
      bytes[i] = static_cast<std::uint8_t>(number >> i % 4 * 8);
    }
  }
  std::uint32_t number() const {
    std::uint32_t number = 0;
    for (std::size_t i = 4; i-- != 0;) {
      number = number << 8U | bytes[i];
    }
    return number;
  }
  std::uint32_t hash() const { return hashOfNumber(number()); }
  bool operator==(const Odd&) const = default;

  std::array<std::uint8_t, 13> bytes{};
};

/// A key that shares its hash with very many others, at both ends of the index.
struct Crowded {
  explicit Crowded(std::uint32_t number) : value(number) {}
  std::uint32_t number() const { return value; }
  std::uint32_t hash() const { return value % 3 - 1; }
  bool operator==(const Crowded&) const = default;

  std::uint32_t value;
};

/// A key that counts what is done with it.
struct Counting {
  std::uint32_t hash() const {
    ++hashed;
    return hashOfNumber(value);
  }
  bool operator==(const Counting& other) const {
    ++compared;
    return value == other.value;
  }

  static inline std::size_t hashed = 0;
  static inline std::size_t compared = 0;
  std::uint32_t value = 0;
};

template <class K>
struct Numbers {
  static constexpr bool visitsNewcomers = false;
  bool insert(std::uint32_t key) { return collection.insert(K(key)); }
  bool erase(std::uint32_t key) { return collection.erase(K(key)); }
  bool contains(std::uint32_t key) const { return collection.contains(K(key)); }
  std::size_t size() const { return collection.size(); }
  std::size_t heapBytes() const { return collection.heapBytes(); }
  void clear() { collection.clear(); }
  auto begin() const { return collection.begin(); }
  auto end() const { return collection.end(); }
  static std::uint32_t keyAt(const typename Set<K>::Iterator& at) {
    if constexpr (std::is_same_v<K, std::uint32_t>) {
      return *at;
    } else {
      return at->number();
    }
  }

  Set<K> collection;
};

using Keys = ::testing::Types<Numbers<std::uint32_t>, Numbers<Odd>, Numbers<Crowded>>;
INSTANTIATE_TYPED_TEST_SUITE_P(Set, WalkLaws, Keys);

TEST(Set, TellsWhetherAnInsertionOrDeletionChangedAnything) {
  Set<std::uint16_t> ports;
  EXPECT_TRUE(ports.insert(443));
  EXPECT_FALSE(ports.insert(443));
  EXPECT_TRUE(ports.contains(443));
  EXPECT_FALSE(ports.contains(80));
  EXPECT_EQ(ports.size(), 1U);
  EXPECT_FALSE(ports.erase(80));
  EXPECT_TRUE(ports.erase(443));
  EXPECT_FALSE(ports.erase(443));
  EXPECT_TRUE(ports.empty());
}

TEST(Set, TakesKeysOfEveryNumberAndEnumeration) {
  enum class Color : std::uint8_t { red, green };
  Set<Color> colors;
  EXPECT_TRUE(colors.insert(Color::green));
  EXPECT_FALSE(colors.contains(Color::red));
  Set<std::uint64_t> numbers;
  for (std::uint64_t bit = 0; bit != 64; ++bit) {
    EXPECT_TRUE(numbers.insert(std::uint64_t{1} << bit));
  }
  EXPECT_EQ(numbers.size(), 64U);
}

TEST(Set, IsTheSameAfterAPrefetch) {
  Set<std::uint32_t> set;
  set.prefetch();
  EXPECT_TRUE(set.empty());
  set.insert(7);
  set.prefetch();
  EXPECT_TRUE(set.contains(7));
  EXPECT_EQ(set.size(), 1U);
}

TEST(Set, IsFilledFromOneThatHasHadManyMoreKeys) {
  Set<std::uint32_t> from;
  for (std::uint32_t key = 0; key != 100; ++key) {
    from.insert(key);
  }
  for (std::uint32_t key = 3; key != 100; ++key) {
    from.erase(key);
  }
  Set<std::uint32_t> set;
  set.fill(from);
  EXPECT_EQ(std::vector<std::uint32_t>(set.begin(), set.end()), (std::vector{0U, 1U, 2U}));
  EXPECT_TRUE(set.contains(1));
  EXPECT_FALSE(set.contains(3));
  EXPECT_LT(set.heapBytes(), from.heapBytes());
}

TEST(Set, FillsStandardContainersFromItsIterators) {
  Set<std::uint32_t> set;
  for (const std::uint32_t key : {3U, 1U, 2U}) {
    set.insert(key);
  }
  EXPECT_EQ(std::vector<std::uint32_t>(set.begin(), set.end()),
            (std::vector<std::uint32_t>{3, 1, 2}));
  EXPECT_EQ(std::set<std::uint32_t>(set.begin(), set.end()), (std::set<std::uint32_t>{1, 2, 3}));
  EXPECT_TRUE(std::input_iterator<Set<std::uint32_t>::Iterator>);
  auto at = set.begin();
  EXPECT_EQ(*at++, 3U);
  EXPECT_EQ(*at, 1U);
}

TEST(Set, AWalkMayBeAssignedItselfAndAnother) {
  Set<std::uint16_t> ports;
  for (const unsigned port : {80U, 443U, 8080U}) {
    ports.insert(static_cast<std::uint16_t>(port));
  }
  auto at = ports.begin();
  ++at;
  const auto& same = at;
  at = same;
  EXPECT_EQ(*at, 443);
  auto other = ports.begin();
  other = at;
  EXPECT_EQ(*other, 443);
  at = ports.end();
  EXPECT_TRUE(at == ports.end());
  EXPECT_EQ(*++other, 8080) << "the other one goes on";
}

TEST(Set, InsertsAndErasesByAReferenceToTheCurrentKey) {
  Set<std::uint32_t> set;
  for (std::uint32_t key = 0; key != 100; ++key) {
    set.insert(key);
  }
  for (const std::uint32_t& key : set) {
    EXPECT_FALSE(set.insert(key));
    EXPECT_TRUE(set.erase(key));
    EXPECT_FALSE(set.contains(key));
  }
  EXPECT_TRUE(set.empty());
}

TEST(Set, ReservesExactlyWhatIsAskedFor) {
  Set<Odd> set;
  set.reserve(5);
  EXPECT_EQ(set.heapBytes(), 8U + 5 * 13U);
  EXPECT_TRUE(set.empty());
  EXPECT_TRUE(set.begin() == set.end());
  const std::size_t bytes = set.heapBytes();
  for (std::uint32_t key = 0; key != 5; ++key) {
    set.insert(Odd(key));
  }
  EXPECT_EQ(set.heapBytes(), bytes);
  set.reserve(3);
  EXPECT_EQ(set.heapBytes(), bytes);
  set.reserve(1000);
  EXPECT_EQ(set.size(), 5U);
  EXPECT_TRUE(set.contains(Odd(4)));
}

TEST(Set, IsFilledWithTheKeysOfAnotherInTheirOrder) {
  for (const std::uint32_t size : {0U, 1U, 8U, 9U, 16U, 17U, 100U, 1000U}) {
    for (const std::uint32_t room : {0U, 8U, size, 2 * size}) {
      Set<std::uint32_t> from;
      for (std::uint32_t key = 0; key != size; ++key) {
        from.insert(key * key);
      }
      Set<std::uint32_t> set;
      set.reserve(room);
      set.fill(from);
      EXPECT_EQ(std::vector<std::uint32_t>(set.begin(), set.end()),
                std::vector<std::uint32_t>(from.begin(), from.end()));
      for (std::uint32_t key = 0; key != size; ++key) {
        EXPECT_TRUE(set.contains(key * key));
        EXPECT_FALSE(set.insert(key * key));
      }
      EXPECT_FALSE(set.contains(3));
      EXPECT_TRUE(set.insert(3));
      EXPECT_TRUE(set.erase(3));
      for (std::uint32_t key = 0; key != size; ++key) {
        EXPECT_TRUE(set.erase(key * key));
      }
      EXPECT_TRUE(set.empty());
      EXPECT_EQ(from.size(), size);
    }
  }
}

TEST(Set, RefusesASizeBeyondAllMemory) {
  Set<std::uint32_t> set;
  EXPECT_THROW(set.reserve(std::size_t{1} << 40U), std::bad_alloc);
  EXPECT_EQ(set.heapBytes(), 0U);
}

TEST(Set, SpendsLittleMoreThanTheKeysThemselves) {
  struct Prefix : Odd {
    using Odd::Odd;
    std::array<std::uint8_t, 5> rest{};
  };
  static_assert(sizeof(Prefix) == 18);
  struct {
    std::uint32_t size;
    std::size_t indexBytes;
  } constexpr kCases[] = {
      {1, 0},        {2, 0},        {8, 0},         {12, 32 * 2},   {16, 32 * 2},
      {64, 128 * 2}, {96, 256 * 4}, {128, 256 * 4}, {192, 512 * 4}, {16384, 32768 * 4}};
  for (const auto& [size, indexBytes] : kCases) {
    Set<Prefix> set;
    for (std::uint32_t key = 0; key != size; ++key) {
      set.insert(Prefix(key));
    }
    EXPECT_EQ(set.heapBytes(), 8U + size * 18U + indexBytes) << size;
  }
}

TEST(Set, LooksUpWithOneHashAndHardlyMoreThanOneComparisonAtAnySize) {
  Set<Counting> set;
  for (std::uint32_t size = 0; size != 1'000'000; ++size) {
    set.insert(Counting{size});
  }
  ASSERT_EQ(set.size(), 1'000'000U);
  Counting::hashed = Counting::compared = 0;
  for (std::uint32_t key = 0; key != 1'000'000; ++key) {
    ASSERT_TRUE(set.contains(Counting{key}));
  }
  EXPECT_EQ(Counting::hashed, 1'000'000U);
  EXPECT_LE(Counting::compared, 1'010'000U);
  Counting::hashed = Counting::compared = 0;
  for (std::uint32_t key = 1'000'000; key != 2'000'000; ++key) {
    ASSERT_FALSE(set.contains(Counting{key}));
  }
  EXPECT_EQ(Counting::hashed, 1'000'000U);
  EXPECT_LE(Counting::compared, 10'000U);
}

TEST(Set, NeverHashesBelowTheSizeThatNeedsAnIndex) {
  Set<Counting> set;
  Counting::hashed = 0;
  for (std::uint32_t key = 0; key != 8; ++key) {
    set.insert(Counting{key});
    set.contains(Counting{key});
  }
  set.erase(Counting{0});
  EXPECT_EQ(Counting::hashed, 0U);
}

TEST(Set, InsertsAMillionKeysInLinearTime) {
  Counting::hashed = Counting::compared = 0;
  Set<Counting> set;
  for (std::uint32_t key = 0; key != 1'000'000; ++key) {
    set.insert(Counting{key});
  }
  // Each key once for itself, and in growth: every other growth hashes all anew, at double the
  // size.
  EXPECT_LE(Counting::hashed, 4'000'000U);
  EXPECT_LE(Counting::compared, 20'000U);
}

TEST(Set, DeletesAMillionKeysDuringAWalkInLinearTime) {
  Set<Counting> set;
  for (std::uint32_t key = 0; key != 1'000'000; ++key) {
    set.insert(Counting{key});
  }
  Counting::hashed = Counting::compared = 0;
  for (const Counting& key : set) {
    ASSERT_TRUE(set.erase(key));
  }
  EXPECT_EQ(set.heapBytes(), 0U);
  EXPECT_LE(Counting::hashed, 6'000'000U);
  EXPECT_LE(Counting::compared, 1'010'000U);
}

TEST(Set, DoesNotAgeUnderEndlessInsertionAndDeletion) {
  Set<Counting> set;
  for (std::uint32_t key = 0; key != 1000; ++key) {
    set.insert(Counting{key});
  }
  const std::size_t bytes = set.heapBytes();
  for (std::uint32_t key = 1000; key != 1'000'000; ++key) {
    ASSERT_TRUE(set.erase(Counting{key - 1000}));
    ASSERT_TRUE(set.insert(Counting{key}));
  }
  EXPECT_EQ(set.heapBytes(), bytes);
  Counting::hashed = Counting::compared = 0;
  for (std::uint32_t key = 0; key != 100'000; ++key) {
    ASSERT_FALSE(set.contains(Counting{key}));
  }
  EXPECT_LE(Counting::compared, 1000U);
}

}  // namespace
}  // namespace Kel
