#include <gtest/gtest.h>

#include <new>
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

}  // namespace
}  // namespace VelaPolicyMonitor
