// The descriptors of this folder's value types.

#include "Kel/Describe.h"
#include "Norv/Norv.h"

namespace Kel {

template <>
const ValueType& valueTypeOf<Norv::IpGenAddr>() {
  static const ValueType type = describeValue<Norv::IpGenAddr>("Norv::IpGenAddr", Encoding::string);
  return type;
}

template <>
const ValueType& valueTypeOf<Norv::IpGenPrefix>() {
  static const ValueType type =
      describeValue<Norv::IpGenPrefix>("Norv::IpGenPrefix", Encoding::string);
  return type;
}

template <>
const ValueType& valueTypeOf<Norv::IpProto>() {
  static const ValueType type = describeValue<Norv::IpProto>("Norv::IpProto", Encoding::number);
  return type;
}

namespace {
const ValueTypeRegistration kRegistration{
    valueTypeOf<Norv::IpGenAddr>(), valueTypeOf<Norv::IpGenPrefix>(), valueTypeOf<Norv::IpProto>()};
}  // namespace

}  // namespace Kel
