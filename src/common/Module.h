#pragma once

#include <cstdint>

#include "Kel/TypeDescriptor.h"

namespace VelaPolicyMonitor {

/// The framework types of this folder, by their fixed indices in its module.
enum class CommonType : std::uint16_t { updateCookie };

const Kel::Module& kelModule(CommonType type);

}  // namespace VelaPolicyMonitor
