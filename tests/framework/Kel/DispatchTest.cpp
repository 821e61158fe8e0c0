#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "Kel/Dispatch.h"
#include "framework/Kel/Model.h"

namespace Kel {
namespace {

using Model::Part;
using Model::Rank;
using Model::Whole;
using Calls = std::vector<std::string>;

/// The least that a dispatch table asks of a machine.
class Machine {
 public:
  void handleNumber(std::uint32_t number) { calls.push_back("number " + std::to_string(number)); }
  void handleNumber() { calls.emplace_back("all numbers"); }
  void handleLabel(const String& of) { calls.push_back("label " + std::string(of.view())); }
  void handleLabel() { calls.emplace_back("all labels"); }
  void handlePart(const String& name) {
    if (before) {
      before();
    }
    calls.push_back("part " + std::string(name.view()));
  }
  void adaptStep(const Rank& rank) { handleNumber(rank.value); }
  void handleLeaf() { calls.emplace_back("leaf"); }

  bool kelMarkedForDeletion() const { return marked; }
  bool busy() const { return isBusy; }
  void postpone(std::function<void()> call) { postponed.push_back(std::move(call)); }

  Calls calls;
  std::function<void()> before;
  std::vector<std::function<void()>> postponed;
  bool marked = false;
  bool isBusy = false;
};

constexpr Dispatch<Machine> kTable{
    On<Machine>::key<Whole::numberAttr, &Machine::handleNumber>,
    On<Machine>::key<Whole::partAttr, &Machine::handlePart>,
    On<Machine>::adapted<Whole::stepAttr, &Machine::adaptStep>,
    On<Machine>::change<Whole::leafAttr, &Machine::handleLeaf>,
};
constexpr Dispatch<Machine> kSingle{
    On<Machine>::key<Whole::labelAttr, &Machine::handleLabel>,
};
constexpr AttrId kLeaf = Whole::leafAttr.id;
constexpr AttrId kNumber = Whole::numberAttr.id;
constexpr AttrId kPart = Whole::partAttr.id;
constexpr AttrId kStep = Whole::stepAttr.id;

class DispatchTable : public ::testing::Test {
 protected:
  Machine machine;
  const std::uint32_t seven = 7;
};

TEST_F(DispatchTable, RunsTheHandlerOfTheAttributeWithItsKey) {
  const String name("p");
  const Rank rank{3};
  kTable(machine, kNumber, &seven);
  kTable(machine, kPart, &name);
  kTable(machine, kStep, &rank);
  kTable(machine, kLeaf, nullptr);
  kSingle(machine, Whole::labelAttr.id, &name);
  EXPECT_EQ(machine.calls, (Calls{"number 7", "part p", "number 3", "leaf", "label p"}));
}

TEST_F(DispatchTable, IgnoresAllOtherAttributes) {
  const String name("p");
  for (int id = -32768; id != 32768; ++id) {
    const auto attribute = static_cast<AttrId>(id);
    if (attribute != kLeaf && attribute != kNumber && attribute != kPart && attribute != kStep) {
      kTable(machine, attribute, &name);
      ASSERT_FALSE(kTable.reactsTo(attribute)) << id;
    }
  }
  EXPECT_EQ(machine.calls, Calls{});
  EXPECT_TRUE(machine.postponed.empty());
}

TEST_F(DispatchTable, TellsWhatItReactsTo) {
  for (const AttrId id : {kLeaf, kNumber, kPart, kStep}) {
    EXPECT_TRUE(kTable.reactsTo(id)) << id;
  }
  EXPECT_TRUE(kSingle.reactsTo(Whole::labelAttr.id));
  EXPECT_FALSE(kSingle.reactsTo(kNumber));
}

TEST_F(DispatchTable, DoesNothingForAMachineThatIsMarkedForDeletion) {
  machine.marked = true;
  kTable(machine, kNumber, &seven);
  machine.isBusy = true;
  kTable(machine, kNumber, &seven);
  EXPECT_EQ(machine.calls, Calls{});
  EXPECT_TRUE(machine.postponed.empty());
}

TEST_F(DispatchTable, PostponesForABusyMachineWithACopyOfTheKey) {
  machine.isBusy = true;
  {
    const String name("the text of a key that ends before it is served");
    const std::uint32_t number = 9;
    kTable(machine, kPart, &name);
    kTable(machine, kNumber, &number);
    kTable(machine, kLeaf, nullptr);
  }
  EXPECT_EQ(machine.calls, Calls{});
  ASSERT_EQ(machine.postponed.size(), 3U);
  for (const auto& call : machine.postponed) {
    call();
  }
  EXPECT_EQ(machine.calls,
            (Calls{"part the text of a key that ends before it is served", "number 9", "leaf"}));
}

TEST_F(DispatchTable, GivesTheHandlerAKeyThatSurvivesTheEntryItCameFrom) {
  const auto whole = Whole::WholeIs();
  const auto* const part = whole->partIs("a key that lies in the entry").get();
  machine.before = [&] { whole->partDelAll(); };
  kTable(machine, kPart, &part->name());
  EXPECT_EQ(machine.calls, Calls{"part a key that lies in the entry"});
}

}  // namespace
}  // namespace Kel
