#pragma once

#include <cstdint>

#include "Kel/TypeDescriptor.h"

namespace [[using gnu: visibility("default")]] VelaL3V2 {

/// The entity types of this module, by their fixed indices.
enum class Type : std::uint16_t {
  policySource,
  policySet,
  policy,
  rule,
  origin,
  match,
  serviceDeviceSource,
  serviceDevice,
  netVrf,
  l3Intf,
};

/// The module that a type of this namespace belongs to.
const Kel::Module& kelModule(Type type);

}  // namespace VelaL3V2
