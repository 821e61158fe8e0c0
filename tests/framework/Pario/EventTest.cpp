#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "Kel/System.h"
#include "Pario/Event.h"
#include "Pario/Write.h"
#include "support/RingCapture.h"
#include "support/TraceCapture.h"

namespace {

constexpr Pario::Source kSource{"VelaPolicyMonitor", "void A::", "a.cpp"};

/// A clock that goes on by one second at every question and counts the questions.
class Event : public testing::Test {
 protected:
  Event() {
    Kel::System::clockIs([this] {
      ++questions;
      return now += 1;
    });
  }
  ~Event() override { Kel::System::clockIs({}); }

  static void trace() {
    if (Pario::on(8)) {
      Pario::write({kSource, "f()", {8, 1}}, "x");
    }
  }

  int questions = 0;
  Kel::Seconds now = 1000;
};

std::vector<std::uint64_t> stampsIn(const Lumo::TraceFile& ring) {
  std::vector<std::uint64_t> stamps;
  EXPECT_TRUE(
      Lumo::forEachRecord(ring.memory(), ring.segmentSize(), Lumo::siteOf,
                          [&](const Lumo::Record& record) { stamps.push_back(record.stamp); }));
  return stamps;
}

constexpr std::uint64_t kSecond = 1'000'000'000;

TEST_F(Event, AsksNoClockWhenNobodyListens) {
  const Pario::Event event;
  trace();
  EXPECT_EQ(questions, 0);
}

TEST_F(Event, OnlyTheOutermostOneAsksTheClock) {
  TestSupport::RingCapture ring;
  {
    const Pario::Event outer;
    EXPECT_EQ(questions, 1) << "before the work begins";
    trace();
    {
      const Pario::Event inner;
      trace();
    }
    trace();
  }
  EXPECT_EQ(questions, 1);
  EXPECT_EQ(stampsIn(ring.ring()),
            (std::vector<std::uint64_t>{1001 * kSecond, 1001 * kSecond + 1, 1001 * kSecond + 2}));
  {
    const Pario::Event next;
    trace();
  }
  EXPECT_EQ(questions, 2);
  EXPECT_EQ(stampsIn(ring.ring()).back(), 1002 * kSecond);
}

TEST_F(Event, ARecordOutsideOfAnyEventAsksForItself) {
  TestSupport::RingCapture ring;
  trace();
  trace();
  EXPECT_EQ(questions, 2);
  EXPECT_EQ(stampsIn(ring.ring()), (std::vector<std::uint64_t>{1001 * kSecond, 1002 * kSecond}));
}

TEST_F(Event, BothTracesPrintTheSameTimeInsideAndOutsideOfAnEvent) {
  TestSupport::RingCapture ring;
  TestSupport::TraceCapture text;
  trace();
  {
    const Pario::Event event;
    trace();
    trace();
  }
  trace();
  const auto lines = text.takeText();
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_EQ(lines[0].substr(0, 12), "1001.000000 ");
  EXPECT_EQ(lines[1].substr(0, 12), "1002.000000 ");
  EXPECT_EQ(lines[2].substr(0, 12), "1002.000000 ");
  EXPECT_EQ(lines[3].substr(0, 12), "1003.000000 ");
  EXPECT_EQ(ring.takeText(), lines);
}

TEST_F(Event, OneThatBeganUnheardTakesNoTimeAndAnInnerOneDoes) {
  const Pario::Event unheard;
  TestSupport::RingCapture ring;
  {
    const Pario::Event inner;
    trace();
    trace();
  }
  EXPECT_EQ(questions, 1);
  EXPECT_EQ(stampsIn(ring.ring()).size(), 2U);
}

TEST_F(Event, OneThatEndsUnheardLeavesNothingOpen) {
  {
    TestSupport::RingCapture ring;
    const Pario::Event heard;
    Lumo::defaultHandleIs(nullptr);
  }
  TestSupport::RingCapture ring;
  trace();
  trace();
  EXPECT_EQ(questions, 3) << "one for the event, one for each record after it";
}

TEST_F(Event, TheEventOfAnotherThreadIsNotMine) {
  TestSupport::RingCapture ring;
  const Pario::Event mine;
  std::thread([] { trace(); }).join();
  EXPECT_EQ(questions, 2);
}

TEST_F(Event, AClockThatGoesBackGivesRisingStampsAndItsOwnPrintedTime) {
  TestSupport::RingCapture ring;
  TestSupport::TraceCapture text;
  trace();
  now = 10;
  trace();
  now = -5;
  trace();
  const auto lines = text.takeText();
  EXPECT_EQ(lines[2].substr(0, 10), "-4.000000 ");
  EXPECT_EQ(ring.takeText(), lines);
  EXPECT_EQ(stampsIn(ring.ring()),
            (std::vector<std::uint64_t>{1001 * kSecond, 1001 * kSecond + 1, 1001 * kSecond + 2}));
}

TEST_F(Event, ATimeBeyondWhatAStampHoldsDoesNoHarm) {
  TestSupport::RingCapture ring;
  TestSupport::TraceCapture text;
  now = 1e300;
  trace();
  now = 5;
  trace();
  const auto lines = text.takeText();
  EXPECT_EQ(ring.takeText(), lines);
  EXPECT_EQ(stampsIn(ring.ring()).back(), 6 * kSecond);
}

}  // namespace
