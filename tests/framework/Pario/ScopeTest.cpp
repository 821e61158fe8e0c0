#include <gtest/gtest.h>

#include "Pario/Scope.h"
#include "Pario/Write.h"
#include "support/RingCapture.h"
#include "support/TraceCapture.h"

namespace {

using Strings = std::vector<std::string>;

/// A scope for as long as this lives.
class Scoped {
 public:
  explicit Scoped(const Pario::Scope& scope) { Pario::scopeIs(scope); }
  ~Scoped() { Pario::scopeIs({}); }
  Scoped(const Scoped&) = delete;
  Scoped& operator=(const Scoped&) = delete;
};

constexpr Pario::Source kSource{"VelaPolicyMonitor", "void A::", "a.cpp"};

void writeTwo() {
  Pario::write({kSource, "f(int)", {6, 1}, 0x1234}, " here");
  Pario::write({kSource, "g()", {6, 2}, 0x5634}, " there");
}

TEST(Scope, WithoutOneEverythingIsWritten) {
  TestSupport::TraceCapture text;
  writeTwo();
  EXPECT_EQ(text.take(), (Strings{"6 void A::f(int) here", "6 void A::g() there"}));
}

TEST(Scope, NarrowsBothTracesToPlacesWithTheBitsUnderItsMask) {
  TestSupport::TraceCapture text;
  TestSupport::RingCapture ring;
  const Scoped scope({0xff00, 0x5600, ""});
  writeTwo();
  EXPECT_EQ(text.take(), Strings{"6 void A::g() there"});
  EXPECT_EQ(ring.take(), Strings{"6 void A::g() there"});
}

TEST(Scope, APlaceFitsWhateverItHasOutsideTheMask) {
  TestSupport::TraceCapture text;
  const Scoped scope({0x00ff, 0x0034, ""});
  writeTwo();
  EXPECT_EQ(text.take().size(), 2U);
}

TEST(Scope, NarrowsToAHandlerByItsWholeName) {
  TestSupport::TraceCapture text;
  {
    const Scoped scope({0, 0, "f"});
    writeTwo();
    EXPECT_EQ(text.take(), Strings{"6 void A::f(int) here"});
  }
  const Scoped scope({0, 0, "f(int)"});
  writeTwo();
  EXPECT_EQ(text.take(), Strings{});
}

TEST(Scope, IsWhatWasSet) {
  EXPECT_EQ(Pario::scope().handler, "");
  const Scoped scope({0xff, 0x12, "f"});
  EXPECT_EQ(Pario::scope().mask, 0xffU);
  EXPECT_EQ(Pario::scope().value, 0x12U);
  EXPECT_EQ(Pario::scope().handler, "f");
}

TEST(Scope, TheRecordKeepsThePlaceForItsReaders) {
  TestSupport::RingCapture ring;
  writeTwo();
  std::vector<Pario::Place> places;
  EXPECT_TRUE(
      Lumo::forEachRecord(ring.ring().memory(), ring.ring().segmentSize(), Lumo::siteOf,
                          [&](const Lumo::Record& record) { places.push_back(record.subject); }));
  EXPECT_EQ(places, (std::vector<Pario::Place>{0x1234, 0x5634}));
}

}  // namespace
