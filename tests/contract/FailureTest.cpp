#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "contract/Contract.h"
#include "framework/Kel/FailingMemory.h"
#include "framework/Kel/NoSpareBlocks.h"

namespace Contract {
namespace {

class Refused : public std::runtime_error {
 public:
  Refused() : std::runtime_error("refused") {}
};

/// Constructors that fail half-way.
template <class Sm>
class FailingConstruction : public MachineTest<Sm> {
 protected:
  FailingConstruction() { this->add(0); }

  /// What has to hold when a constructor has failed.
  void expectNothingLeft(int where) {
    EXPECT_EQ(this->registered(), this->each('0')) << where;
    EXPECT_EQ(subscribersBelow(*TestFixtureOf::top(this->world)), 0U) << where;
    EXPECT_EQ(liveMachines().size(), 0U) << where;
  }
  /// A machine that is built on what the failed one has left comes to the same version 2.
  void expectRecovery(int where) {
    const auto sm = this->make();
    World fresh;
    TestFixtureOf::add(fresh, 0);
    const auto expected = TestFixtureOf::args(fresh, TestFixtureOf::make);
    EXPECT_EQ(dumpV2(this->world), dumpV2(fresh)) << where;
  }

 private:
  using TestFixtureOf = Machine<Sm>;
};
TYPED_TEST_SUITE(FailingConstruction, AllMachines, MachineNames);

TYPED_TEST(FailingConstruction, LeavesNothingBehindWhicheverNotificationOfVersion2Fails) {
  int failures = 0;
  for (int nth = 1;; ++nth) {
    World own;
    TestFixture::M::args(own, [](const auto&...) {});
    TestFixture::M::add(own, 0);
    bool failed = false;
    Ptr<TypeParam> sm;  // goes when nobody refuses any more
    {
      const Watch watch(own, [nth](int number) {
        if (number == nth) {
          throw Refused();
        }
      });
      try {
        sm = TestFixture::M::args(own, TestFixture::M::make);
      } catch (const Refused&) {
        failed = true;
      }
      ASSERT_EQ(failed, watch.count() >= nth);
    }
    sm.reset();
    EXPECT_EQ(subscribersBelow(*TestFixture::M::top(own)), 0U) << nth;
    EXPECT_EQ(liveMachines().size(), 0U) << nth;
    if (!failed) {
      break;
    }
    ++failures;
  }
  EXPECT_GT(failures, 0);
}

TYPED_TEST(FailingConstruction, CanBeMadeGoodByBuildingAnew) {
  for (int nth = 1;; ++nth) {
    bool failed = false;
    Ptr<TypeParam> sm;
    {
      const Watch watch(this->world, [&](int number) {
        if (number == nth) {
          failed = true;
          throw Refused();
        }
      });
      try {
        sm = this->make();
      } catch (const Refused&) {
        EXPECT_TRUE(failed) << nth;
      }
    }
    sm.reset();
    this->expectNothingLeft(nth);
    this->expectRecovery(nth);
    if (!failed) {
      break;
    }
  }
}

TYPED_TEST(FailingConstruction, LeavesNothingBehindWhicheverAllocationFails) {
  for (std::size_t nth = 1;; ++nth) {
    World own;
    TestFixture::M::args(own, [](const auto&...) {});
    TestFixture::M::add(own, 0);
    bool failed = false;
    const NoSpareBlocks spare;
    TestFixture::M::args(own, [&](const auto&... args) {
      const FailingMemory memory(nth);
      try {
        TestFixture::M::make(args...);
      } catch (const std::bad_alloc&) {
        failed = true;
      }
      ASSERT_EQ(failed, FailingMemory::failed()) << nth;
    });
    EXPECT_EQ(subscribersBelow(*TestFixture::M::top(own)), 0U) << nth;
    EXPECT_EQ(liveMachines().size(), 0U) << nth;
    if (!failed) {
      EXPECT_GT(nth, 1U);
      break;
    }
  }
}

TYPED_TEST(FailingConstruction, OfAChildLeavesItsParentWithoutAnEntryAndUsable) {
  if constexpr (HasChildren<TypeParam>) {
    const auto sm = this->make();
    const auto children = TestFixture::M::children(*sm).size();
    sm->hasNotificationActiveIs(false);
    this->add(1);
    sm->hasNotificationActiveIs(true);
    {
      const Watch watch(this->world, [](int number) {
        if (number == 1) {
          throw Refused();
        }
      });
      EXPECT_THROW(TestFixture::M::walk(*sm), Refused);
    }
    EXPECT_LE(TestFixture::M::children(*sm).size(), children + 1);
    for (const auto& child : TestFixture::M::children(*sm)) {
      EXPECT_NE(child, nullptr);
    }
    EXPECT_NO_THROW(TestFixture::M::walk(*sm));
    EXPECT_TRUE(this->mirrored(1));
  } else {
    const auto sm = this->make();
    EXPECT_TRUE(TestFixture::M::children(*sm).empty());
  }
}

}  // namespace
}  // namespace Contract
