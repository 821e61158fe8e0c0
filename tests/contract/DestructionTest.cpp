#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "contract/Contract.h"
#include "support/TraceCapture.h"

namespace Contract {
namespace {

template <class Sm>
class Destruction : public MachineTest<Sm> {
 protected:
  /// Changes of all kinds on the machine's level, one after another.
  void changes() {
    this->add(0);
    this->remove(0);
    this->add(1);
    this->add(0);
    this->remove(1);
  }
  /// Whether somebody other than the test observes the inputs: rounds of notification over one
  /// subscriber and over several are different code.
  void crowd() {
    for (const Brix::Publisher& input : TestFixture::M::inputs(this->world)) {
      passers_.push_back(std::make_unique<Passer>());
      input.subscriberAdd(*passers_.back());
      publishers_.push_back(input);
    }
  }
  ~Destruction() override {
    for (std::size_t i = 0; i != passers_.size(); ++i) {
      publishers_[i].subscriberRemove(*passers_[i]);
    }
  }
  void expectNothingLeft(int where) {
    EXPECT_EQ(subscribersBelow(*TestFixture::M::top(this->world)), passers_.empty() ? 0U : 1U)
        << where;
    EXPECT_EQ(liveMachines().size(), 0U) << where;
  }

 private:
  using TestFixture = MachineTest<Sm>;
  struct Passer : Brix::Subscriber {
    Passer()
        : Subscriber(
              [](const Brix::Publisher&, Subscriber&, Brix::AttrId, const void*, const void*) {}) {}
  };
  std::vector<std::unique_ptr<Passer>> passers_;
  std::vector<Brix::Publisher> publishers_;
};
TYPED_TEST_SUITE(Destruction, AllMachines, MachineNames);

/// Drops the machine at the n-th notification of version 2, for every n.
template <class Make>
void dropAtEveryNotification(World& world, const Make& make, const std::function<void()>& changes,
                             const std::function<void(int)>& check) {
  for (int nth = 1;; ++nth) {
    auto sm = make();
    int count = 0;
    {
      const Watch watch(world, [&](int number) {
        count = number;
        if (number == nth) {
          sm.reset();
        }
      });
      changes();
    }
    const bool dropped = sm == nullptr;
    sm.reset();
    check(nth);
    if (!dropped) {
      EXPECT_GT(nth, 1);
      EXPECT_LT(count, nth);
      return;
    }
  }
}

TYPED_TEST(Destruction, MayComeFromInsideEveryHandler) {
  dropAtEveryNotification(
      this->world, [&] { return this->make(); }, [&] { this->changes(); },
      [&](int nth) {
        this->expectNothingLeft(nth);
        this->remove(0);
      });
}

TYPED_TEST(Destruction, MayComeFromInsideEveryHandlerWhileOthersObserveTheInputs) {
  this->crowd();
  dropAtEveryNotification(
      this->world, [&] { return this->make(); }, [&] { this->changes(); },
      [&](int nth) {
        this->expectNothingLeft(nth);
        this->remove(0);
      });
}

TYPED_TEST(Destruction, MayComeFromInsideAWalkThatWasCalledDirectly) {
  for (int nth = 1;; ++nth) {
    World own;
    TestFixture::M::args(own, [](const auto&...) {});
    auto sm = TestFixture::M::args(own, TestFixture::M::make);
    sm->hasNotificationActiveIs(false);
    TestFixture::M::add(own, 0);
    TestFixture::M::add(own, 1);
    const Watch watch(own, [&](int number) {
      if (number == nth) {
        sm.reset();
      }
    });
    TestFixture::M::walk(*sm);
    if (sm != nullptr) {
      break;
    }
    EXPECT_EQ(liveMachines().size(), 0U) << nth;
    EXPECT_EQ(subscribersBelow(*TestFixture::M::top(own)), 0U) << nth;
  }
}

TYPED_TEST(Destruction, HearsNothingOfWhatObserversChangeMeanwhile) {
  auto sm = this->make();
  this->add(0);
  TestSupport::TraceCapture trace;
  bool again = false;
  {
    const Watch watch(this->world, [&](int /*number*/) {
      if (!std::exchange(again, true)) {
        this->add(1);
        this->remove(0);
        again = false;
      }
    });
    sm.reset();
  }
  const std::string scope = std::string("void ") + TestFixture::M::kName + "::";
  for (const auto& line : trace.lines()) {
    EXPECT_TRUE(!line.message.starts_with(scope) || line.message.starts_with(scope + "cleanup()"))
        << line.message;
  }
  EXPECT_EQ(liveMachines().size(), 0U);
  EXPECT_EQ(subscribersBelow(*TestFixture::M::top(this->world)), 0U);
}

TYPED_TEST(Destruction, LeavesAnEmptyVersion2WhereTheMachineCleansUp) {
  auto sm = this->make();
  this->add(0);
  sm.reset();
  if constexpr (requires { sm->cleanup(); } &&
                !std::is_same_v<TypeParam, PolicyTranslatePerOriginSm>) {
    EXPECT_FALSE(this->mirrored(0));
  } else {
    EXPECT_TRUE(this->mirrored(0));
  }
}

/// Where a machine deletes what it wrote, observers are called from its destructor.
TYPED_TEST(Destruction, EndsTheProcessWhenAnObserverOfItsLastActsFails) {
  static_assert(std::is_nothrow_destructible_v<TypeParam>);
  static_assert(noexcept(std::declval<TypeParam&>().hasNotificationActiveIs(true)));
  static_assert(noexcept(std::declval<TypeParam&>().kelDoZombieReactors(true)));
  auto sm = this->make();
  const auto refuse = [&] {
    const Watch watch(this->world, [](int /*number*/) { throw std::runtime_error("too late"); });
    sm.reset();
  };
  if constexpr (requires { sm->cleanup(); }) {
    EXPECT_DEATH(refuse(), "too late");
  } else {
    EXPECT_NO_THROW(refuse());
  }
}

TYPED_TEST(Destruction, WaitsForTheEndOfTheHandlerThatIsOnTheStack) {
  auto sm = this->make();
  const auto* const raw = sm.get();
  bool dropped = false;
  const Watch watch(this->world, [&](int number) {
    if (number == 1) {
      sm.reset();
      dropped = true;
      EXPECT_EQ(raw->refCount(), 0U);
      EXPECT_TRUE(raw->busy());
    }
  });
  this->add(0);
  EXPECT_TRUE(dropped);
  EXPECT_EQ(liveMachines().size(), 0U);
}

TYPED_TEST(Destruction, IsCalledOffByWhoeverTakesTheMachineUpAgainInTime) {
  auto sm = this->make();
  auto* const raw = sm.get();
  const Watch watch(this->world, [&](int number) {
    if (number == 1) {
      sm.reset();
      sm = Ptr<TypeParam>(raw);
    }
  });
  this->add(0);
  EXPECT_EQ(sm->refCount(), 1U);
  this->remove(0);
  EXPECT_FALSE(this->mirrored(0));
}

TYPED_TEST(Destruction, SurvivesTheEndOfItsInputs) {
  // The machine holds what it watches: entities that leave version 1 end with it.
  Ptr<TypeParam> sm;
  {
    World own;
    sm = TestFixture::M::args(own, TestFixture::M::make);
    own.policySrcV1->policySetDelAll();
    own.sdSourceV1->serviceDeviceDelAll();
    own.status->devicePolicyListDelAll();
  }
  EXPECT_GT(liveMachines().size(), 0U);
  sm.reset();
  EXPECT_EQ(liveMachines().size(), 0U);
}

}  // namespace
}  // namespace Contract
