#include <gtest/gtest.h>

#include <limits>

#include "contract/Contract.h"
#include "support/TraceCapture.h"

namespace Contract {
namespace {

template <class Sm>
class NotificationSwitch : public MachineTest<Sm> {};
TYPED_TEST_SUITE(NotificationSwitch, AllMachines, MachineNames);

TYPED_TEST(NotificationSwitch, OffTakesTheWholeSubtreeOffItsInputs) {
  const auto sm = this->make();
  EXPECT_GT(subscribersBelow(*TestFixture::M::top(this->world)), 0U);
  sm->hasNotificationActiveIs(false);
  EXPECT_FALSE(sm->hasNotificationActive());
  EXPECT_EQ(this->registered(), this->each('0'));
  EXPECT_EQ(subscribersBelow(*TestFixture::M::top(this->world)), 0U);
}

TYPED_TEST(NotificationSwitch, OffIsHeardNothingAndOnReplaysNothing) {
  const auto sm = this->make();
  sm->hasNotificationActiveIs(false);
  this->add(0);
  EXPECT_FALSE(this->mirrored(0));
  sm->hasNotificationActiveIs(true);
  EXPECT_FALSE(this->mirrored(0));
  this->add(1);
  EXPECT_TRUE(this->mirrored(1));
  EXPECT_FALSE(this->mirrored(0));
}

TYPED_TEST(NotificationSwitch, OnPutsTheWholeSubtreeBack) {
  const auto sm = this->make();
  const std::size_t before = subscribersBelow(*TestFixture::M::top(this->world));
  sm->hasNotificationActiveIs(false);
  sm->hasNotificationActiveIs(true);
  EXPECT_EQ(this->registered(), this->each('1'));
  EXPECT_EQ(subscribersBelow(*TestFixture::M::top(this->world)), before);
}

TYPED_TEST(NotificationSwitch, MayBeSetTwice) {
  const auto sm = this->make();
  sm->hasNotificationActiveIs(true);
  EXPECT_EQ(this->registered(), this->each('1'));
  sm->hasNotificationActiveIs(false);
  sm->hasNotificationActiveIs(false);
  EXPECT_EQ(this->registered(), this->each('0'));
  sm->hasNotificationActiveIs(true);
  sm->hasNotificationActiveIs(true);
  EXPECT_EQ(this->registered(), this->each('1'));
}

TYPED_TEST(NotificationSwitch, ThatEqualsAlreadyDoesNotReachTheChildren) {
  const auto sm = this->make();
  for (const auto& child : TestFixture::M::children(*sm)) {
    child->hasNotificationActiveIs(false);
  }
  sm->hasNotificationActiveIs(true);
  for (const auto& child : TestFixture::M::children(*sm)) {
    EXPECT_FALSE(child->hasNotificationActive());
  }
  EXPECT_EQ(subscribersBelow(*TestFixture::M::top(this->world)), 1U);
  sm->hasNotificationActiveIs(false);
  sm->hasNotificationActiveIs(true);
  for (const auto& child : TestFixture::M::children(*sm)) {
    EXPECT_TRUE(child->hasNotificationActive());
  }
}

TYPED_TEST(NotificationSwitch, OffLeavesDirectCallsOfHandlersWorking) {
  const auto sm = this->make();
  sm->hasNotificationActiveIs(false);
  this->add(0);
  TestFixture::M::walk(*sm);
  EXPECT_TRUE(this->mirrored(0));
}

/// A child that is made while its parent is off is on all the same: creators always switch on.
TYPED_TEST(NotificationSwitch, OffDoesNotKeepNewChildrenOff) {
  const auto sm = this->make();
  sm->hasNotificationActiveIs(false);
  this->add(0);
  TestFixture::M::walk(*sm);
  if constexpr (HasChildren<TypeParam> && !std::is_same_v<TypeParam, PolicyTranslatePerOriginSm>) {
    std::size_t on = 0;
    for (const auto& child : TestFixture::M::children(*sm)) {
      on += child->hasNotificationActive() ? 1 : 0;
    }
    EXPECT_EQ(on, 1U);
  } else {
    EXPECT_EQ(subscribersBelow(*TestFixture::M::top(this->world)), 0U);
  }
}

template <class Sm>
class MarkForDeletion : public MachineTest<Sm> {};
TYPED_TEST_SUITE(MarkForDeletion, AllMachines, MachineNames);

TYPED_TEST(MarkForDeletion, MakesItIgnoreEveryNotification) {
  const auto sm = this->make();
  sm->kelDoZombieReactors(true);
  EXPECT_TRUE(sm->kelMarkedForDeletion());
  EXPECT_EQ(this->registered(), this->each('1'));
  this->add(0);
  EXPECT_FALSE(this->mirrored(0));
}

TYPED_TEST(MarkForDeletion, MakesItIgnoreEveryIdThereCanBe) {
  const auto sm = this->make();
  sm->kelDoZombieReactors(true);
  const TestSupport::TraceCapture trace;
  for (const Brix::Publisher& input : TestFixture::M::inputs(this->world)) {
    for (int id = std::numeric_limits<Kel::AttrId>::min();
         id <= std::numeric_limits<Kel::AttrId>::max(); ++id) {
      input.publish(static_cast<Kel::AttrId>(id));
    }
  }
  EXPECT_EQ(trace.lines().size(), 0U);
}

TYPED_TEST(MarkForDeletion, CanBeTakenBackAndReplaysNothing) {
  const auto sm = this->make();
  sm->kelDoZombieReactors(true);
  sm->kelDoZombieReactors(true);
  this->add(0);
  sm->kelDoZombieReactors(false);
  EXPECT_FALSE(sm->kelMarkedForDeletion());
  EXPECT_FALSE(this->mirrored(0));
  this->add(1);
  EXPECT_TRUE(this->mirrored(1));
}

TYPED_TEST(MarkForDeletion, DoesNotReachTheChildren) {
  const auto sm = this->make();
  sm->kelDoZombieReactors(true);
  for (const auto& child : TestFixture::M::children(*sm)) {
    EXPECT_FALSE(child->kelMarkedForDeletion());
  }
  if constexpr (HasChildren<TypeParam>) {
    Machine<typename Machine<TypeParam>::Child>::add(this->world, 0);
    EXPECT_TRUE((Machine<typename Machine<TypeParam>::Child>::mirrored(this->world, 0)));
  }
}

TYPED_TEST(MarkForDeletion, LeavesDirectCallsOfHandlersWorking) {
  const auto sm = this->make();
  sm->kelDoZombieReactors(true);
  this->add(0);
  TestFixture::M::walk(*sm);
  EXPECT_TRUE(this->mirrored(0));
}

TYPED_TEST(MarkForDeletion, DropsWhatWasPostponedBeforeItCame) {
  const auto sm = this->make();
  Watch watch(this->world, [&](int number) {
    if (number == 1) {
      this->add(1);
      sm->kelDoZombieReactors(true);
    }
  });
  this->add(0);
  EXPECT_TRUE(this->mirrored(0));
  EXPECT_FALSE(this->mirrored(1));
}

}  // namespace
}  // namespace Contract
