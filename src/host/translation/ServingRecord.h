#pragma once

#include <string>
#include <vector>

#include "data/Trees.h"

namespace Host {

/// The monitor's record that serves a device, worked out from the names alone: the device's own,
/// or, of a pair of devices, that of its first member, else that of its second.
struct ServingRecord {
  ServingRecord(const Trees& trees, const std::string& device);

  std::vector<std::string> keys;                          ///< that are looked up, in this order
  Brix::Ptr<VelaPolicyMonitor::DevicePolicyList> record;  ///< null: none is there
};

}  // namespace Host
