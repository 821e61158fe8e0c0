#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Brix/Ptr.h"
#include "Brix/Publisher.h"
#include "framework/Brix/Publishing.h"

namespace Brix {
namespace {

using Called = std::vector<std::string>;

class PublisherRound : public ::testing::TestWithParam<int> {
 protected:
  /// A slot that writes its name down whenever it is called.
  std::unique_ptr<Slot> slot(const std::string& name, std::function<void()> then = {}) {
    auto made = std::make_unique<Slot>([this, name, then = std::move(then)] {
      called.push_back(name);
      if (then) {
        then();
      }
    });
    object->publisher().subscriberAdd(*made);
    return made;
  }
  void publish() { object->publisher().publish(7); }

  Ptr<Publishing> object = Publishing::make();
  Called called;
};

TEST_F(PublisherRound, OfNobodyCallsNobody) {
  publish();
  EXPECT_EQ(object->publisher().subscriberCount(), 0U);
  EXPECT_TRUE(object->publisher().subscribers().empty());
}

TEST_F(PublisherRound, HandsOverAttributeKeyAndValue) {
  int key = 1;
  int value = 2;
  for (int others = 0; others != 3; ++others) {
    object = Publishing::make();
    Slot::Seen seen;
    Slot last([&](const Slot::Seen& what) { seen = what; });
    const auto first = others > 0 ? slot("a") : nullptr;
    const auto second = others > 1 ? slot("b") : nullptr;
    object->publisher().subscriberAdd(last);
    object->publisher().publish(-3, &key, &value);
    EXPECT_EQ(seen.id, -3);
    EXPECT_EQ(seen.key, &key);
    EXPECT_EQ(seen.value, &value);
    EXPECT_EQ(seen.publisher, object->publisher());
    EXPECT_EQ(seen.publisher.owner(), object.get());
  }
}

TEST_P(PublisherRound, CallsEverySubscriberOnceInTheOrderOfRegistration) {
  std::vector<std::unique_ptr<Slot>> slots;
  Called expected;
  for (int i = 0; i != GetParam(); ++i) {
    slots.push_back(slot(std::to_string(i)));
    expected.push_back(std::to_string(i));
  }
  EXPECT_EQ(object->publisher().subscriberCount(), slots.size());
  EXPECT_EQ(object->publisher().subscribers().size(), slots.size());
  publish();
  EXPECT_EQ(called, expected);
}

TEST_P(PublisherRound, CallsNobodyAfterAllHaveGone) {
  std::vector<std::unique_ptr<Slot>> slots;
  for (int i = 0; i != GetParam(); ++i) {
    slots.push_back(slot("x"));
  }
  for (const auto& one : slots) {
    object->publisher().subscriberRemove(*one);
  }
  EXPECT_EQ(object->publisher().subscriberCount(), 0U);
  publish();
  EXPECT_EQ(called, Called{});
}

TEST_P(PublisherRound, EndsWhenItsFirstSubscriberRemovesAll) {
  std::vector<std::unique_ptr<Slot>> slots;
  for (int i = 0; i != GetParam(); ++i) {
    slots.push_back(slot(std::to_string(i), [&] {
      for (const auto& one : slots) {
        object->publisher().subscriberRemove(*one);
      }
    }));
  }
  publish();
  EXPECT_EQ(called, GetParam() == 0 ? Called{} : Called{"0"});
  EXPECT_EQ(object->publisher().subscriberCount(), 0U);
  publish();
  EXPECT_EQ(called.size(), GetParam() == 0 ? 0U : 1U);
}

TEST_P(PublisherRound, CallsEachSubscriberThatRemovesItselfExactlyOnce) {
  std::vector<std::unique_ptr<Slot>> slots;
  for (int i = 0; i != GetParam(); ++i) {
    slots.push_back(slot("x", [&, i] {
      object->publisher().subscriberRemove(*slots[static_cast<std::size_t>(i)]);
    }));
  }
  publish();
  publish();
  EXPECT_EQ(called.size(), slots.size());
}

INSTANTIATE_TEST_SUITE_P(OfSeveralSizes, PublisherRound, ::testing::Values(0, 1, 2, 3, 4, 5, 8, 9));

TEST_F(PublisherRound, NeverCallsALaterSubscriberThatAnEarlierOneRemoved) {
  std::unique_ptr<Slot> c;
  const auto a = slot("a", [&] { object->publisher().subscriberRemove(*c); });
  const auto b = slot("b");
  c = slot("c");
  const auto d = slot("d");
  publish();
  EXPECT_EQ(called, (Called{"a", "b", "d"}));
}

TEST_F(PublisherRound, GoesOnAfterASubscriberRemovedAnEarlierOne) {
  const auto a = slot("a");
  const auto b = slot("b", [&] { object->publisher().subscriberRemove(*a); });
  const auto c = slot("c");
  publish();
  EXPECT_EQ(called, (Called{"a", "b", "c"}));
  called.clear();
  publish();
  EXPECT_EQ(called, (Called{"b", "c"}));
}

TEST_F(PublisherRound, DoesNotReachWhoIsAddedMeanwhileWhateverTheNumberBefore) {
  for (int before = 1; before != 9; ++before) {
    called.clear();
    Slot late([&] { called.emplace_back("late"); });
    std::vector<std::unique_ptr<Slot>> slots;
    for (int i = 0; i != before; ++i) {
      slots.push_back(slot("x", [&] { object->publisher().subscriberAdd(late); }));
    }
    publish();
    EXPECT_EQ(called.size(), slots.size()) << before;
    called.clear();
    publish();
    EXPECT_EQ(called.size(), slots.size() + 1) << before;
    EXPECT_EQ(called.back(), "late");
    object->publisher().subscriberRemove(late);
    for (const auto& one : slots) {
      object->publisher().subscriberRemove(*one);
    }
  }
}

TEST_F(PublisherRound, DoesNotReachWhoLeftAndCameBackMeanwhile) {
  std::unique_ptr<Slot> b;
  const auto a = slot("a", [&] {
    object->publisher().subscriberRemove(*b);
    object->publisher().subscriberAdd(*b);
  });
  b = slot("b");
  const auto c = slot("c");
  publish();
  EXPECT_EQ(called, (Called{"a", "c"}));
  EXPECT_EQ(object->publisher().subscriberCount(), 3U);
}

TEST_F(PublisherRound, DoesNotReachTheOnlySubscriberAgainThatLeavesAndComesBack) {
  std::unique_ptr<Slot> only;
  only = slot("only", [&] {
    object->publisher().subscriberRemove(*only);
    object->publisher().subscriberAdd(*only);
  });
  publish();
  EXPECT_EQ(called, Called{"only"});
  publish();
  EXPECT_EQ(called, (Called{"only", "only"}));
}

TEST_F(PublisherRound, GrowsManyTimesWhileItGoesOn) {
  std::vector<std::unique_ptr<Slot>> late;
  const auto a = slot("a", [&] {
    for (int i = 0; i != 100; ++i) {
      late.push_back(slot("late"));
    }
  });
  const auto b = slot("b");
  publish();
  EXPECT_EQ(called, (Called{"a", "b"}));
  EXPECT_EQ(object->publisher().subscriberCount(), 102U);
}

TEST_F(PublisherRound, InsideARoundReachesWhoWasAddedBeforeItBegan) {
  bool nested = false;
  Slot late([&] { called.emplace_back("late"); });
  const auto a = slot("a", [&] {
    if (!std::exchange(nested, true)) {
      object->publisher().subscriberAdd(late);
      publish();
    }
  });
  const auto b = slot("b");
  publish();
  EXPECT_EQ(called, (Called{"a", "a", "b", "late", "b"}));
}

TEST_F(PublisherRound, InsideARoundLeavesThePositionsOfTheOuterOneRight) {
  bool nested = false;
  std::unique_ptr<Slot> c;
  const auto a = slot("a");
  const auto b = slot("b", [&] {
    if (!std::exchange(nested, true)) {
      object->publisher().subscriberRemove(*a);
      publish();
      object->publisher().subscriberRemove(*c);
    }
  });
  c = slot("c");
  const auto d = slot("d");
  publish();
  EXPECT_EQ(called, (Called{"a", "b", "b", "c", "d", "d"}));
  EXPECT_EQ(object->publisher().subscriberCount(), 2U);
}

TEST_F(PublisherRound, ServesAllOthersBeforeAnExceptionGoesOn) {
  const auto a = slot("a", [] { throw std::runtime_error("a failed"); });
  const auto b = slot("b");
  const auto c = slot("c", [] { throw std::runtime_error("c failed"); });
  const auto d = slot("d");
  try {
    publish();
    FAIL() << "nothing was raised";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "a failed");
  }
  EXPECT_EQ(called, (Called{"a", "b", "c", "d"}));
}

TEST_F(PublisherRound, AfterAnExceptionWorksAsBefore) {
  bool failing = true;
  std::unique_ptr<Slot> b;
  const auto a = slot("a", [&] {
    if (failing) {
      object->publisher().subscriberRemove(*b);
      throw std::runtime_error("a failed");
    }
  });
  b = slot("b");
  const auto c = slot("c");
  EXPECT_THROW(publish(), std::runtime_error);
  failing = false;
  called.clear();
  publish();
  EXPECT_EQ(called, (Called{"a", "c"}));
}

TEST_F(PublisherRound, OfASingleSubscriberLetsItsExceptionOut) {
  const auto a = slot("a", [] { throw std::runtime_error("a failed"); });
  EXPECT_THROW(publish(), std::runtime_error);
  EXPECT_THROW(publish(), std::runtime_error);
  EXPECT_EQ(called, (Called{"a", "a"}));
}

TEST_F(PublisherRound, ServesTheOthersThoughTheLastPointerToTheObjectHasGone) {
  bool ended = false;
  object->onEnd = [&] { ended = true; };
  const auto a = slot("a", [&] { object.reset(); });
  const auto b = slot("b", [&] { EXPECT_FALSE(ended); });
  const auto c = slot("c");
  publish();
  EXPECT_EQ(called, (Called{"a", "b", "c"}));
  EXPECT_TRUE(ended);
}

TEST_F(PublisherRound, OfASingleSubscriberEndsWellWhenItDropsTheObject) {
  bool ended = false;
  object->onEnd = [&] { ended = true; };
  const auto a = slot("a", [&] { object.reset(); });
  publish();
  EXPECT_EQ(called, Called{"a"});
  EXPECT_TRUE(ended);
}

TEST_F(PublisherRound, IsPossibleInTheDestructorOfItsObject) {
  const auto a = slot("a");
  const auto b = slot("b");
  object->onEnd = [self = object.get()] { self->publisher().publish(1); };
  object.reset();
  EXPECT_EQ(called, (Called{"a", "b"}));
}

TEST_F(PublisherRound, TakesASubscriberThatRegistersTwiceForOne) {
  const auto a = slot("a");
  object->publisher().subscriberAdd(*a);
  EXPECT_EQ(object->publisher().subscriberCount(), 1U);
  const auto b = slot("b");
  object->publisher().subscriberAdd(*a);
  object->publisher().subscriberAdd(*b);
  EXPECT_EQ(object->publisher().subscriberCount(), 2U);
  publish();
  EXPECT_EQ(called, (Called{"a", "b"}));
}

TEST_F(PublisherRound, IsNotTouchedByTheRemovalOfAStranger) {
  Slot stranger([] {});
  object->publisher().subscriberRemove(stranger);
  const auto a = slot("a");
  object->publisher().subscriberRemove(stranger);
  const auto b = slot("b");
  object->publisher().subscriberRemove(stranger);
  publish();
  EXPECT_EQ(called, (Called{"a", "b"}));
}

TEST(Publisher, ThatIsNullDoesNothing) {
  const Publisher null;
  Slot slot([] { FAIL() << "called"; });
  EXPECT_FALSE(null);
  EXPECT_EQ(null.owner(), nullptr);
  null.subscriberAdd(slot);
  null.publish(1);
  EXPECT_EQ(null.subscriberCount(), 0U);
  EXPECT_TRUE(null.subscribers().empty());
  null.subscriberRemove(slot);
}

}  // namespace
}  // namespace Brix
