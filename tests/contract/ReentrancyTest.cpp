#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "contract/Contract.h"

namespace Contract {
namespace {

/// Observers of version 2 that write version 1 from inside a handler of the machine.
template <class Sm>
class BusyMachine : public MachineTest<Sm> {
 protected:
  /// Runs `act` at the first notification of version 2 that comes while this lives.
  Watch atFirst(std::function<void()> act) {
    return Watch(this->world, [act = std::move(act)](int number) {
      if (number == 1) {
        act();
      }
    });
  }
  /// Makes change `n` without the machine's knowledge, so that a walk finds it.
  void addSilently(Sm& sm, int n) {
    sm.hasNotificationActiveIs(false);
    this->add(n);
    sm.hasNotificationActiveIs(true);
  }
};
TYPED_TEST_SUITE(BusyMachine, AllMachines, MachineNames);

TYPED_TEST(BusyMachine, IsServedWhatCameMeanwhileWhenItsHandlerIsDone) {
  const auto sm = this->make();
  bool acted = false;
  const auto watch = this->atFirst([&] {
    EXPECT_TRUE(sm->busy());
    this->add(1);
    EXPECT_FALSE(this->mirrored(1));
    acted = true;
  });
  this->add(0);
  EXPECT_TRUE(acted);
  EXPECT_TRUE(this->mirrored(0));
  EXPECT_TRUE(this->mirrored(1));
  EXPECT_FALSE(sm->busy());
}

TYPED_TEST(BusyMachine, IsServedWithACopyOfTheKeyThoughItsEntryHasGone) {
  const auto sm = this->make();
  const auto watch = this->atFirst([&] {
    this->add(1);
    this->remove(1);
  });
  this->add(0);
  EXPECT_TRUE(this->mirrored(0));
  EXPECT_FALSE(this->mirrored(1));
}

TYPED_TEST(BusyMachine, FindsTheStateOfTheMomentItIsServedAt) {
  const auto sm = this->make();
  const auto watch = this->atFirst([&] { this->remove(0); });
  this->add(0);
  EXPECT_FALSE(this->mirrored(0));
}

TYPED_TEST(BusyMachine, HasOneChildForAKeyThatWasTakenAwayAndGivenBackWhileItWasBuilt) {
  const auto sm = this->make();
  const auto watch = this->atFirst([&] {
    this->remove(0);
    this->add(0);
  });
  this->add(0);
  EXPECT_TRUE(this->mirrored(0));
  World fresh;
  TestFixture::M::add(fresh, 0);
  const auto expected = TestFixture::M::args(fresh, TestFixture::M::make);
  EXPECT_EQ(dumpV2(this->world), dumpV2(fresh));
  EXPECT_EQ(TestFixture::M::children(*sm).size(), TestFixture::M::children(*expected).size());
}

TYPED_TEST(BusyMachine, IsServedInTheOrderOfArrival) {
  if constexpr (!std::is_same_v<TypeParam, PolicyTranslatePerOriginSm>) {
    const auto sm = this->make();
    std::vector<int> order;
    std::vector<int> seen;
    const Watch watch(this->world, [&](int number) {
      if (number == 1) {
        for (const int n : {3, 1, 2}) {
          this->add(n);
        }
      }
      for (const int n : {1, 2, 3}) {
        if (this->mirrored(n) && std::find(seen.begin(), seen.end(), n) == seen.end()) {
          seen.push_back(n);
        }
      }
    });
    this->add(0);
    EXPECT_EQ(seen, (std::vector<int>{3, 1, 2}));
  } else {
    const auto sm = this->make();
    std::string order;
    const Watch watch(this->world, [&](int number) {
      const auto v2 = this->world.originV2();
      if (number == 1) {
        this->world.originV1()->logIs(false);
        this->world.originV1()->tagsIs("later");
      }
      order += v2->logEnabled() ? "-" : "log";
      order += v2->tags().empty() ? " " : "+tags ";
    });
    this->add(0);
    EXPECT_EQ(order, "- log log+tags ");
  }
}

TYPED_TEST(BusyMachine, HasOneChildForAKeyThoughAnObserverCallsItsWalkWhileThatIsBuilt) {
  const auto sm = this->make();
  const auto watch = this->atFirst([&] { TestFixture::M::walk(*sm); });
  this->add(0);
  EXPECT_TRUE(this->mirrored(0));
  World fresh;
  TestFixture::M::add(fresh, 0);
  const auto expected = TestFixture::M::args(fresh, TestFixture::M::make);
  EXPECT_EQ(dumpV2(this->world), dumpV2(fresh));
  EXPECT_EQ(TestFixture::M::children(*sm).size(), TestFixture::M::children(*expected).size());
}

TYPED_TEST(BusyMachine, MakesOtherChildrenThanTheOneThatIsBeingBuilt) {
  World fresh;
  TestFixture::M::add(fresh, 0);
  TestFixture::M::add(fresh, 1);
  const auto expected = TestFixture::M::args(fresh, TestFixture::M::make);
  for (int nth = 1, count = nth; nth <= count; ++nth) {  // whichever notification it comes from
    World own;
    const auto sm = TestFixture::M::args(own, TestFixture::M::make);
    sm->hasNotificationActiveIs(false);
    TestFixture::M::add(own, 0);
    TestFixture::M::add(own, 1);
    sm->hasNotificationActiveIs(true);
    const Watch watch(own, [&](int number) {
      if (number == nth) {
        TestFixture::M::walk(*sm);
      }
    });
    TestFixture::M::walk(*sm);
    count = watch.count();
    EXPECT_EQ(dumpV2(own), dumpV2(fresh)) << nth;
    EXPECT_EQ(TestFixture::M::children(*sm).size(), TestFixture::M::children(*expected).size());
  }
}

TYPED_TEST(BusyMachine, MirrorsWhatIsChangedWhileItsConstructorRuns) {
  const auto watch = this->atFirst([&] {
    this->add(0);
    this->add(1);
    this->remove(1);
  });
  const auto sm = this->make();
  EXPECT_EQ(watch.count() > 0, true);
  EXPECT_TRUE(this->mirrored(0));
  EXPECT_FALSE(this->mirrored(1));
  EXPECT_FALSE(sm->busy());
  World fresh;
  TestFixture::M::add(fresh, 0);
  const auto expected = TestFixture::M::args(fresh, TestFixture::M::make);
  EXPECT_EQ(dumpV2(this->world), dumpV2(fresh));
  EXPECT_EQ(TestFixture::M::children(*sm).size(), TestFixture::M::children(*expected).size());
}

TYPED_TEST(BusyMachine, IsServedAfterAnExceptionOfItsHandlerWhichGoesOn) {
  const auto sm = this->make();
  this->addSilently(*sm, 0);
  const auto watch = this->atFirst([&] {
    this->add(1);
    throw std::runtime_error("the first");
  });
  try {
    TestFixture::M::walk(*sm);
    FAIL() << "nothing was raised";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "the first");
  }
  EXPECT_TRUE(this->mirrored(1));
  EXPECT_FALSE(sm->busy());
}

TYPED_TEST(BusyMachine, RaisesTheFirstOfSeveralExceptionsAndServesTheRest) {
  const auto sm = this->make();
  this->addSilently(*sm, 0);
  int raised = 0;
  const Watch watch(this->world, [&](int number) {
    if (number == 1) {
      this->add(1);
      this->remove(1);
      this->add(1);
    }
    throw std::runtime_error(std::to_string(++raised));
  });
  if constexpr (TypeParam::kDispatchIsNoexcept) {
    EXPECT_DEATH(TestFixture::M::walk(*sm), "2");  // the first that was postponed
    return;
  }
  try {
    TestFixture::M::walk(*sm);
    FAIL() << "nothing was raised";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "1");
  }
  EXPECT_GT(raised, 1);
  EXPECT_TRUE(this->mirrored(1));
  EXPECT_FALSE(sm->busy());
}

/// A dispatch that has had to wait is a dispatch all the same: see below.
TYPED_TEST(BusyMachine, RaisesTheExceptionOfWhatWasPostponedOrEndsAsItsTreeDecides) {
  const auto sm = this->make();
  this->addSilently(*sm, 0);
  bool armed = false;
  const Watch watch(this->world, [&](int number) {
    if (number == 1) {
      this->add(1);
    } else if (!armed && this->mirrored(1)) {
      armed = true;
      throw std::runtime_error("postponed");
    }
  });
  if constexpr (TypeParam::kDispatchIsNoexcept) {
    EXPECT_DEATH(TestFixture::M::walk(*sm), "postponed");
  } else {
    EXPECT_THROW(TestFixture::M::walk(*sm), std::runtime_error);
    EXPECT_TRUE(this->mirrored(0));
    EXPECT_FALSE(sm->busy());
  }
}

TYPED_TEST(BusyMachine, WorksAsBeforeAfterAnException) {
  const auto sm = this->make();
  this->addSilently(*sm, 0);
  {
    const auto watch = this->atFirst([] { throw std::runtime_error("once"); });
    EXPECT_THROW(TestFixture::M::walk(*sm), std::runtime_error);
  }
  this->add(1);
  EXPECT_TRUE(this->mirrored(1));
}

/// The policy tree lets the exceptions of its handlers out to the writer of version 1; those of the
/// service-device tree end the process.
TYPED_TEST(BusyMachine, LetsExceptionsOutOfADispatchOrEndsAsItsTreeDecides) {
  const auto sm = this->make();
  const auto watch = this->atFirst([] { throw std::runtime_error("from version 2"); });
  if constexpr (TypeParam::kDispatchIsNoexcept) {
    EXPECT_DEATH(this->add(0), "from version 2");
  } else {
    EXPECT_THROW(this->add(0), std::runtime_error);
    this->remove(0);
    this->add(0);
    EXPECT_TRUE(this->mirrored(0));
  }
}

}  // namespace
}  // namespace Contract
