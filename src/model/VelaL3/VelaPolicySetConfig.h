#pragma once

#include "VelaL3/VelaPolicyConfig.h"

namespace [[using gnu: visibility("default")]] VelaL3 {

/// The policies of one device, by VRF.
class VelaPolicySetConfig final : public Kel::Entity<VelaPolicySetConfig, Type::policySet> {
 public:
  static constexpr const char* kelTypeName() { return "VelaL3::VelaPolicySetConfig"; }
  explicit VelaPolicySetConfig(const Kel::String& deviceName) : deviceName_(deviceName) {}
  static Brix::Ptr<VelaPolicySetConfig> VelaPolicySetConfigIs(const Kel::String& deviceName) {
    return create(deviceName);
  }

  KEL_CONST(256, deviceName, Kel::String)
  KEL_ENTRY(259, policy, vrfName, VelaPolicyConfig)  ///< By the name of the VRF on the device.
};

}  // namespace VelaL3
