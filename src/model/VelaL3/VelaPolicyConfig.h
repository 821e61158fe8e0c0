#pragma once

#include "L3/VrfName.h"
#include "VelaL3/VelaRuleConfig.h"

namespace [[using gnu: visibility("default")]] VelaL3 {

/// The policy of one VRF: its rules by priority, and the time at which the last burst of changes
/// ended. Writing that time, also an equal one, is the signal that the burst is complete.
class VelaPolicyConfig final : public Kel::Entity<VelaPolicyConfig, Type::policy> {
 public:
  static constexpr const char* kelTypeName() { return "VelaL3::VelaPolicyConfig"; }
  explicit VelaPolicyConfig(const L3::VrfName& vrfName) : vrfName_(vrfName) {}
  static Brix::Ptr<VelaPolicyConfig> VelaPolicyConfigIs(const L3::VrfName& vrfName) {
    return create(vrfName);
  }

  KEL_CONST(256, vrfName, L3::VrfName)
  KEL_ENTRY(259, rule, priority, VelaRuleConfig)  ///< Sorted, the highest priority first.
  KEL_ATTR(261, timestamp, Kel::Seconds)          ///< When a burst has ended; writing it says so.
};

}  // namespace VelaL3
