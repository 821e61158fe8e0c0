#pragma once

#include "VelaL3V2/VelaRuleConfig.h"

namespace [[using gnu: visibility("default")]] VelaL3V2 {

/// The policy of one network VRF: its rules by priority, and the time of its last change (absent
/// until the first one).
class VelaPolicyConfig final : public Kel::Entity<VelaPolicyConfig, Type::policy> {
 public:
  static constexpr const char* kelTypeName() { return "VelaL3V2::VelaPolicyConfig"; }
  explicit VelaPolicyConfig(const Kel::String& netVrfName) : netVrfName_(netVrfName) {}
  static Brix::Ptr<VelaPolicyConfig> VelaPolicyConfigIs(const Kel::String& netVrfName) {
    return create(netVrfName);
  }

  KEL_CONST(256, netVrfName, Kel::String)
  KEL_ENTRY(259, rule, priority, VelaRuleConfig)  ///< Sorted, the highest priority first.
  KEL_ATTR(261, timestamp, Kel::Seconds)          ///< When a burst has changed it last.
};

}  // namespace VelaL3V2
