#pragma once

#include <cstdint>

#include "Kel/TypeDescriptor.h"

namespace VelaPolicyMonitor {

/// The framework types of this folder, by their fixed indices in its module.
enum class CommonType : std::uint16_t { updateCookie };

const Kel::Module& kelModule(CommonType type);

/// The type `type` of the folder in whose enumeration it is.
template <class Type>
Kel::FwkType fwkTypeOf(Type type) noexcept {
  return {&kelModule(type), static_cast<std::uint16_t>(type)};
}

}  // namespace VelaPolicyMonitor
