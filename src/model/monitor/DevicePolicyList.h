#pragma once

#include "Kel/Attributes.h"
#include "L3/VrfName.h"
#include "Vela/TrafficInspection.h"
#include "monitor/Module.h"

namespace [[using gnu: visibility("default")]] VelaPolicyMonitor {

/// The monitor's record of one device: how its VRFs are called in the network and how its traffic
/// is inspected, written by the monitor; and whether the device's policies and its service-device
/// configuration have been translated, written by the translation and never set back.
class DevicePolicyList final : public Kel::Entity<DevicePolicyList, MonitorType::devicePolicyList> {
 public:
  static constexpr const char* kelTypeName() { return "VelaPolicyMonitor::DevicePolicyList"; }
  explicit DevicePolicyList(const Kel::String& deviceName) : deviceName_(deviceName) {}
  static Brix::Ptr<DevicePolicyList> DevicePolicyListIs(const Kel::String& deviceName) {
    return create(deviceName);
  }

  KEL_CONST(256, deviceName, Kel::String)
  KEL_ATTR(257, policyConverge, bool)         ///< All policies were translated once.
  KEL_ATTR(258, serviceDeviceConverge, bool)  ///< The same of the service device.
  /// From the VRF's name to its network VRF name; an empty name counts as none.
  KEL_MAP(259, netVrfNameByVrf, vrfName, Kel::String, netVrfName, Kel::String)
  KEL_ATTR(260, trafficInspection, Vela::TrafficInspection)  ///< None: no bit.
};

}  // namespace VelaPolicyMonitor
