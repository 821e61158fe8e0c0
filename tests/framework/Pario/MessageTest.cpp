#include <gtest/gtest.h>

#include "Pario/Message.h"
#include "Pario/Write.h"
#include "TracedTypes.h"
#include "support/RingCapture.h"
#include "support/TraceCapture.h"

namespace {

constexpr Pario::Source kSource{"F", "void A::", "a.cpp"};

TEST(Message, IsMadeFromTheBytesOfTheRecordAlone) {
  TestSupport::RingCapture ring;
  {
    std::string name = "fw1";
    ParioTest::Prefix prefix{{10, 0, 0, 0}, 8};
    Pario::write({kSource, "f(int)", {6, 1}}, " add ", name, " on ", prefix);
    name = "xxx";
    prefix = {};
  }
  EXPECT_EQ(ring.take(), std::vector<std::string>{"6 void A::f(int) add fw1 on 10.0.0.0/8"});
}

TEST(Message, AValueOfATypeThatThisProcessDoesNotKnowIsPrintedAsItsBytes) {
  TestSupport::RingCapture ring;
  Pario::write({kSource, "f(int)", {6, 2}}, " value ", ParioTest::Unlisted{0x12ab});
  EXPECT_EQ(ring.take(), std::vector<std::string>{"6 void A::f(int) value 0xab12"});
}

TEST(Message, AValueThatIsNotOfTheSizeOrKindOfItsTypeHereIsPrintedAsItsBytes) {
  // As another version of a library may have written it.
  const auto printed = [](const Lumo::ValueType& type, std::string_view bytes) {
    std::string out;
    Pario::appendValue(out, {&type, bytes});
    return out;
  };
  const Lumo::ValueType prefix{Lumo::Kind::bytes, 5, "ParioTest::Prefix"};
  EXPECT_EQ(printed(prefix, std::string_view("\x0a\0\0\0\x08", 5)), "10.0.0.0/8");
  const Lumo::ValueType longer{Lumo::Kind::bytes, 6, "ParioTest::Prefix"};
  EXPECT_EQ(printed(longer, std::string_view("\x0a\0\0\0\x08\x01", 6)), "0x0a0000000801");
  const Lumo::ValueType text{Lumo::Kind::bytes, sizeof(Kel::String), "Kel::String"};
  EXPECT_EQ(printed(text, "12345678"), "0x3132333435363738");
}

TEST(Message, TheTypeOfAValueStandsInTheSiteByItsNameInTheCode) {
  TestSupport::RingCapture ring;
  Pario::write({kSource, "f(int)", {6, 3}}, ParioTest::Prefix{}, ParioTest::Colour::red,
               ParioTest::Shape::round, ParioTest::Name("n"));
  const auto& pieces = Lumo::siteOf(Lumo::siteCount() - 1)->pieces;
  ASSERT_EQ(pieces.size(), 4U);
  EXPECT_EQ(pieces[0].value->name, "ParioTest::Prefix");
  EXPECT_EQ(pieces[0].value->kind, Lumo::Kind::bytes);
  EXPECT_EQ(pieces[0].value->size, 5);
  EXPECT_EQ(pieces[1].value->name, "ParioTest::Colour");
  EXPECT_EQ(pieces[1].value->kind, Lumo::Kind::enumeration);
  ASSERT_EQ(pieces[1].value->labels.size(), 2U);
  EXPECT_EQ(pieces[1].value->labels[1], "green");
  EXPECT_EQ(pieces[2].value->name, "ParioTest::Shape");
  EXPECT_EQ(pieces[2].value->size, 2);
  EXPECT_EQ(pieces[3].value->name, "Kel::String");
  EXPECT_EQ(pieces[3].value->kind, Lumo::Kind::text);
}

}  // namespace
