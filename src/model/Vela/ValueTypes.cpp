// The descriptors of this folder's value types.

#include "Kel/Describe.h"
#include "Vela/Vela.h"

namespace Kel {

template <>
const ValueType& valueTypeOf<Vela::DeviceName>() {
  static const ValueType type =
      describeValue<Vela::DeviceName>("Vela::DeviceName", Encoding::string);
  return type;
}

template <>
const ValueType& valueTypeOf<Vela::TrafficInspection>() {
  static const ValueType type =
      describeValue<Vela::TrafficInspection>("Vela::TrafficInspection", Encoding::string);
  return type;
}

namespace {
const ValueTypeRegistration kRegistration{valueTypeOf<Vela::DeviceName>(),
                                          valueTypeOf<Vela::TrafficInspection>()};
}  // namespace

}  // namespace Kel
