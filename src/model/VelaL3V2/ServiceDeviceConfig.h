#pragma once

#include "Vela/DeviceName.h"
#include "Vela/TrafficInspection.h"
#include "VelaL3V2/NetVrfConfig.h"

namespace [[using gnu: visibility("default")]] VelaL3V2 {

/// One service device: its network VRFs by name, and how its traffic is inspected.
class ServiceDeviceConfig final : public Kel::Entity<ServiceDeviceConfig, Type::serviceDevice> {
 public:
  static constexpr const char* kelTypeName() { return "VelaL3V2::ServiceDeviceConfig"; }
  explicit ServiceDeviceConfig(const Vela::DeviceName& deviceName) : deviceName_(deviceName) {}
  static Brix::Ptr<ServiceDeviceConfig> ServiceDeviceConfigIs(const Vela::DeviceName& deviceName) {
    return create(deviceName);
  }

  KEL_CONST(256, deviceName, Vela::DeviceName)
  KEL_ATTR(258, trafficInspection, Vela::TrafficInspection)  ///< As the monitor's record has it.
  KEL_ENTRY(259, netVrf, netVrfName, NetVrfConfig)           ///< By the name in the network.
};

}  // namespace VelaL3V2
