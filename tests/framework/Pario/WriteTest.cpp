#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <limits>
#include <set>
#include <stdexcept>
#include <vector>

#include "Kel/System.h"
#include "Pario/Write.h"
#include "TracedTypes.h"
#include "framework/Kel/FailingMemory.h"
#include "support/OnThreads.h"
#include "support/RingCapture.h"
#include "support/TraceCapture.h"

namespace {

using ParioTest::Colour;
using ParioTest::Name;
using ParioTest::Prefix;
using ParioTest::Shape;
using TestSupport::RingCapture;
using TestSupport::TraceCapture;

using Lines = std::vector<std::string>;

constexpr const char* kScope = "void VelaPolicyMonitor::PolicyTranslateRootSm::";
constexpr const char* kForm = "handlePolicySet(const String&)";
constexpr Pario::Source kSource{"VelaPolicyMonitor", kScope, "src/policy/VelaPolicyTranslate.cpp"};

template <class... Pieces>
void trace(unsigned level, std::uint32_t line, const Pieces&... pieces) {
  if (Pario::on(level)) {
    Pario::write({kSource, kForm, {level, line}}, pieces...);
  }
}

TEST(Write, AMessageIsScopeFormAndPiecesWithNothingBetween) {
  TraceCapture text;
  RingCapture ring;
  trace(8, 41, " Device name: ", Kel::String("fw1"));
  trace(6, 42, " add device ", Kel::String("fw1"));
  trace(7, 43, "return");
  const Lines expected{
      "8 void VelaPolicyMonitor::PolicyTranslateRootSm::handlePolicySet(const String&) Device "
      "name: fw1",
      "6 void VelaPolicyMonitor::PolicyTranslateRootSm::handlePolicySet(const String&) add device "
      "fw1",
      "7 void VelaPolicyMonitor::PolicyTranslateRootSm::handlePolicySet(const String&)return"};
  EXPECT_EQ(text.take(), expected);
  EXPECT_EQ(ring.take(), expected);
}

TEST(Write, ALineHasTimeFacilityLevelPlaceAndHandler) {
  TraceCapture text;
  RingCapture ring;
  Kel::System::clockIs([] { return 1700000000.25; });
  trace(8, 41, " Device name: ", Kel::String("fw1"));
  Kel::System::clockIs({});
  const Lines expected{
      "1700000000.250000 VelaPolicyMonitor 8 VelaPolicyTranslate.cpp:41 handlePolicySet: void "
      "VelaPolicyMonitor::PolicyTranslateRootSm::handlePolicySet(const String&) Device name: "
      "fw1\n"};
  EXPECT_EQ(text.takeText(), expected);
  EXPECT_EQ(ring.takeText(), expected);
}

/// What both traces make of the pieces behind the form; they must agree, and the binary trace with
/// itself when it is alone: for a record by itself and for records of an event.
template <class... Pieces>
std::string bothWrite(const Pieces&... pieces) {
  RingCapture ring;
  Lines lines;
  {
    TraceCapture text;
    trace(6, 100, pieces...);
    lines = text.take();
  }
  EXPECT_EQ(ring.take(), lines);
  trace(6, 100, pieces...);
  {
    const Pario::Event event;
    trace(6, 100, pieces...);
    trace(6, 100, pieces...);
  }
  Lines thrice;
  for (int i = 0; i < 3; ++i) {
    thrice.insert(thrice.end(), lines.begin(), lines.end());
  }
  EXPECT_EQ(ring.take(), thrice);
  return lines.size() == 1 ? lines[0].substr(2 + std::strlen(kScope) + std::strlen(kForm))
                           : "not one line";
}

TEST(Write, EveryTypeOfValuePrintsTheSameFromBothTraces) {
  EXPECT_EQ(bothWrite(true, false), "truefalse");
  EXPECT_EQ(bothWrite(std::uint8_t{200}, " ", std::uint16_t{65535}, " ", std::uint32_t{4294967295U},
                      " ", std::numeric_limits<std::uint64_t>::max()),
            "200 65535 4294967295 18446744073709551615");
  EXPECT_EQ(bothWrite(std::int8_t{-128}, " ", std::int16_t{-1}, " ", -5, " ",
                      std::numeric_limits<std::int64_t>::min()),
            "-128 -1 -5 -9223372036854775808");
  EXPECT_EQ(bothWrite(12.5, " ", -0.0000004), "12.500000 -0.000000");
  EXPECT_EQ(bothWrite(Colour::green, " ", static_cast<Colour>(9)), "green 9");
  EXPECT_EQ(bothWrite(Prefix{{10, 1, 0, 0}, 16}), "10.1.0.0/16");
  EXPECT_EQ(bothWrite(Name("red"), " ", Kel::String("a"), " ", std::string("b"), " ",
                      std::string_view("c")),
            "red a b c");
}

TEST(Write, AMessageMayHaveNoPiecesAndAnEmptyText) {
  EXPECT_EQ(bothWrite(), "");
  EXPECT_EQ(bothWrite(Kel::String()), "");
  EXPECT_EQ(bothWrite("", Kel::String(), ""), "");
}

TEST(Write, TextOfEveryLengthIsWhole) {
  std::string text;
  for (int length = 0; length <= 70; ++length) {
    EXPECT_EQ(bothWrite(" <", text, ">"), " <" + text + ">");
    text += static_cast<char>('a' + length % 26);
  }
  EXPECT_EQ(bothWrite(std::string(100'000, 'x')), std::string(100'000, 'x'));
}

TEST(Write, ControlBytesOfValuesAreEscapedAlsoNulAtAnyPlace) {
  EXPECT_EQ(bothWrite(" name ", std::string_view("a\nb\x1f\x7f\xc3\xa4")),
            " name a\\x0ab\\x1f\\x7f\xc3\xa4");
  EXPECT_EQ(bothWrite(Name("new\nline")), "new\\x0aline");
  EXPECT_EQ(bothWrite(Shape::round), "ro\\x09und");
  for (const std::size_t length : {1U, 3U, 4U, 7U, 8U, 9U, 16U, 17U, 30U}) {
    for (std::size_t at = 0; at < length; ++at) {
      std::string text(length, 'x');
      text[at] = '\0';
      const std::string escaped = text.substr(0, at) + "\\x00" + text.substr(at + 1);
      EXPECT_EQ(bothWrite(" ", text, " ", std::uint32_t{7}, Name("n")), " " + escaped + " 7n");
    }
  }
}

TEST(Write, BytesAboveAsciiAreNotTakenForNul) {
  for (int byte = 0x80; byte <= 0xff; ++byte) {
    const std::string text(9, static_cast<char>(byte));
    EXPECT_EQ(bothWrite(text), text);
  }
  EXPECT_EQ(bothWrite(std::string("\x80\x01\x01\x01\x01\x01\x01\x01", 8)),
            "\x80\\x01\\x01\\x01\\x01\\x01\\x01\\x01");
}

TEST(Write, ALiteralFromATableBelongsToTheSite) {
  const char* const table[] = {" add src IP ", " remove src IP "};
  TraceCapture text;
  RingCapture ring;
  const std::uint32_t before = Lumo::siteCount();
  for (int round = 0; round < 3; ++round) {
    for (const char* entry : table) {
      trace(6, 200, Pario::Literal{entry}, std::uint32_t{5});
    }
  }
  EXPECT_EQ(Lumo::siteCount(), before + 2) << "one site per entry of the table";
  EXPECT_EQ(Lumo::siteOf(before)->pieces.at(0).literal, " add src IP ");
  EXPECT_EQ(Lumo::siteOf(before + 1)->pieces.at(0).literal, " remove src IP ");
  EXPECT_EQ(ring.take(), text.take());
}

TEST(Write, ASiteIsToldApartBySourceFormLineLevelLiteralAndTypes) {
  static constexpr Pario::Source a{"VelaPolicyMonitor", "a::", "a.cpp"};
  static constexpr Pario::Source b{"VelaPolicyMonitor", "b::", "a.cpp"};
  RingCapture ring;
  const std::uint32_t before = Lumo::siteCount();
  const auto write = [](const Pario::Source& source, const char* form, unsigned level,
                        std::uint32_t line, const auto&... pieces) {
    Pario::write({source, form, {level, line}}, pieces...);
  };
  for (int round = 0; round < 2; ++round) {
    write(a, "f()", 8, 1, Pario::Literal{"x"}, 1U);
    write(b, "f()", 8, 1, Pario::Literal{"x"}, 1U);
    write(a, "g()", 8, 1, Pario::Literal{"x"}, 1U);
    write(a, "f()", 7, 1, Pario::Literal{"x"}, 1U);
    write(a, "f()", 8, 2, Pario::Literal{"x"}, 1U);
    write(a, "f()", 8, 1, Pario::Literal{"y"}, 1U);
    write(a, "f()", 8, 1, Pario::Literal{"x"}, true);
  }
  EXPECT_EQ(Lumo::siteCount(), before + 7);
  const Lines seven{"8 a::f()x1", "8 b::f()x1", "8 a::g()x1",   "7 a::f()x1",
                    "8 a::f()x1", "8 a::f()y1", "8 a::f()xtrue"};
  Lines twice = seven;
  twice.insert(twice.end(), seven.begin(), seven.end());
  EXPECT_EQ(ring.take(), twice);
}

TEST(Write, ManyThreadsThatComeToASiteFirstRegisterItOnce) {
  for (std::uint32_t round = 0; round < 20; ++round) {
    RingCapture ring;
    const std::uint32_t before = Lumo::siteCount();
    std::atomic<int> ready{0};
    TestSupport::onThreads(4, [&](std::size_t) {
      for (++ready; ready != 4;) {
      }
      trace(6, 1000 + round, " together ", round);
    });
    EXPECT_EQ(Lumo::siteCount(), before + 1);
    EXPECT_EQ(ring.take().size(), 4U);
  }
}

TEST(Write, WithoutADefaultHandleNothingIsWrittenToTheBinaryTrace) {
  ASSERT_EQ(Lumo::defaultHandle(), nullptr);
  EXPECT_FALSE(Pario::on(8));
  {
    TraceCapture text("8");
    trace(8, 300, " text only");
    EXPECT_EQ(text.take().size(), 1U);
  }
  RingCapture ring;
  trace(8, 300, " binary only");
  EXPECT_EQ(ring.take().size(), 1U);
}

TEST(Write, LevelsOfBothTracesAreTakenApart) {
  TraceCapture text("6,8");
  RingCapture ring;
  Pario::binaryLevelsAre(0x0c0);
  for (unsigned level = 5; level <= 9; ++level) {
    trace(level, 310, " level");
  }
  Pario::binaryLevelsAre(0x3ff);
  const Lines inText = text.take();
  const Lines inRing = ring.take();
  ASSERT_EQ(inText.size(), 2U);
  EXPECT_EQ(inText[0][0], '6');
  EXPECT_EQ(inText[1][0], '8');
  ASSERT_EQ(inRing.size(), 2U);
  EXPECT_EQ(inRing[0][0], '6');
  EXPECT_EQ(inRing[1][0], '7');
}

TEST(Write, AnotherFacilitysLevelsDoNotLetALinePass) {
  TraceCapture text("none");
  TraceCapture other("8", "Other");
  EXPECT_TRUE(Pario::on(8)) << "somebody listens";
  trace(8, 320, " not for Other");
  EXPECT_EQ(text.lines().size(), 0U);
  EXPECT_EQ(other.lines().size(), 0U);
}

TEST(Write, AThrowingSinkDoesNotDisturbTheWriterNorTheBinaryTrace) {
  const TraceCapture levels;
  RingCapture ring;
  const auto before = Kel::TextTrace::sinkIs(Kel::TextTrace::callbackSink(
      [](const Kel::TextTrace::Line&) { throw std::runtime_error("sink"); }));
  EXPECT_NO_THROW(trace(8, 330, " first"));
  EXPECT_NO_THROW(trace(8, 331, " second"));
  Kel::TextTrace::sinkIs(before);
  EXPECT_EQ(ring.take().size(), 2U);
}

TEST(Write, ASinkThatTracesItselfGetsNoLineOfItsOwnButTheBinaryTraceDoes) {
  const TraceCapture levels;
  RingCapture ring;
  Lines texts;
  const auto before =
      Kel::TextTrace::sinkIs(Kel::TextTrace::callbackSink([&](const Kel::TextTrace::Line& line) {
        texts.emplace_back(line.message.substr(line.message.rfind(' ')));
        trace(6, 341, " inner");
        texts.emplace_back(line.message.substr(line.message.rfind(' ')));
      }));
  trace(8, 340, " outer");
  Kel::TextTrace::sinkIs(before);
  EXPECT_EQ(texts, (Lines{" outer", " outer"}));
  EXPECT_EQ(ring.take().size(), 2U);
}

TEST(Write, ARecordThatDoesNotFitIsLostAndTheNextIsNot) {
  std::string why;
  const auto ring = Lumo::TraceFile::inMemory(4096, 2, why);
  Lumo::defaultHandleIs(ring.get());
  trace(8, 350, std::string(5000, 'x'));
  trace(8, 351, std::string(2000, '\0'));  // four bytes each when escaped
  trace(8, 352, " small");
  Lumo::defaultHandleIs(nullptr);
  EXPECT_EQ(ring->discarded(), 2U);
  Lines lines;
  EXPECT_TRUE(Lumo::forEachRecord(
      ring->memory(), 4096, Lumo::siteOf,
      [&](const Lumo::Record& record) { Pario::appendMessage(lines.emplace_back(), record); }));
  EXPECT_EQ(lines, Lines{std::string(kScope) + kForm + " small"});
}

TEST(Write, ARecordOfAKnownSiteIsWrittenToANewRingAndToANewSegment) {
  for (int round = 0; round != 2; ++round) {
    RingCapture ring(4096, 8);
    const Pario::Event event;
    for (std::uint32_t number = 0; number != 500; ++number) {  // more than four segments
      trace(6, 370, " number ", number);
    }
    const Lines lines = ring.take();
    ASSERT_EQ(lines.size(), 500U);
    EXPECT_TRUE(lines.front().ends_with(" number 0"));
    EXPECT_TRUE(lines.back().ends_with(" number 499"));
  }
}

TEST(Write, ASiteThatTheTextTraceHasMetFirstIsWrittenToTheBinaryTrace) {
  RingCapture ring;
  trace(6, 371, " first");
  for (const bool toText : {true, false}) {
    Pario::binaryLevelsAre(toText ? 0 : Kel::TextTrace::kAllLevels);
    TraceCapture text(toText ? "0-9" : "none");
    trace(6, 372, " later");
    EXPECT_EQ(text.take().size(), toText ? 1U : 0U);
  }
  EXPECT_EQ(ring.take().size(), 2U);
}

TEST(Write, ARingThatGoesJustWhenARecordIsToBeWrittenIsMissedByNobody) {
  RingCapture ring;
  trace(6, 380, " before");
  // Without its observer `listening` is what another thread still sees at that moment.
  const auto observer = Lumo::defaultHandleObserverIs(nullptr);
  Lumo::TraceFile* const gone = Lumo::defaultHandleIs(nullptr);
  EXPECT_TRUE(Pario::on(6));
  trace(6, 380, " nowhere");
  Lumo::defaultHandleIs(gone);
  Lumo::defaultHandleObserverIs(observer);
  EXPECT_EQ(ring.take().size(), 1U);
}

TEST(Write, WithoutMemoryForALineItIsLostAndTheNextIsNot) {
  TraceCapture text;
  const std::string name(100, 'n');
  for (std::size_t nth = 1;; ++nth) {
    const auto line = static_cast<std::uint32_t>(400 + nth);  // of a site that is new
    {
      const FailingMemory memory(nth);
      trace(8, line, " name ", name);
    }
    const bool failed = FailingMemory::failed();
    EXPECT_EQ(text.take().size(), failed ? 0U : 1U) << nth;
    trace(8, line, " name ", name);
    EXPECT_EQ(text.take().size(), 1U) << nth;
    if (!failed) {
      EXPECT_GT(nth, 5U) << "the site in both traces, the message, what the sink keeps";
      break;
    }
  }
}

TEST(Write, WithoutMemoryForTheEscapedTextARecordIsLostAndTheNextIsNot) {
  RingCapture ring;
  const std::string name(100, '\0');
  for (int round = 0; round != 3; ++round) {
    const FailingMemory memory(round == 1 ? 1 : 0);
    trace(8, 360, " name ", name);
  }
  EXPECT_EQ(ring.take().size(), 2U);
}

}  // namespace
