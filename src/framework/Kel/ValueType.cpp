#include "Kel/ValueType.h"

#include <vector>

#include "Kel/Describe.h"

namespace Kel {

template <>
const ValueType& valueTypeOf<bool>() {
  static const ValueType type = describeValue<bool>("bool", Encoding::boolean);
  return type;
}
template <>
const ValueType& valueTypeOf<std::uint8_t>() {
  static const ValueType type = describeValue<std::uint8_t>("uint8_t", Encoding::number);
  return type;
}
template <>
const ValueType& valueTypeOf<std::uint16_t>() {
  static const ValueType type = describeValue<std::uint16_t>("uint16_t", Encoding::number);
  return type;
}
template <>
const ValueType& valueTypeOf<std::uint32_t>() {
  static const ValueType type = describeValue<std::uint32_t>("uint32_t", Encoding::number);
  return type;
}
template <>
const ValueType& valueTypeOf<Seconds>() {
  static const ValueType type = describeValue<Seconds>("Kel::Seconds", Encoding::decimal);
  return type;
}
template <>
const ValueType& valueTypeOf<String>() {
  static const ValueType type = describeValue<String>("Kel::String", Encoding::string);
  return type;
}

namespace {

std::vector<const ValueType*>& registry() {
  static auto* const types = new std::vector<const ValueType*>;  // outlives all static objects
  return *types;
}

const ValueTypeRegistration kRegistration{
    valueTypeOf<bool>(),          valueTypeOf<std::uint8_t>(), valueTypeOf<std::uint16_t>(),
    valueTypeOf<std::uint32_t>(), valueTypeOf<Seconds>(),      valueTypeOf<String>()};

}  // namespace

void ValueTypeRegistration::add(const ValueType& type) { registry().push_back(&type); }

void forEachValueType(void (*each)(void* context, const ValueType& type), void* context) {
  for (const ValueType* type : registry()) {
    each(context, *type);
  }
}

AnyValue::AnyValue(const ValueType& type) : type_(type) { type.construct(place_); }
AnyValue::~AnyValue() { type_.destroy(place_); }

}  // namespace Kel
