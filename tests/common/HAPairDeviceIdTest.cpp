#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>

#include "Kel/Describe.h"
#include "Kel/ValueType.h"
#include "common/HAPairDeviceId.h"

namespace {

using VelaPolicyMonitor::HAPairDeviceId;

TEST(HAPairDeviceId, PutsTheLowerNameFirstInWhicheverOrderTheyAreGiven) {
  EXPECT_EQ(HAPairDeviceId::encode("fwA", "fwB"), "fwA:fwB_HAPair");
  EXPECT_EQ(HAPairDeviceId::encode("fwB", "fwA"), "fwA:fwB_HAPair");
}

TEST(HAPairDeviceId, EscapesColonsAndBackslashesOfNames) {
  EXPECT_EQ(HAPairDeviceId::encode("a:1", "b"), "a\\:1:b_HAPair");
  EXPECT_EQ(HAPairDeviceId::encode("b", "a\\1"), "a\\\\1:b_HAPair");
}

TEST(HAPairDeviceId, TwoEqualNamesStandTwice) {
  EXPECT_EQ(HAPairDeviceId::encode("x", "x"), "x:x_HAPair");
  const HAPairDeviceId id("x:x_HAPair");
  EXPECT_EQ(id.getFw1Name(), "x");
  EXPECT_EQ(id.getFw2Name(), "x");
}

TEST(HAPairDeviceId, AnEmptyNameIsTheLowerOne) {
  EXPECT_EQ(HAPairDeviceId::encode("b", ""), ":b_HAPair");
  const HAPairDeviceId id(HAPairDeviceId::encode("", "b"));
  EXPECT_EQ(id.value(), ":b_HAPair");
  EXPECT_EQ(id.getFw1Name(), "");
  EXPECT_EQ(id.getFw2Name(), "b");
}

TEST(HAPairDeviceId, BytesAboveAsciiCompareAsUnsignedNumbers) {
  EXPECT_EQ(HAPairDeviceId::encode("\xc3\xa9", "z"), "z:\xc3\xa9_HAPair");
}

TEST(HAPairDeviceId, LosesItsLastSevenBytesAlsoWithoutTheMarker) {
  const HAPairDeviceId id("abcdefghij");
  EXPECT_EQ(id.getFw1Name(), "abc");
  EXPECT_EQ(id.getFw2Name(), "");
}

TEST(HAPairDeviceId, TheMarkerAloneHasEmptyNames) {
  const HAPairDeviceId id("_HAPair");
  EXPECT_EQ(id.getFw1Name(), "");
  EXPECT_EQ(id.getFw2Name(), "");
}

TEST(HAPairDeviceId, AnythingShorterThanTheMarkerHasEmptyNames) {
  for (const char* const text : {"", "x", "a:b", "HAPair"}) {
    EXPECT_EQ(HAPairDeviceId(text).getFw1Name(), "") << text;
    EXPECT_EQ(HAPairDeviceId(text).getFw2Name(), "") << text;
  }
}

TEST(HAPairDeviceId, OneNameIsTheFirst) {
  const HAPairDeviceId id("x_HAPair");
  EXPECT_EQ(id.getFw1Name(), "x");
  EXPECT_EQ(id.getFw2Name(), "");
}

TEST(HAPairDeviceId, AThirdNameIsNobodys) {
  const HAPairDeviceId id("a:b:c_HAPair");
  EXPECT_EQ(id.getFw1Name(), "a");
  EXPECT_EQ(id.getFw2Name(), "b");
}

TEST(HAPairDeviceId, NamesWithColonsAndBackslashesComeBackInTheirOrder) {
  for (const char* const name : {"a:b", "a\\b", "\\", ":", "a:\\:b\\", "x_HAPair"}) {
    const HAPairDeviceId id(HAPairDeviceId::encode("~", name));
    EXPECT_EQ(id.getFw1Name(), name);
    EXPECT_EQ(id.getFw2Name(), "~");
  }
}

TEST(HAPairDeviceId, TheMarkerCountsAtTheEndOnly) {
  EXPECT_TRUE(HAPairDeviceId::isHAPairDeviceId("fwA:fwB_HAPair"));
  EXPECT_TRUE(HAPairDeviceId::isHAPairDeviceId("_HAPair"));
  EXPECT_FALSE(HAPairDeviceId::isHAPairDeviceId("fw_HAPairX"));
  EXPECT_FALSE(HAPairDeviceId::isHAPairDeviceId("fw_HAPair:red"));
  EXPECT_FALSE(HAPairDeviceId::isHAPairDeviceId("HAPair"));
  EXPECT_FALSE(HAPairDeviceId::isHAPairDeviceId("fw_hapair"));
  EXPECT_FALSE(HAPairDeviceId::isHAPairDeviceId(""));
}

TEST(HAPairDeviceId, IsTrueUnlessItIsEmpty) {
  EXPECT_FALSE(HAPairDeviceId());
  EXPECT_FALSE(HAPairDeviceId(""));
  EXPECT_TRUE(HAPairDeviceId("x"));
}

TEST(HAPairDeviceId, ComparesAndHashesAsItsText) {
  const HAPairDeviceId a("a:b_HAPair");
  const HAPairDeviceId b("a:c_HAPair");
  EXPECT_EQ(a, HAPairDeviceId("a:b_HAPair"));
  EXPECT_NE(a, b);
  EXPECT_LT(a, b);
  EXPECT_FALSE(b < a);
  EXPECT_FALSE(a < a);
  EXPECT_EQ(a.hash(), HAPairDeviceId("a:b_HAPair").hash());
  EXPECT_EQ(a.hash(), Kel::String("a:b_HAPair").hash());
  EXPECT_NE(a.hash(), b.hash());
}

TEST(HAPairDeviceId, PrintsItsText) {
  const HAPairDeviceId id("a\\:1:b_HAPair");
  EXPECT_EQ(Kel::textOf(id), "a\\:1:b_HAPair");
  std::ostringstream out;
  out << id;
  EXPECT_EQ(out.str(), "a\\:1:b_HAPair");
}

TEST(HAPairDeviceId, ReadsTheWholeOfAText) {
  HAPairDeviceId id;
  std::string why;
  EXPECT_TRUE(Kel::parseValue("a:b_HAPair and more", id, why));
  EXPECT_EQ(id.value(), "a:b_HAPair and more");
  EXPECT_TRUE(Kel::parseValue("", id, why));
  EXPECT_FALSE(id);
}

TEST(HAPairDeviceId, IsKnownToTheFrameworkByItsName) {
  const Kel::ValueType& type = Kel::valueTypeOf<HAPairDeviceId>();
  EXPECT_STREQ(type.name, "VelaPolicyMonitor::HAPairDeviceId");
  EXPECT_EQ(type.encoding, Kel::Encoding::string);
  Kel::AnyValue value(type);
  std::string why;
  EXPECT_TRUE(type.parse("a:b_HAPair", value.get(), why));
  EXPECT_EQ(static_cast<const HAPairDeviceId*>(value.get())->getFw2Name(), "b");
}

/// An id that is made before main, in another unit than the marker's.
const Kel::String kEarly = HAPairDeviceId::encode("fwB", "fwA");

TEST(HAPairDeviceId, TheMarkerIsThereBeforeMain) { EXPECT_EQ(kEarly, "fwA:fwB_HAPair"); }

}  // namespace
