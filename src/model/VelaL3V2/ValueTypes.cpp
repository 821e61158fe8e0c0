// The descriptors of this module's value types; the enumerations on streams.

#include <array>
#include <cstddef>
#include <ostream>

#include "Kel/Describe.h"
#include "Norv/Norv.h"
#include "VelaL3V2/VelaAction.h"
#include "VelaL3V2/VelaIpRange.h"
#include "VelaL3V2/VelaL4App.h"
#include "VelaL3V2/VelaL4AppRange.h"
#include "VelaL3V2/VelaPolicyModifier.h"
#include "VelaL3V2/VelaPriority.h"

namespace Kel {

template <>
const ValueType& valueTypeOf<VelaL3V2::VelaPriority>() {
  static const ValueType type =
      describeValue<VelaL3V2::VelaPriority>("VelaL3V2::VelaPriority", Encoding::number);
  return type;
}

template <>
const ValueType& valueTypeOf<VelaL3V2::VelaAction>() {
  static const ValueType type =
      describeValue<VelaL3V2::VelaAction>("VelaL3V2::VelaAction", Encoding::string);
  return type;
}

template <>
const ValueType& valueTypeOf<VelaL3V2::VelaPolicyModifier>() {
  static const ValueType type =
      describeValue<VelaL3V2::VelaPolicyModifier>("VelaL3V2::VelaPolicyModifier", Encoding::string);
  return type;
}

template <>
const ValueType& valueTypeOf<VelaL3V2::VelaIpRange>() {
  using T = VelaL3V2::VelaIpRange;
  static constexpr std::array fields{
      Field{"first", &valueTypeOf<Norv::IpGenAddr>, offsetof(T, first)},
      Field{"last", &valueTypeOf<Norv::IpGenAddr>, offsetof(T, last)},
  };
  static const ValueType type = describeValue<T>("VelaL3V2::VelaIpRange", Encoding::record, fields);
  return type;
}

template <>
const ValueType& valueTypeOf<VelaL3V2::VelaL4App>() {
  using T = VelaL3V2::VelaL4App;
  static constexpr std::array fields{
      Field{"port", &valueTypeOf<std::uint16_t>, offsetof(T, port)},
      Field{"protocol", &valueTypeOf<std::uint8_t>, offsetof(T, protocol)},
  };
  static const ValueType type = describeValue<T>("VelaL3V2::VelaL4App", Encoding::record, fields);
  return type;
}

template <>
const ValueType& valueTypeOf<VelaL3V2::VelaL4AppRange>() {
  using T = VelaL3V2::VelaL4AppRange;
  static constexpr std::array fields{
      Field{"first", &valueTypeOf<std::uint16_t>, offsetof(T, first)},
      Field{"last", &valueTypeOf<std::uint16_t>, offsetof(T, last)},
      Field{"protocol", &valueTypeOf<std::uint8_t>, offsetof(T, protocol)},
  };
  static const ValueType type =
      describeValue<T>("VelaL3V2::VelaL4AppRange", Encoding::record, fields);
  return type;
}

namespace {
const ValueTypeRegistration kRegistration{
    valueTypeOf<VelaL3V2::VelaPriority>(),       valueTypeOf<VelaL3V2::VelaAction>(),
    valueTypeOf<VelaL3V2::VelaPolicyModifier>(), valueTypeOf<VelaL3V2::VelaIpRange>(),
    valueTypeOf<VelaL3V2::VelaL4App>(),          valueTypeOf<VelaL3V2::VelaL4AppRange>()};
}  // namespace

}  // namespace Kel

namespace VelaL3V2 {

std::ostream& operator<<(std::ostream& out, VelaAction value) { return out << Kel::textOf(value); }
std::ostream& operator<<(std::ostream& out, VelaPolicyModifier value) {
  return out << Kel::textOf(value);
}

}  // namespace VelaL3V2
