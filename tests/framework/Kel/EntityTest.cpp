#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Kel/Entity.h"
#include "framework/Kel/Model.h"
#include "framework/Kel/Notes.h"

namespace Kel {
namespace {

using Model::Leaf;
using Model::Part;
using Model::Rank;
using Model::Step;
using Model::Whole;

class EntityLaws : public ::testing::Test {
 protected:
  Brix::Ptr<Whole> whole = Whole::WholeIs();
  Notes notes{*whole};
};

TEST_F(EntityLaws, AScalarNotifiesAtEveryWriteAlsoOfAnEqualValue) {
  whole->countIs(0);
  whole->countIs(5);
  whole->countIs(5);
  EXPECT_EQ(whole->count(), 5U);
  EXPECT_EQ(notes.take(), (Noted{"count", "count", "count"}));
}

TEST_F(EntityLaws, ASetNotifiesWhatChangesItAndNothingElse) {
  whole->numberIs(7);
  whole->numberIs(7);
  whole->numberDel(8);
  whole->numberDel(7);
  whole->numberDel(7);
  EXPECT_EQ(notes.take(), (Noted{"number 7", "number 7"}));
  EXPECT_FALSE(whole->number(7));
}

TEST_F(EntityLaws, InsertingAllOfASetNotifiesOncePerKeyThatWasNotThere) {
  Set<std::uint32_t> keys;
  for (const std::uint32_t key : {7U, 8U, 9U}) {
    keys.insert(key);
  }
  whole->numberIs(8);
  notes.take();
  whole->numberAllIs(keys);
  EXPECT_EQ(notes.take(), (Noted{"number 7", "number 9"}));
  whole->numberDelAll();
  notes.take();
  whole->numberAllIs(keys);
  EXPECT_EQ(notes.take(), (Noted{"number 7", "number 8", "number 9"}));
}

TEST_F(EntityLaws, AMapNotifiesAtEveryWriteAndAtRemovals) {
  whole->labelIs("a", "1");
  whole->labelIs("a", "1");
  whole->labelDel("b");
  EXPECT_EQ(whole->label("a"), "1");
  EXPECT_EQ(whole->label("b"), "");
  whole->labelDel("a");
  EXPECT_EQ(notes.take(), (Noted{"label a", "label a", "label a"}));
}

// What one type's entities have published and written in vain since the making of this.
class Counted {
 public:
  std::uint64_t notifications() const {
    return Whole::kelCounts().notifications.value() - notifications_;
  }
  std::uint64_t unchanged() const {
    return Whole::kelCounts().unchangedWrites.value() - unchanged_;
  }

 private:
  std::uint64_t notifications_ = Whole::kelCounts().notifications.value();
  std::uint64_t unchanged_ = Whole::kelCounts().unchangedWrites.value();
};

TEST_F(EntityLaws, WhatATypePublishesAndWritesInVainIsCounted) {
  const Counted counted;
  whole->countIs(5);
  whole->numberIs(7);
  whole->labelIs("a", "1");
  whole->partIs("p");
  EXPECT_EQ(counted.notifications(), 4U);
  EXPECT_EQ(counted.unchanged(), 0U);
  whole->countIs(5);
  whole->labelIs("a", "1");
  EXPECT_EQ(counted.notifications(), 6U);
  EXPECT_EQ(counted.unchanged(), 2U);
  whole->numberIs(7);
  whole->numberDel(8);
  whole->labelDel("b");
  EXPECT_EQ(counted.notifications(), 6U);
  EXPECT_EQ(counted.unchanged(), 5U);
  whole->labelDel("a");
  whole->numberDel(7);
  whole->countIs(6);
  EXPECT_EQ(counted.notifications(), 9U);
  EXPECT_EQ(counted.unchanged(), 5U);
}

TEST(EntityCounts, KeysThatAreInsertedAtOnceCountAsThatManyNotifications) {
  const auto whole = Whole::WholeIs();
  Set<std::uint32_t> keys;
  keys.insert(1);
  keys.insert(2);
  const Counted counted;
  whole->numberAllIs(keys);
  EXPECT_EQ(counted.notifications(), 2U);
  whole->numberAllIs(keys);
  EXPECT_EQ(counted.notifications(), 2U);
  EXPECT_EQ(counted.unchanged(), 2U);
}

TEST_F(EntityLaws, TheCountsOfATypeStandWithItsSlab) {
  EXPECT_EQ(slabOf<Whole>().counts(), &Whole::kelCounts());
  const Slab plain("Test::Plain", 8, 8);
  EXPECT_EQ(plain.counts(), nullptr);
}

TEST_F(EntityLaws, ACollectionNotifiesCreationAndRemovalButNotTheReturnOfWhatIsThere) {
  const auto part = whole->partIs("p");
  EXPECT_EQ(whole->partIs("p"), part);
  EXPECT_EQ(whole->part("p"), part);
  whole->partDel("q");
  EXPECT_EQ(notes.take(), Noted{"part p"});
  whole->partDel("p");
  EXPECT_EQ(whole->part("p"), nullptr);
  EXPECT_EQ(notes.take(), Noted{"part p"});
  EXPECT_EQ(part->name(), "p");
}

TEST_F(EntityLaws, ASingleEntityNotifiesLikewise) {
  EXPECT_EQ(whole->leaf(), nullptr);
  whole->leafDel();
  const auto leaf = whole->leafIs();
  EXPECT_EQ(whole->leafIs(), leaf);
  whole->leafDel();
  EXPECT_EQ(whole->leaf(), nullptr);
  EXPECT_EQ(notes.take(), (Noted{"leaf", "leaf"}));
}

TEST_F(EntityLaws, TheRemovalOfAllNotifiesOncePerKey) {
  for (const std::uint32_t number : {1U, 2U, 3U}) {
    whole->numberIs(number);
    whole->labelIs(std::to_string(number), "x");
    whole->partIs(std::to_string(number));
    whole->stepIs(Rank{number});
  }
  notes.take();
  const auto sorted = [&] {
    Noted taken = notes.take();
    std::sort(taken.begin(), taken.end());
    return taken;
  };
  whole->numberDelAll();
  EXPECT_EQ(sorted(), (Noted{"number 1", "number 2", "number 3"}));
  whole->labelDelAll();
  EXPECT_EQ(notes.take(), (Noted{"label 1", "label 2", "label 3"}));
  whole->partDelAll();
  EXPECT_EQ(sorted(), (Noted{"part 1", "part 2", "part 3"}));
  whole->stepDelAll();
  EXPECT_EQ(notes.take(), (Noted{"step 3", "step 2", "step 1"}));
  whole->numberDelAll();
  whole->partDelAll();
  EXPECT_EQ(notes.take(), Noted{});
}

TEST_F(EntityLaws, TheChangeIsCompleteWhenItIsNotified) {
  std::vector<std::string> seen;
  const Observer observer(*whole, [&](AttrId id, const void* key) {
    if (id == Whole::partAttr.id) {
      seen.push_back(whole->part(*static_cast<const String*>(key)) ? "there" : "gone");
    } else if (id == Whole::numberAttr.id) {
      seen.push_back(whole->number(*static_cast<const std::uint32_t*>(key)) ? "in" : "out");
    } else if (id == Whole::leafAttr.id) {
      seen.push_back(whole->leaf() ? "leaf" : "no leaf");
    } else {
      seen.push_back(textOf(whole->count()));
    }
  });
  whole->partIs("p");
  whole->partDel("p");
  whole->numberIs(1);
  whole->numberDel(1);
  whole->leafIs();
  whole->leafDel();
  whole->countIs(4);
  EXPECT_EQ(seen, (Noted{"there", "gone", "in", "out", "leaf", "no leaf", "4"}));
}

TEST_F(EntityLaws, TheKeyOfANotificationSurvivesItsEntry) {
  std::vector<std::string> keys;
  const Observer first(*whole, [&](AttrId, const void*) { whole->partDelAll(); });
  const Observer second(*whole, [&](AttrId, const void* key) {
    keys.push_back(static_cast<const String*>(key)->c_str());
  });
  whole->partIs("a name that is long enough for a block of its own");
  EXPECT_EQ(keys.size(), 2U);
  EXPECT_EQ(keys.back(), "a name that is long enough for a block of its own");
}

TEST_F(EntityLaws, AKeyMayBeAReferenceIntoWhatIsDeleted) {
  const auto& part = *whole->partIs("the key lies in the entry");
  whole->partDel(part.name());
  whole->labelIs("the key lies in the map", "x");
  whole->labelDel((*whole->label().begin()).first);
  whole->numberIs(3);
  whole->numberDel(*whole->number().begin());
  EXPECT_EQ(notes.take().size(), 6U);
  EXPECT_TRUE(whole->part().empty() && whole->label().empty() && whole->number().empty());
}

TEST_F(EntityLaws, AValueOfAMapMayComeFromTheMapItself) {
  whole->labelIs("m", "a text of some length that is not kept in place");
  const String expected = whole->label("m");
  struct Slot : Brix::Subscriber {
    Slot()
        : Subscriber(
              [](const Brix::Publisher&, Subscriber& self, AttrId, const void*, const void* value) {
                static_cast<Slot&>(self).text = *static_cast<const String*>(value);
              }) {}
    String text;
  } slot;
  whole->publisher().subscriberAdd(slot);
  for (const char* key : {"a", "b", "c", "d", "e", "f", "g", "h"}) {
    whole->labelIs(key, *whole->label().find("m"));  // growing moves what the reference leads to
    EXPECT_EQ(slot.text, expected);
  }
  whole->publisher().subscriberRemove(slot);
}

TEST_F(EntityLaws, AWalkSurvivesDeletionAndCreationByTheWalker) {
  for (const char* name : {"a", "b", "c", "d"}) {
    whole->partIs(name);
  }
  std::vector<std::string> visited;
  for (const auto& [name, part] : whole->part()) {
    visited.emplace_back(name.view());
    whole->partDel(name);
    whole->partIs("x" + std::string(name.view()));
    EXPECT_EQ(part->name(), name);
  }
  std::sort(visited.begin(), visited.end());
  EXPECT_EQ(visited, (Noted{"a", "b", "c", "d"}));
  EXPECT_EQ(whole->part().size(), 4U);
}

TEST_F(EntityLaws, SortedEntriesAreWalkedFromTheHighestKeyToTheLowest) {
  for (const std::uint32_t rank : {2U, 9U, 5U}) {
    whole->stepIs(Rank{rank});
  }
  std::vector<std::uint32_t> ranks;
  for (const auto& [rank, step] : whole->step()) {
    ranks.push_back(rank.value);
    if (rank.value == 9) {
      whole->stepDel(Rank{5});
      whole->stepDel(rank);
    }
  }
  EXPECT_EQ(ranks, (std::vector<std::uint32_t>{9, 2}));
}

TEST_F(EntityLaws, AnObserverThatDeletesAnEntryAtItsCreationLeavesTheWriterWithADetachedOne) {
  const Observer observer(*whole, [&](AttrId, const void*) { whole->partDelAll(); });
  const auto part = whole->partIs("p");
  ASSERT_NE(part, nullptr);
  EXPECT_EQ(whole->part("p"), nullptr);
  EXPECT_EQ(part->refCount(), 1U);
}

TEST_F(EntityLaws, AnExceptionOfAnObserverLeavesTheChangeInPlace) {
  const Observer observer(*whole, [](AttrId, const void*) { throw std::runtime_error("no"); });
  EXPECT_THROW(whole->partIs("p"), std::runtime_error);
  EXPECT_NE(whole->part("p"), nullptr);
  EXPECT_THROW(whole->leafIs(), std::runtime_error);
  EXPECT_NE(whole->leaf(), nullptr);
  EXPECT_THROW(whole->countIs(2), std::runtime_error);
  EXPECT_EQ(whole->count(), 2U);
  EXPECT_THROW(whole->partDel("p"), std::runtime_error);
  EXPECT_EQ(whole->part("p"), nullptr);
}

TEST(EntityEnd, MayComeAtAnyNotificationOfTheRemovalOfAll) {
  using Removal = void (Whole::*)();
  for (const Removal removal :
       {&Whole::partDelAll, &Whole::stepDelAll, &Whole::numberDelAll, &Whole::labelDelAll}) {
    for (int nth = 1; nth != 4; ++nth) {
      auto whole = Whole::WholeIs();
      for (const std::uint32_t number : {1U, 2U, 3U}) {
        whole->partIs(std::to_string(number));
        whole->stepIs(Rank{number});
        whole->numberIs(number);
        whole->labelIs(std::to_string(number), "x");
      }
      int calls = 0;
      std::unique_ptr<Observer> observer;
      observer = std::make_unique<Observer>(*whole, [&](AttrId, const void*) {
        if (++calls == nth) {
          whole.reset();
          observer.reset();
        }
      });
      (whole.get()->*removal)();
      EXPECT_EQ(calls, nth);
      EXPECT_EQ(whole, nullptr);
    }
  }
  EXPECT_EQ(slabOf<Whole>().live(), 0U);
  EXPECT_EQ(slabOf<Part>().live(), 0U);
}

TEST_F(EntityLaws, ANewEntityIsSwitchedOnAndHasOneOwnerEach) {
  EXPECT_TRUE(whole->hasNotificationActive());
  const auto part = whole->partIs("p");
  EXPECT_TRUE(part->hasNotificationActive());
  EXPECT_TRUE(whole->leafIs()->hasNotificationActive());
  EXPECT_EQ(part->refCount(), 2U);  // the collection's and this one
}

TEST_F(EntityLaws, ATimeThatWasNeverWrittenIsToldApartFromZero) {
  EXPECT_EQ(whole->time(), 0);
  EXPECT_TRUE(isNoTime(whole->time()));
  EXPECT_EQ(textOf(whole->time()), "0.000000");
  whole->timeIs(0);
  EXPECT_FALSE(isNoTime(whole->time()));
  whole->timeIs(-0.0);
  EXPECT_FALSE(isNoTime(whole->time()));
  whole->timeIs(12.5);
  EXPECT_EQ(whole->time(), 12.5);
  whole->timeIs(kNoTime);
  EXPECT_EQ(whole->time(), 0);
  EXPECT_FALSE(isNoTime(whole->time()));
}

TEST_F(EntityLaws, ReadingOfAConstEntityGivesConstEntities) {
  whole->partIs("p");
  whole->leafIs();
  const Whole& constant = *whole;
  static_assert(std::is_same_v<decltype(constant.part("p")), Brix::Ptr<const Part>>);
  static_assert(std::is_same_v<decltype(constant.leaf()), Brix::Ptr<const Leaf>>);
  EXPECT_NE(constant.part("p"), nullptr);
  EXPECT_NE(constant.leaf(), nullptr);
}

TEST_F(EntityLaws, NotificationsCanBeDeliveredAgainWithoutAChange) {
  const String key("p");
  whole->publisher().publish(Whole::partAttr.id, &key);
  EXPECT_EQ(notes.take(), Noted{"part p"});
  EXPECT_TRUE(whole->part().empty());
}

}  // namespace
}  // namespace Kel
