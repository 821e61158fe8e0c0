// The descriptors of this module's value types; the enumerations on streams.

#include <array>
#include <cstddef>
#include <ostream>

#include "Kel/Describe.h"
#include "Norv/Norv.h"
#include "VelaL3/VelaAction.h"
#include "VelaL3/VelaIpRange.h"
#include "VelaL3/VelaL4App.h"
#include "VelaL3/VelaL4AppRange.h"
#include "VelaL3/VelaPolicyModifier.h"
#include "VelaL3/VelaPriority.h"

namespace Kel {

template <>
const ValueType& valueTypeOf<VelaL3::VelaPriority>() {
  static const ValueType type =
      describeValue<VelaL3::VelaPriority>("VelaL3::VelaPriority", Encoding::number);
  return type;
}

template <>
const ValueType& valueTypeOf<VelaL3::VelaAction>() {
  static const ValueType type =
      describeValue<VelaL3::VelaAction>("VelaL3::VelaAction", Encoding::string);
  return type;
}

template <>
const ValueType& valueTypeOf<VelaL3::VelaPolicyModifier>() {
  static const ValueType type =
      describeValue<VelaL3::VelaPolicyModifier>("VelaL3::VelaPolicyModifier", Encoding::string);
  return type;
}

template <>
const ValueType& valueTypeOf<VelaL3::VelaIpRange>() {
  using T = VelaL3::VelaIpRange;
  static constexpr std::array fields{
      Field{"first", &valueTypeOf<Norv::IpGenAddr>, offsetof(T, first)},
      Field{"last", &valueTypeOf<Norv::IpGenAddr>, offsetof(T, last)},
  };
  static const ValueType type = describeValue<T>("VelaL3::VelaIpRange", Encoding::record, fields);
  return type;
}

template <>
const ValueType& valueTypeOf<VelaL3::VelaL4App>() {
  using T = VelaL3::VelaL4App;
  static constexpr std::array fields{
      Field{"port", &valueTypeOf<std::uint16_t>, offsetof(T, port)},
      Field{"protocol", &valueTypeOf<std::uint8_t>, offsetof(T, protocol)},
  };
  static const ValueType type = describeValue<T>("VelaL3::VelaL4App", Encoding::record, fields);
  return type;
}

template <>
const ValueType& valueTypeOf<VelaL3::VelaL4AppRange>() {
  using T = VelaL3::VelaL4AppRange;
  static constexpr std::array fields{
      Field{"first", &valueTypeOf<std::uint16_t>, offsetof(T, first)},
      Field{"last", &valueTypeOf<std::uint16_t>, offsetof(T, last)},
      Field{"protocol", &valueTypeOf<std::uint8_t>, offsetof(T, protocol)},
  };
  static const ValueType type =
      describeValue<T>("VelaL3::VelaL4AppRange", Encoding::record, fields);
  return type;
}

namespace {
const ValueTypeRegistration kRegistration{
    valueTypeOf<VelaL3::VelaPriority>(),       valueTypeOf<VelaL3::VelaAction>(),
    valueTypeOf<VelaL3::VelaPolicyModifier>(), valueTypeOf<VelaL3::VelaIpRange>(),
    valueTypeOf<VelaL3::VelaL4App>(),          valueTypeOf<VelaL3::VelaL4AppRange>()};
}  // namespace

}  // namespace Kel

namespace VelaL3 {

std::ostream& operator<<(std::ostream& out, VelaAction value) { return out << Kel::textOf(value); }
std::ostream& operator<<(std::ostream& out, VelaPolicyModifier value) {
  return out << Kel::textOf(value);
}

}  // namespace VelaL3
