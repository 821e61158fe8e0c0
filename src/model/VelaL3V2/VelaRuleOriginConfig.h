#pragma once

#include "VelaL3V2/VelaAction.h"
#include "VelaL3V2/VelaMatchConfig.h"
#include "VelaL3V2/VelaPolicyModifier.h"

namespace [[using gnu: visibility("default")]] VelaL3V2 {

/// One origin of a rule: who asked for it, and what it says.
class VelaRuleOriginConfig final : public Kel::Entity<VelaRuleOriginConfig, Type::origin> {
 public:
  static constexpr const char* kelTypeName() { return "VelaL3V2::VelaRuleOriginConfig"; }
  explicit VelaRuleOriginConfig(const Kel::String& name) : name_(name) {}

  KEL_CONST(256, name, Kel::String)
  KEL_ATTR(259, tags, Kel::String)
  KEL_SET(261, policyModifierSet, VelaPolicyModifier)
  KEL_SINGLE(263, match, VelaMatchConfig)
  KEL_ATTR(264, action, VelaAction)
  KEL_ATTR(265, logEnabled, bool)
};

}  // namespace VelaL3V2
