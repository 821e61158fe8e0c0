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
  static Brix::Ptr<VelaRuleOriginConfig> VelaRuleOriginConfigIs(const Kel::String& name) {
    return create(name);
  }

  KEL_CONST(256, name, Kel::String)
  KEL_ATTR(259, tags, Kel::String)                     ///< Free text.
  KEL_SET(261, policyModifierSet, VelaPolicyModifier)  ///< How the rule is applied.
  KEL_SINGLE(263, match, VelaMatchConfig)              ///< Absent: no criteria were given.
  KEL_ATTR(264, action, VelaAction)                    ///< What to do with the traffic.
  KEL_ATTR(265, logEnabled, bool)                      ///< Whether hits are logged.
};

}  // namespace VelaL3V2
