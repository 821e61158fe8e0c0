#pragma once

#include <cstdint>

#include "common/Module.h"

namespace VelaPolicyMonitor {

/// The state machines of the service-device tree, by their fixed indices in their module.
enum class ServiceDeviceType : std::uint16_t { root, perDevice, perVrf, perL3Intf };

const Kel::Module& kelModule(ServiceDeviceType type);

}  // namespace VelaPolicyMonitor
