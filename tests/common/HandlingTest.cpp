#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/HandlerTimes.h"
#include "common/Handling.h"
#include "common/IdleMachine.h"
#include "support/RingCapture.h"
#include "support/TraceCapture.h"

namespace VelaPolicyMonitor {
namespace {

using Lines = std::vector<std::string>;

constexpr TraceScope kTrace{"void Space::Class::", " return"};

class HandlingTest : public testing::Test {
 protected:
  /// One handler with a line of each kind.
  template <class... Part>
  void run(const Part&... part) {
    const Handling run{*machine, kTrace, "handleX(int)", part...};
    run.enter(" x: ", 5);
    run.act(" add ", 5);
    run.decide(3, " odd ", 5);
    run.leave();
  }

  const Brix::Ptr<CommonTests::IdleMachine> machine{new CommonTests::IdleMachine, Brix::adopt};
};

TEST_F(HandlingTest, WritesEachLineAtItsLevel) {
  TestSupport::TraceCapture trace;
  run();
  EXPECT_EQ(trace.take(), (Lines{"8 void Space::Class::handleX(int) x: 5",
                                 "6 void Space::Class::handleX(int) add 5",
                                 "3 void Space::Class::handleX(int) odd 5",
                                 "7 void Space::Class::handleX(int) return"}));
}

TEST_F(HandlingTest, WritesALineThoughItsLevelIsTheOnlyOneThatIsOn) {
  const auto atLevel = [&](const char* level) {
    TestSupport::TraceCapture trace(level);
    run();
    return trace.take();
  };
  EXPECT_EQ(atLevel("8"), Lines{"8 void Space::Class::handleX(int) x: 5"});
  EXPECT_EQ(atLevel("7"), Lines{"7 void Space::Class::handleX(int) return"});
  EXPECT_EQ(atLevel("6"), Lines{"6 void Space::Class::handleX(int) add 5"});
  EXPECT_EQ(atLevel("3"), Lines{"3 void Space::Class::handleX(int) odd 5"});
  EXPECT_EQ(atLevel("0-2"), Lines{});
}

TEST_F(HandlingTest, ItsLinesBelongToWhereTheMachineStandsAndToTheKeyOfTheHandler) {
  const auto places = [&](const auto&... part) {
    TestSupport::RingCapture ring;
    run(part...);
    std::vector<Pario::Place> all;
    EXPECT_TRUE(
        Lumo::forEachRecord(ring.ring().memory(), ring.ring().segmentSize(), Lumo::siteOf,
                            [&](const Lumo::Record& record) { all.push_back(record.subject); }));
    return all;
  };
  EXPECT_EQ(places(), std::vector<Pario::Place>(4, 0));
  machine->place = TracePlace().with(OnDevice{"fw1"});  // 726333, as TracePlaceTest has it
  EXPECT_EQ(places(), std::vector<Pario::Place>(4, 726333));
  EXPECT_EQ(places(OnVrf{"red"}), std::vector<Pario::Place>(4, 726333 + 1647959867392));
}

TEST_F(HandlingTest, IsNotMeasuredWhileOnlyTheTracesListen) {
  HandlerTimes::forget();
  const TestSupport::TraceCapture trace;
  run();
  EXPECT_TRUE(HandlerTimes::all().empty());
}

TEST_F(HandlingTest, IsMeasuredUnderItsClassAndFormWhileThatIsOn) {
  HandlerTimes::forget();
  Pario::measuringIs(true);
  run();
  run();
  Pario::measuringIs(false);
  const auto all = HandlerTimes::all();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all[0].className, "Space::Class");
  EXPECT_EQ(all[0].form, "handleX(int)");
  EXPECT_EQ(all[0].calls, 2U);
}

}  // namespace
}  // namespace VelaPolicyMonitor
