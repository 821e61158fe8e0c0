#pragma once

#include "Kel/LogHandle.h"

namespace [[using gnu: visibility("default")]] VelaPolicyMonitor {

/// The message that the hosting agent raises when a mount of shared state has timed out; its
/// arguments are the agent, the source and a detail. Registered when the library is loaded.
const Kel::LogHandle& mountTimeout();

}  // namespace VelaPolicyMonitor
