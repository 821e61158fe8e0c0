#pragma once

#include "VelaL3V2/VelaPriority.h"
#include "VelaL3V2/VelaRuleOriginConfig.h"

namespace [[using gnu: visibility("default")]] VelaL3V2 {

/// One rule of a policy: its origins by name.
class VelaRuleConfig final : public Kel::Entity<VelaRuleConfig, Type::rule> {
 public:
  static constexpr const char* kelTypeName() { return "VelaL3V2::VelaRuleConfig"; }
  explicit VelaRuleConfig(VelaPriority priority) : priority_(priority) {}
  static Brix::Ptr<VelaRuleConfig> VelaRuleConfigIs(VelaPriority priority) {
    return create(priority);
  }

  KEL_CONST(256, priority, VelaPriority)
  /// Who has asked for the rule, and what each says.
  KEL_ENTRY(261, origin, name, VelaRuleOriginConfig)
};

}  // namespace VelaL3V2
