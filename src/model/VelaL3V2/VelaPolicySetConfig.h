#pragma once

#include "Vela/DeviceName.h"
#include "VelaL3V2/VelaPolicyConfig.h"

namespace [[using gnu: visibility("default")]] VelaL3V2 {

/// The policies of one device, by network VRF name.
class VelaPolicySetConfig final : public Kel::Entity<VelaPolicySetConfig, Type::policySet> {
 public:
  static constexpr const char* kelTypeName() { return "VelaL3V2::VelaPolicySetConfig"; }
  explicit VelaPolicySetConfig(const Vela::DeviceName& deviceName) : deviceName_(deviceName) {}
  static Brix::Ptr<VelaPolicySetConfig> VelaPolicySetConfigIs(const Vela::DeviceName& deviceName) {
    return create(deviceName);
  }

  KEL_CONST(256, deviceName, Vela::DeviceName)
  KEL_ENTRY(259, policy, netVrfName, VelaPolicyConfig)  ///< By the name of the VRF in the network.
};

}  // namespace VelaL3V2
