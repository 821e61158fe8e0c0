#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Kel/ValueType.h"
#include "framework/Kel/Model.h"

namespace Kel {
namespace {

template <class T>
void expectOrdered(const T& low, const T& high) {
  const ValueType& type = valueTypeOf<T>();
  EXPECT_LT(type.compare(&low, &high), 0);
  EXPECT_GT(type.compare(&high, &low), 0);
  EXPECT_EQ(type.compare(&low, &low), 0);
}

TEST(ValueType, ComparesValuesOfItsType) {
  expectOrdered(false, true);
  expectOrdered<std::uint8_t>(9, 200);
  expectOrdered<std::uint32_t>(9, 4000000000U);
  expectOrdered<Seconds>(-1, 0.5);
  expectOrdered<String>("\x7F", "\x80");
  expectOrdered(Model::Rank{1}, Model::Rank{2});
}

TEST(ValueType, PrintsAndReadsWithoutKnowingTheType) {
  const ValueType& type = valueTypeOf<std::uint16_t>();
  AnyValue value(type);
  std::string why;
  ASSERT_TRUE(type.parse("443", value.get(), why));
  std::string out = "port ";
  type.append(out, value.get());
  EXPECT_EQ(out, "port 443");
  EXPECT_FALSE(type.parse("65536", value.get(), why));
  EXPECT_EQ(why, "65536 is too large; expected 0 to 65535");
  out.clear();
  type.append(out, value.get());
  EXPECT_EQ(out, "443");
}

TEST(ValueType, SaysHowItsValuesAreKeptAndEncoded) {
  EXPECT_EQ(valueTypeOf<bool>().encoding, Encoding::boolean);
  EXPECT_EQ(valueTypeOf<std::uint32_t>().encoding, Encoding::number);
  EXPECT_EQ(valueTypeOf<Seconds>().encoding, Encoding::decimal);
  EXPECT_EQ(valueTypeOf<String>().encoding, Encoding::string);
  EXPECT_TRUE(valueTypeOf<std::uint32_t>().trivial);
  EXPECT_FALSE(valueTypeOf<String>().trivial);
  EXPECT_EQ(valueTypeOf<std::uint32_t>().size, 4);
  EXPECT_EQ(valueTypeOf<Seconds>().align, alignof(double));
  EXPECT_TRUE(valueTypeOf<String>().fields.empty());
}

TEST(ValueType, KnowsTheTimeThatNobodyHasWritten) {
  const ValueType& type = valueTypeOf<Seconds>();
  const Seconds never = kNoTime;
  const Seconds zero = writtenTime(kNoTime);
  const Seconds negative = -1;
  EXPECT_TRUE(type.absent(&never));
  EXPECT_FALSE(type.absent(&zero));
  EXPECT_FALSE(type.absent(&negative));
  EXPECT_EQ(type.compare(&never, &zero), 0);
  const std::uint32_t number = 0;
  EXPECT_FALSE(valueTypeOf<std::uint32_t>().absent(&number));
}

TEST(ValueType, HasOneObjectPerTypeWithANameOfItsOwn) {
  EXPECT_EQ(&valueTypeOf<String>(), &valueTypeOf<String>());
  std::pair<std::set<std::string>, std::size_t> seen;
  forEachValueType(
      [](void* context, const ValueType& type) {
        auto& [names, count] = *static_cast<decltype(seen)*>(context);
        names.insert(type.name);
        ++count;
      },
      &seen);
  EXPECT_EQ(seen.first.size(), seen.second);
  for (const char* name :
       {"bool", "uint8_t", "uint16_t", "uint32_t", "Kel::Seconds", "Kel::String"}) {
    EXPECT_TRUE(seen.first.contains(name)) << name;
  }
}

TEST(AnyValue, HoldsADefaultValueUntilOneIsAssigned) {
  AnyValue text(valueTypeOf<String>());
  EXPECT_EQ(*static_cast<const String*>(text.get()), "");
  const String given("a text that is shared with the value");
  text.type().assign(text.get(), &given);
  EXPECT_EQ(*static_cast<const String*>(std::as_const(text).get()), given);
  EXPECT_EQ(static_cast<const String*>(text.get())->c_str(), given.c_str());
}

TEST(AnyValue, LiesWhereEveryValueMayLie) {
  forEachValueType(
      [](void*, const ValueType& type) {
        const AnyValue value(type);
        EXPECT_LE(type.size, kLargestValue);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(value.get()) % type.align, 0U) << type.name;
      },
      nullptr);
}

}  // namespace
}  // namespace Kel
