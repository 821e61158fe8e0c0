#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <new>
#include <numeric>
#include <optional>
#include <random>
#include <set>
#include <vector>

#include "framework/Kel/FailingMemory.h"

/// What every collection promises to those who walk it. `Collection` dresses one of them up as a
/// collection of numbers: insert(n) and erase(n), true when that changed something, contains(n),
/// size(), clear(), heapBytes(), begin(), end(), keyAt(iterator), and `visitsNewcomers`, whether a
/// walk may come by entries that were inserted after it began.
template <class Collection>
class WalkLaws : public ::testing::Test {
 protected:
  using Keys = std::vector<std::uint32_t>;

  static void fill(Collection& collection, std::uint32_t size) {
    for (std::uint32_t key = 0; key != size; ++key) {
      ASSERT_TRUE(collection.insert(key));
    }
  }
  static Keys sorted(Keys keys) {
    std::sort(keys.begin(), keys.end());
    return keys;
  }
  static Keys upTo(std::uint32_t size) {
    Keys keys(size);
    std::iota(keys.begin(), keys.end(), 0U);
    return keys;
  }
  template <class Body>
  static Keys walk(Collection& collection, Body body) {
    Keys visited;
    for (auto at = collection.begin(); at != collection.end(); ++at) {
      visited.push_back(Collection::keyAt(at));
      body(visited.back());
    }
    return visited;
  }
  static Keys walk(Collection& collection) {
    return walk(collection, [](std::uint32_t) {});
  }
};

TYPED_TEST_SUITE_P(WalkLaws);

/// One walk of the random test, and what it still owes.
template <class Collection>
struct ModelWalk {
  decltype(std::declval<Collection&>().begin()) at;
  std::set<std::uint32_t> due;      // present since the walk began, not visited yet
  std::set<std::uint32_t> visited;  // never again
};

/// A collection and any number of walks over it, in a random dance, beside a std::set.
template <class Collection>
class RandomDance {
 public:
  explicit RandomDance(std::uint64_t seed) : random_(seed) {
    const std::uint32_t ranges[] = {4, 12, 60, 700};
    range_ = ranges[below(4)];
  }

  void run(int steps) {
    while (steps-- != 0 && !::testing::Test::HasFailure()) {
      const std::uint32_t dice = below(1000);
      const std::uint32_t key = below(range_);
      if (dice < 300) {
        insert(key);
      } else if (dice < 560) {
        erase(key);
      } else if (dice < 562) {
        clear(below(2) == 0);
      } else if (dice < 580 && walks_.size() < 6) {
        begin();
      } else if (!walks_.empty()) {
        advance(below(100));
      }
      ASSERT_EQ(collection_->size(), model_.size());
    }
    walks_.clear();
    std::vector<std::uint32_t> left;
    for (auto at = collection_->begin(); at != collection_->end(); ++at) {
      left.push_back(Collection::keyAt(at));
    }
    EXPECT_EQ(std::set<std::uint32_t>(left.begin(), left.end()), model_);
    EXPECT_EQ(left.size(), model_.size());
    for (std::uint32_t key = 0; key != range_; ++key) {
      EXPECT_EQ(collection_->contains(key), model_.contains(key));
    }
  }

 private:
  std::uint32_t below(std::uint32_t bound) { return static_cast<std::uint32_t>(random_() % bound); }

  void insert(std::uint32_t key) { ASSERT_EQ(collection_->insert(key), model_.insert(key).second); }
  void erase(std::uint32_t key) {
    ASSERT_EQ(collection_->erase(key), model_.erase(key) == 1);
    for (auto& walk : walks_) {
      walk.due.erase(key);
    }
  }
  void clear(bool destroy) {
    if (destroy) {
      collection_ = std::make_unique<Collection>();
      for (auto& walk : walks_) {
        EXPECT_TRUE(walk.at == collection_->end()) << "a walk outlived its collection";
      }
      walks_.clear();
    } else {
      collection_->clear();
    }
    model_.clear();
    for (auto& walk : walks_) {
      walk.due.clear();
    }
  }
  void begin() {
    if (walks_.empty() || below(3) != 0) {
      walks_.push_back({collection_->begin(), model_, {}});
      see(walks_.back());
    } else {
      walks_.push_back(*chosen());  // a copy goes on from where the original stands
    }
  }
  void advance(std::uint32_t dice) {
    const auto walk = chosen();
    if (dice < 3) {
      walks_.erase(walk);  // abandoned
    } else if (walk->at == collection_->end()) {
      EXPECT_TRUE(walk->due.empty()) << *walk->due.begin() << " was never visited";
      walks_.erase(walk);
    } else {
      ++walk->at;
      see(*walk);
    }
  }
  // Checks the entry on which the walk now stands.
  void see(ModelWalk<Collection>& walk) {
    if (walk.at == collection_->end()) {
      return;
    }
    const std::uint32_t key = Collection::keyAt(walk.at);
    EXPECT_TRUE(walk.visited.insert(key).second) << key << " was visited twice";
    EXPECT_TRUE(model_.contains(key)) << key << " was visited after its deletion";
    EXPECT_TRUE(walk.due.erase(key) == 1 || Collection::visitsNewcomers)
        << key << " was visited although it was inserted after the walk began";
  }
  typename std::list<ModelWalk<Collection>>::iterator chosen() {
    return std::next(walks_.begin(), below(static_cast<std::uint32_t>(walks_.size())));
  }

  std::mt19937_64 random_;
  std::uint32_t range_ = 0;
  std::unique_ptr<Collection> collection_ = std::make_unique<Collection>();
  std::set<std::uint32_t> model_;
  std::list<ModelWalk<Collection>> walks_;
};

TYPED_TEST_P(WalkLaws, AnEmptyCollectionIsOnePointerAndOwnsNoMemory) {
  TypeParam collection;
  EXPECT_EQ(sizeof(collection.collection), sizeof(void*));
  EXPECT_EQ(collection.heapBytes(), 0U);
  EXPECT_TRUE(collection.begin() == collection.end());
}

TYPED_TEST_P(WalkLaws, VisitsEveryEntryOnce) {
  for (const std::uint32_t size : {1U, 2U, 3U, 8U, 9U, 64U, 65U, 1000U}) {
    TypeParam collection;
    this->fill(collection, size);
    EXPECT_EQ(this->sorted(this->walk(collection)), this->upTo(size));
  }
}

TYPED_TEST_P(WalkLaws, LosesNoEntryWhenTheCurrentOneIsDeleted) {
  for (const std::uint32_t size : {1U, 2U, 8U, 9U, 200U}) {
    TypeParam collection;
    this->fill(collection, size);
    const auto visited =
        this->walk(collection, [&](std::uint32_t key) { EXPECT_TRUE(collection.erase(key)); });
    EXPECT_EQ(this->sorted(visited), this->upTo(size));
    EXPECT_EQ(collection.heapBytes(), 0U);
  }
}

TYPED_TEST_P(WalkLaws, LosesNoEntryWhenEverySecondOneIsDeletedAtItsTurn) {
  TypeParam collection;
  this->fill(collection, 100);
  const auto visited = this->walk(collection, [&](std::uint32_t key) {
    if (key % 2 == 0) {
      collection.erase(key);
    }
  });
  EXPECT_EQ(this->sorted(visited), this->upTo(100));
  EXPECT_EQ(collection.size(), 50U);
}

TYPED_TEST_P(WalkLaws, DoesNotVisitWhatWasDeletedBeforeItsTurn) {
  for (const std::uint32_t size : {2U, 8U, 50U}) {
    TypeParam collection;
    this->fill(collection, size);
    const auto visited = this->walk(collection, [&](std::uint32_t current) {
      for (std::uint32_t key = 0; key != size; ++key) {
        if (key != current) {
          collection.erase(key);
        }
      }
    });
    EXPECT_EQ(visited.size(), 1U);
    EXPECT_TRUE(collection.contains(visited.front()));
  }
}

TYPED_TEST_P(WalkLaws, SurvivesTheDeletionOfWhatHasHadItsTurn) {
  TypeParam collection;
  this->fill(collection, 60);
  std::optional<std::uint32_t> previous;
  const auto visited = this->walk(collection, [&](std::uint32_t key) {
    if (previous) {
      EXPECT_TRUE(collection.erase(*previous));
    }
    previous = key;
  });
  EXPECT_EQ(this->sorted(visited), this->upTo(60));
  EXPECT_EQ(collection.size(), 1U);
}

TYPED_TEST_P(WalkLaws, EndsAlthoughEveryStepInserts) {
  TypeParam collection;
  this->fill(collection, 10);
  std::uint32_t next = 10;
  const auto visited = this->walk(collection, [&](std::uint32_t) {
    for (int i = 0; i != 30 && next != 2000; ++i) {
      collection.insert(next++);
    }
  });
  const std::set<std::uint32_t> different(visited.begin(), visited.end());
  EXPECT_EQ(different.size(), visited.size());
  for (std::uint32_t key = 0; key != 10; ++key) {
    EXPECT_TRUE(different.contains(key));
  }
  if (!TypeParam::visitsNewcomers) {
    EXPECT_EQ(visited.size(), 10U);
  }
  EXPECT_EQ(collection.size(), next);
}

TYPED_TEST_P(WalkLaws, DoesNotVisitAgainWhatIsDeletedAndInsertedAnew) {
  TypeParam collection;
  this->fill(collection, 20);
  const auto visited = this->walk(collection, [&](std::uint32_t key) {
    EXPECT_TRUE(collection.erase(key));
    EXPECT_TRUE(collection.insert(key));
  });
  EXPECT_EQ(this->sorted(visited), this->upTo(20));
}

TYPED_TEST_P(WalkLaws, EndsWhenTheCollectionIsCleared) {
  TypeParam collection;
  this->fill(collection, 20);
  EXPECT_EQ(this->walk(collection, [&](std::uint32_t) { collection.clear(); }).size(), 1U);
  EXPECT_EQ(collection.heapBytes(), 0U);
  EXPECT_TRUE(collection.insert(7));
  EXPECT_EQ(this->walk(collection), std::vector<std::uint32_t>{7});
}

TYPED_TEST_P(WalkLaws, EndsWhenTheCollectionIsDestroyed) {
  std::optional<TypeParam> collection(std::in_place);
  this->fill(*collection, 20);
  auto outer = collection->begin();
  auto copy = outer;
  int steps = 0;
  for (auto inner = collection->begin(); !inner.done(); ++inner) {
    const std::uint32_t key = TypeParam::keyAt(inner);
    collection.reset();
    EXPECT_EQ(TypeParam::keyAt(inner), key);
    ++steps;
  }
  EXPECT_EQ(steps, 1);
  EXPECT_TRUE(outer.done());
  EXPECT_TRUE((++outer).done());
  EXPECT_TRUE(copy.done());
}

TYPED_TEST_P(WalkLaws, NestedWalksMayDeleteWhatTheOuterOneHasYetToVisit) {
  TypeParam collection;
  this->fill(collection, 40);
  std::set<std::uint32_t> deleted;
  const auto visited = this->walk(collection, [&](std::uint32_t outer) {
    EXPECT_FALSE(deleted.contains(outer));
    const auto present = this->walk(collection).size();
    std::size_t seen = 0;
    this->walk(collection, [&](std::uint32_t inner) {
      ++seen;
      if (inner % 7 == outer % 7 && inner != outer) {
        collection.erase(inner);
        deleted.insert(inner);
      }
    });
    EXPECT_EQ(seen, present);
  });
  EXPECT_EQ(visited.size(), 7U);
  EXPECT_EQ(collection.size(), 7U);
}

TYPED_TEST_P(WalkLaws, KeepsTheCurrentKeyWhateverHappensToItsEntry) {
  TypeParam collection;
  this->fill(collection, 30);
  for (auto at = collection.begin(); at != collection.end(); ++at) {
    const std::uint32_t key = TypeParam::keyAt(at);
    collection.erase(key);
    collection.insert(1000 + key);
    EXPECT_EQ(TypeParam::keyAt(at), key);
    if (key >= 1000) {
      break;  // an ordered walk from below comes by the newcomers, which lie above
    }
  }
}

TYPED_TEST_P(WalkLaws, AWalkThatIsLeftEarlyLeavesNothingBehind) {
  TypeParam collection;
  this->fill(collection, 30);
  for (auto at = collection.begin(); at != collection.end(); ++at) {
    break;
  }
  collection.clear();
  EXPECT_EQ(collection.heapBytes(), 0U);
  EXPECT_TRUE(collection.begin() == collection.end());
}

TYPED_TEST_P(WalkLaws, CopiesOfAnIteratorGoOnByThemselvesAndEndInAnyOrder) {
  TypeParam collection;
  this->fill(collection, 10);
  auto first = std::make_unique<decltype(collection.begin())>(collection.begin());
  auto second = std::make_unique<decltype(collection.begin())>(*first);
  auto third = collection.begin();
  third = *second;
  first.reset();
  collection.erase(TypeParam::keyAt(third));
  int steps = 0;
  for (; *second != collection.end(); ++*second) {
    ++steps;
  }
  EXPECT_EQ(steps, 10);
  second.reset();
  for (steps = 0; third != collection.end(); ++third) {
    ++steps;
  }
  EXPECT_EQ(steps, 10);
}

TYPED_TEST_P(WalkLaws, HoldInARandomDanceOfEditsAndWalks) {
  for (std::uint64_t seed = 1; seed != 60; ++seed) {
    SCOPED_TRACE(::testing::Message() << "seed " << seed);
    RandomDance<TypeParam>(seed).run(3000);
  }
  const std::uint64_t fresh = std::random_device{}();
  SCOPED_TRACE(::testing::Message() << "fresh seed " << fresh);
  RandomDance<TypeParam>(fresh).run(20000);
}

TYPED_TEST_P(WalkLaws, AnInsertionWithoutMemoryChangesNothing) {
  TypeParam collection;
  std::size_t failures = 0;
  for (std::uint32_t key = 0; key != 300; ++key) {
    auto at = collection.begin();
    const auto before = this->sorted(this->walk(collection));
    for (std::size_t nth = 1;; ++nth) {
      bool inserted = false;
      {
        const FailingMemory failing(nth);
        try {
          inserted = collection.insert(key * 7 % 300);
        } catch (const std::bad_alloc&) {
          ++failures;
        }
      }
      if (inserted) {
        break;
      }
      ASSERT_TRUE(FailingMemory::failed());
      ASSERT_EQ(this->sorted(this->walk(collection)), before);
      ASSERT_FALSE(collection.contains(key * 7 % 300));
    }
    std::size_t steps = 0;
    for (; at != collection.end(); ++at) {
      ++steps;
    }
    EXPECT_GE(steps, before.size());
  }
  EXPECT_GE(failures, 5U);
  EXPECT_EQ(this->sorted(this->walk(collection)), this->upTo(300));
}

REGISTER_TYPED_TEST_SUITE_P(
    WalkLaws, AnEmptyCollectionIsOnePointerAndOwnsNoMemory, VisitsEveryEntryOnce,
    LosesNoEntryWhenTheCurrentOneIsDeleted, LosesNoEntryWhenEverySecondOneIsDeletedAtItsTurn,
    DoesNotVisitWhatWasDeletedBeforeItsTurn, SurvivesTheDeletionOfWhatHasHadItsTurn,
    EndsAlthoughEveryStepInserts, DoesNotVisitAgainWhatIsDeletedAndInsertedAnew,
    EndsWhenTheCollectionIsCleared, EndsWhenTheCollectionIsDestroyed,
    NestedWalksMayDeleteWhatTheOuterOneHasYetToVisit, KeepsTheCurrentKeyWhateverHappensToItsEntry,
    AWalkThatIsLeftEarlyLeavesNothingBehind, CopiesOfAnIteratorGoOnByThemselvesAndEndInAnyOrder,
    HoldInARandomDanceOfEditsAndWalks, AnInsertionWithoutMemoryChangesNothing);
