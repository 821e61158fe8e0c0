#pragma once

#include "VelaL3/ServiceDeviceConfig.h"

namespace [[using gnu: visibility("default")]] VelaL3 {

/// All service devices: the root of the service-device tree.
class ServiceDeviceSourceConfig final
    : public Kel::Entity<ServiceDeviceSourceConfig, Type::serviceDeviceSource> {
 public:
  static constexpr const char* kelTypeName() { return "VelaL3::ServiceDeviceSourceConfig"; }
  static Brix::Ptr<ServiceDeviceSourceConfig> ServiceDeviceSourceConfigIs() { return create(); }

  /// The firewalls, and the pairs of them.
  KEL_ENTRY(258, serviceDevice, deviceName, ServiceDeviceConfig)
};

}  // namespace VelaL3
