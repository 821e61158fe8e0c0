// The descriptor of this folder's value type.

#include "Kel/Describe.h"
#include "L3/VrfName.h"

namespace Kel {

template <>
const ValueType& valueTypeOf<L3::VrfName>() {
  static const ValueType type = describeValue<L3::VrfName>("L3::VrfName", Encoding::string);
  return type;
}

namespace {
const ValueTypeRegistration kRegistration{valueTypeOf<L3::VrfName>()};
}  // namespace

}  // namespace Kel
