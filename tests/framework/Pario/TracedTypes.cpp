#include "TracedTypes.h"

#include "Kel/Describe.h"

namespace ParioTest {

void kelAppend(std::string& out, const Prefix& value) {
  for (const std::uint8_t byte : value.address) {
    Kel::appendValue(out, byte);
    out += '.';
  }
  out.back() = '/';
  Kel::appendValue(out, value.length);
}

// With a control byte, as a form that nobody thought of might have one.
void kelAppend(std::string& out, const Shape& value) {
  out += value == Shape::round ? "ro\tund" : "other";
}

void kelAppend(std::string& out, const Unlisted& value) { Kel::appendValue(out, value.value); }

}  // namespace ParioTest

namespace Kel {

template <>
const ValueType& valueTypeOf<ParioTest::Prefix>() {
  static const ValueType type =
      describeValue<ParioTest::Prefix>("ParioTest::Prefix", Encoding::string);
  return type;
}
template <>
const ValueType& valueTypeOf<ParioTest::Colour>() {
  static const ValueType type =
      describeValue<ParioTest::Colour>("ParioTest::Colour", Encoding::string);
  return type;
}
template <>
const ValueType& valueTypeOf<ParioTest::Shape>() {
  static const ValueType type =
      describeValue<ParioTest::Shape>("ParioTest::Shape", Encoding::string);
  return type;
}
template <>
const ValueType& valueTypeOf<ParioTest::Unlisted>() {
  static const ValueType type =
      describeValue<ParioTest::Unlisted>("ParioTest::Unlisted", Encoding::number);
  return type;
}

namespace {
const ValueTypeRegistration kRegistration(valueTypeOf<ParioTest::Prefix>(),
                                          valueTypeOf<ParioTest::Colour>(),
                                          valueTypeOf<ParioTest::Shape>());
}  // namespace

}  // namespace Kel
