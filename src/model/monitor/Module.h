#pragma once

#include <cstdint>

#include "Kel/TypeDescriptor.h"

namespace [[using gnu: visibility("default")]] VelaPolicyMonitor {

/// The monitor's types, by their fixed indices in the monitor's module.
enum class MonitorType : std::uint16_t { status, devicePolicyList };

/// The module of the monitor's types.
const Kel::Module& kelModule(MonitorType type);

}  // namespace VelaPolicyMonitor
