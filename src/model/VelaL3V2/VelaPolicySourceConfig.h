#pragma once

#include "VelaL3V2/VelaPolicySetConfig.h"

namespace [[using gnu: visibility("default")]] VelaL3V2 {

/// The policies of all devices: the root of the policy tree.
class VelaPolicySourceConfig final
    : public Kel::Entity<VelaPolicySourceConfig, Type::policySource> {
 public:
  static constexpr const char* kelTypeName() { return "VelaL3V2::VelaPolicySourceConfig"; }
  static Brix::Ptr<VelaPolicySourceConfig> VelaPolicySourceConfigIs() { return create(); }

  KEL_ENTRY(258, policySet, deviceName, VelaPolicySetConfig)  ///< The policies of each device.
};

}  // namespace VelaL3V2
