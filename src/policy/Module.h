#pragma once

#include <cstdint>

#include "common/Module.h"

namespace VelaPolicyMonitor {

/// The state machines of the policy tree, by their fixed indices in their module.
enum class PolicyType : std::uint16_t { root, perDevice, perVrf, perRule, perOrigin, match };

const Kel::Module& kelModule(PolicyType type);

}  // namespace VelaPolicyMonitor
