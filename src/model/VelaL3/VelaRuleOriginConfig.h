#pragma once

#include "VelaL3/VelaAction.h"
#include "VelaL3/VelaMatchConfig.h"
#include "VelaL3/VelaPolicyModifier.h"

namespace [[using gnu: visibility("default")]] VelaL3 {

/// One origin of a rule: who asked for it, and what it says. An absent action means forward, an
/// absent log flag false, absent tags the empty text.
class VelaRuleOriginConfig final : public Kel::Entity<VelaRuleOriginConfig, Type::origin> {
 public:
  static constexpr const char* kelTypeName() { return "VelaL3::VelaRuleOriginConfig"; }
  explicit VelaRuleOriginConfig(const Kel::String& name) : name_(name) {}
  static Brix::Ptr<VelaRuleOriginConfig> VelaRuleOriginConfigIs(const Kel::String& name) {
    return create(name);
  }

  KEL_CONST(256, name, Kel::String)
  KEL_ATTR(259, tags, Kel::String)                     ///< Free text.
  KEL_ATTR(260, description, Kel::String)              ///< For people; nothing reacts to it.
  KEL_SET(261, policyModifierSet, VelaPolicyModifier)  ///< How the rule is applied.
  KEL_ATTR(262, owner, Kel::String)                    ///< For people; nothing reacts to it.
  KEL_SINGLE(263, match, VelaMatchConfig)              ///< Absent: no criteria were given.
  KEL_ATTR(264, action, VelaAction)                    ///< What to do with the traffic.
  KEL_ATTR(265, log, bool)                             ///< Whether hits are logged.
};

}  // namespace VelaL3
