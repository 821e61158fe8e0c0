#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <new>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "common/TranslateSm.h"
#include "framework/Kel/FailingMemory.h"

namespace VelaPolicyMonitor {
namespace {

/// A machine without inputs that counts its ends.
class Machine final : public TranslateSm {
 public:
  explicit Machine(int& ends) : ends_(ends) { start(*this); }
  ~Machine() override { retire(); }
  Kel::FwkType fwkType() const noexcept override { return {}; }
  static void handleInitialized() {}

 private:
  friend class TranslateSm;
  static std::tuple<> parts() { return {}; }
  void tearDown() noexcept override { ++ends_; }

  int& ends_;
};

class LifeOfAMachine : public ::testing::Test {
 protected:
  /// Keeps a call that notes `number`.
  void postpone(int number) {
    machine->postpone([this, number] { served.push_back(number); });
  }

  int ends = 0;
  std::vector<int> served;
  Brix::Ptr<Machine> machine{new Machine(ends), Brix::adopt};
};

TEST_F(LifeOfAMachine, ServesWhatWasPostponedInTheOrderOfArrivalWhenItIsDone) {
  {
    const Busy outer(*machine);
    postpone(1);
    {
      const Busy inner(*machine);
      postpone(2);
    }
    EXPECT_TRUE(served.empty());
  }
  EXPECT_EQ(served, (std::vector<int>{1, 2}));
  EXPECT_FALSE(machine->busy());
}

TEST_F(LifeOfAMachine, CountsWhatWasPostponedAndTheMostAtOnce) {
  const TranslateSm::Postponed before = TranslateSm::postponed();
  for (int round = 0; round != 2; ++round) {
    const Busy busy(*machine);
    for (int number = 0; number != 100; ++number) {
      postpone(number);
    }
  }
  EXPECT_EQ(TranslateSm::postponed().calls, before.calls + 200);
  EXPECT_EQ(TranslateSm::postponed().atOnce, 100U);
}

const TranslateSm::Postponed kBeforeMain = TranslateSm::postponed();

TEST(PostponedCalls, AreCountedFromNothingOn) {
  EXPECT_EQ(kBeforeMain.calls, 0U);
  EXPECT_EQ(kBeforeMain.atOnce, 0U);
}

TEST_F(LifeOfAMachine, IsCatchingUpOnlyWhileItServesWhatWasPostponed) {
  bool during = false;
  {
    const Busy busy(*machine);
    machine->postpone([&] { during = machine->catchingUp(); });
    EXPECT_FALSE(machine->catchingUp());
  }
  EXPECT_TRUE(during);
  EXPECT_FALSE(machine->catchingUp());
}

TEST_F(LifeOfAMachine, RaisesTheFirstExceptionOfWhatWasPostponedAndServesTheRest) {
  const auto raise = [this](int number) {
    postpone(number);
    machine->postpone([number] { throw std::runtime_error(std::to_string(number)); });
  };
  try {
    const Busy busy(*machine);
    raise(1);
    raise(2);
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "1");
    served.push_back(3);
  }
  EXPECT_EQ(served, (std::vector<int>{1, 2, 3}));
}

TEST_F(LifeOfAMachine, RaisesItsOwnExceptionWhileAnotherMachineIsServedUponOne) {
  const Brix::Ptr<Machine> other(new Machine(ends), Brix::adopt);
  try {
    const Busy busy(*machine);
    machine->postpone([&] {
      served.push_back(1);
      try {
        const Busy inner(*other);
        other->postpone([] { throw std::runtime_error("inner"); });
      } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "inner");
        served.push_back(2);
      }
    });
    throw std::runtime_error("outer");
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "outer");
    served.push_back(3);
  }
  EXPECT_EQ(served, (std::vector<int>{1, 2, 3}));
  const auto raiseLater = [&] {
    const Busy busy(*machine);
    machine->postpone([] { throw std::runtime_error("later"); });
  };
  EXPECT_THROW(raiseLater(), std::runtime_error) << "nothing else is on its way any more";
}

TEST_F(LifeOfAMachine, IsBusyForGoodOnceItHasEnded) {
  EXPECT_FALSE(machine->busy());
  machine->retire();
  EXPECT_TRUE(machine->busy());
}

TEST_F(LifeOfAMachine, EndsOnce) {
  machine->retire();
  EXPECT_EQ(ends, 1);
  EXPECT_TRUE(machine->retired());
  EXPECT_TRUE(machine->busy()) << "nothing is dispatched to it any more";
  machine->retire();
  machine.reset();
  EXPECT_EQ(ends, 1);
}

TEST_F(LifeOfAMachine, DropsWhatWasPostponedWhenItEndsAndTakesNothingAfterwards) {
  {
    const Busy busy(*machine);
    postpone(1);
    machine->retire();
    postpone(2);
  }
  EXPECT_TRUE(served.empty());
}

TEST_F(LifeOfAMachine, LosesACallThatFindsNoMemoryAndNoOther) {
  for (std::size_t nth = 1;; ++nth) {
    served.clear();
    bool failed = false;
    {
      const Busy busy(*machine);
      {
        const FailingMemory memory(nth);
        try {
          postpone(1);
        } catch (const std::bad_alloc&) {
          failed = true;
        }
      }
      EXPECT_EQ(failed, FailingMemory::failed());
      postpone(2);
    }
    EXPECT_EQ(served, failed ? (std::vector<int>{2}) : (std::vector<int>{1, 2})) << nth;
    if (!failed) {
      EXPECT_GT(nth, 1U);
      break;
    }
  }
}

TEST_F(LifeOfAMachine, IsServedNothingOnceNobodyHoldsIt) {
  {
    const Busy busy(*machine);
    postpone(1);
    machine.reset();
    EXPECT_EQ(ends, 0) << "its handler is still on the stack";
  }
  EXPECT_EQ(ends, 1);
  EXPECT_TRUE(served.empty());
}

/// Postpones a call in its first walk, which may fail then. All of this type lie in one place.
struct InOnePlace : TranslateSm {
  InOnePlace(std::string& log, bool failing) : served(log), fails(failing) { start(*this); }
  static std::tuple<> parts() { return {}; }
  void handleInitialized() {
    postpone([&log = served, name = fails ? "failed" : "lives"] { log += name; });
    if (fails) {
      throw std::runtime_error("no machine");
    }
  }
  Kel::FwkType fwkType() const noexcept override { return {}; }
  void tearDown() noexcept override {}
  static void* operator new(std::size_t /*size*/) { return place.data(); }
  static void operator delete(void* /*object*/) {}

  std::string& served;
  bool fails;
  alignas(16) static inline std::array<std::byte, 128> place;
};
static_assert(sizeof(InOnePlace) <= 128);

TEST(TranslateSm, LeavesNoCallToAnotherMachineInItsPlaceWhenItsFirstWalkFails) {
  std::string served;
  EXPECT_THROW(new InOnePlace(served, true), std::runtime_error);
  const Brix::Ptr<InOnePlace> next(new InOnePlace(served, false), Brix::adopt);
  EXPECT_EQ(served, "lives");
}

}  // namespace
}  // namespace VelaPolicyMonitor
