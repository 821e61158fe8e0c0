#pragma once

#include "VelaL3/VrfConfig.h"

namespace [[using gnu: visibility("default")]] VelaL3 {

/// One service device: a firewall, or a pair of firewalls.
class ServiceDeviceConfig final : public Kel::Entity<ServiceDeviceConfig, Type::serviceDevice> {
 public:
  static constexpr const char* kelTypeName() { return "VelaL3::ServiceDeviceConfig"; }
  explicit ServiceDeviceConfig(const Kel::String& deviceName) : deviceName_(deviceName) {}
  static Brix::Ptr<ServiceDeviceConfig> ServiceDeviceConfigIs(const Kel::String& deviceName) {
    return create(deviceName);
  }

  KEL_CONST(256, deviceName, Kel::String)
  KEL_ENTRY(259, vrf, vrfName, VrfConfig)  ///< By the name on the device.
};

}  // namespace VelaL3
