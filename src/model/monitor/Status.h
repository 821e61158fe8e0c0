#pragma once

#include "monitor/DevicePolicyList.h"

namespace [[using gnu: visibility("default")]] VelaPolicyMonitor {

/// What the monitor knows: one record per device.
class Status final : public Kel::Entity<Status, MonitorType::status> {
 public:
  static constexpr const char* kelTypeName() { return "VelaPolicyMonitor::Status"; }
  static Brix::Ptr<Status> StatusIs() { return create(); }

  KEL_ENTRY(257, devicePolicyList, deviceName, DevicePolicyList)  ///< What is known of each device.
};

}  // namespace VelaPolicyMonitor
