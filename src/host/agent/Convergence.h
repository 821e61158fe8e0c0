#pragma once

#include <optional>
#include <string>
#include <vector>

#include "data/Trees.h"

namespace Host {

/// How far the translation of a device is that has not converged. A tree in which version 1 does
/// not have the device has no say.
struct Unconverged {
  std::string device;
  std::optional<bool> policies;
  std::optional<bool> serviceDevices;
};

/// The devices of version 1 that have not converged, sorted by name: in one of the trees that have
/// them, the flag of the monitor's record is not set, or there is no record. Of `device` alone when
/// one is named; a device that version 1 does not have has not converged.
std::vector<Unconverged> unconverged(const Trees& trees, const std::optional<std::string>& device);

}  // namespace Host
