#include <gtest/gtest.h>

#include <functional>
#include <type_traits>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Brix/Counted.h"
#include "Brix/Ptr.h"

namespace Brix {
namespace {

class Base : public Counted {
 public:
  ~Base() override {
    ++ended;
    if (onEnd) {
      onEnd();
    }
  }
  static inline int ended = 0;
  std::function<void()> onEnd;
};
class Derived : public Base {};

template <class T>
Ptr<T> make() {
  return Ptr<T>(new T, adopt);
}

class PtrLaws : public ::testing::Test {
 protected:
  void SetUp() override { Base::ended = 0; }
};

TEST_F(PtrLaws, IsNullByDefault) {
  const Ptr<Base> null;
  EXPECT_FALSE(null);
  EXPECT_EQ(null.get(), nullptr);
  EXPECT_EQ(null, nullptr);
  EXPECT_EQ(null, Ptr<Base>(nullptr));
  EXPECT_EQ(Ptr<Base>(static_cast<Base*>(nullptr)), nullptr);
}

TEST_F(PtrLaws, AdoptingTakesOverTheReferenceOfNew) {
  const Ptr<Base> pointer(new Base, adopt);
  EXPECT_EQ(pointer->refCount(), 1U);
}

TEST_F(PtrLaws, TakingAnObjectAddsAReference) {
  const auto first = make<Base>();
  const Ptr<Base> second(first.get());
  EXPECT_EQ(first->refCount(), 2U);
}

TEST_F(PtrLaws, CopiesShareAndTheLastOneDestroys) {
  auto first = make<Base>();
  auto second = first;
  EXPECT_EQ(first, second);
  EXPECT_EQ(first->refCount(), 2U);
  first.reset();
  EXPECT_EQ(Base::ended, 0);
  second.reset();
  EXPECT_EQ(Base::ended, 1);
}

TEST_F(PtrLaws, MovingLeavesNullBehindAndCountsNothing) {
  auto first = make<Base>();
  const Ptr<Base> second = std::move(first);
  EXPECT_EQ(first, nullptr);  // NOLINT(bugprone-use-after-move): that is what is stated
  EXPECT_EQ(second->refCount(), 1U);
}

TEST_F(PtrLaws, ConvertsToTheBaseAndToConstByCopyAndByMove) {
  auto derived = make<Derived>();
  const Ptr<Base> base = derived;
  const Ptr<const Base> constant = base;
  EXPECT_EQ(derived->refCount(), 3U);
  EXPECT_EQ(base, derived);
  EXPECT_EQ(constant, derived);
  const Ptr<const Counted> moved = std::move(derived);
  EXPECT_EQ(moved->refCount(), 3U);
  static_assert(!std::is_convertible_v<Ptr<Base>, Ptr<Derived>>);
  static_assert(!std::is_convertible_v<Ptr<const Base>, Ptr<Base>>);
}

TEST_F(PtrLaws, AssignmentStoresTheNewPointerBeforeTheOldObjectEnds) {
  auto pointer = make<Base>();
  const auto next = make<Base>();
  const Base* seen = nullptr;
  pointer->onEnd = [&] { seen = pointer.get(); };
  pointer = next;
  EXPECT_EQ(seen, next.get());
}

TEST_F(PtrLaws, MoveAssignmentStoresTheNewPointerBeforeTheOldObjectEnds) {
  auto pointer = make<Base>();
  auto next = make<Base>();
  const Base* const expected = next.get();
  const Base* seen = nullptr;
  pointer->onEnd = [&] { seen = pointer.get(); };
  pointer = std::move(next);
  EXPECT_EQ(seen, expected);
}

TEST_F(PtrLaws, ResetIsNullBeforeTheObjectEnds) {
  auto pointer = make<Base>();
  bool null = false;
  pointer->onEnd = [&] { null = !pointer; };
  pointer.reset();
  EXPECT_TRUE(null);
}

TEST_F(PtrLaws, TheEndOfAnObjectMayAssignToThePointerThatHeldIt) {
  auto pointer = make<Base>();
  const auto last = make<Base>();
  pointer->onEnd = [&] { pointer = last; };
  pointer = make<Base>();
  EXPECT_EQ(pointer, last);
  EXPECT_EQ(Base::ended, 2);
  EXPECT_EQ(last->refCount(), 2U);
}

TEST_F(PtrLaws, AssigningToItselfChangesNothing) {
  auto pointer = make<Base>();
  auto& same = pointer;
  pointer = same;
  EXPECT_EQ(pointer->refCount(), 1U);
  pointer = std::move(same);
  EXPECT_EQ(pointer->refCount(), 1U);
  EXPECT_EQ(Base::ended, 0);
}

TEST_F(PtrLaws, ReleaseHandsTheReferenceToTheCaller) {
  auto pointer = make<Base>();
  Base* const held = pointer.release();
  EXPECT_EQ(pointer, nullptr);
  EXPECT_EQ(held->refCount(), 1U);
  const Ptr<Base> again(held, adopt);
  EXPECT_EQ(Base::ended, 0);
}

TEST_F(PtrLaws, ComparesAndHashesByIdentity) {
  const auto first = make<Base>();
  const auto second = make<Base>();
  EXPECT_NE(first, second);
  EXPECT_EQ(first <=> first, std::strong_ordering::equal);
  EXPECT_EQ(first < second, std::less<>{}(first.get(), second.get()));
  const std::unordered_set<Ptr<Base>> set{first, second, first};
  EXPECT_EQ(set.size(), 2U);
}

TEST_F(PtrLaws, SwapCountsNothing) {
  auto first = make<Base>();
  auto second = make<Base>();
  const Base* const was = first.get();
  first.swap(second);
  EXPECT_EQ(second.get(), was);
  EXPECT_EQ(first->refCount(), 1U);
  EXPECT_EQ(second->refCount(), 1U);
}

TEST_F(PtrLaws, AVectorOfPointersHoldsEachObjectOnce) {
  {
    std::vector<Ptr<Base>> many;
    for (int i = 0; i != 100; ++i) {
      many.push_back(make<Base>());
    }
    for (const auto& pointer : many) {
      EXPECT_EQ(pointer->refCount(), 1U);
    }
  }
  EXPECT_EQ(Base::ended, 100);
}

}  // namespace
}  // namespace Brix
