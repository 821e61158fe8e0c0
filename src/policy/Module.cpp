#include "policy/Module.h"

#include <array>

#include "policy/PolicyTranslateRootSm.h"

namespace VelaPolicyMonitor {

const Kel::Module& kelModule(PolicyType /*type*/) {
  // In the order of PolicyType.
  static constexpr std::array<Kel::Module::TypeFunction, 6> kTypes{
      &Kel::describe<PolicyTranslateRootSm>,      &Kel::describe<PolicyTranslatePerDeviceSm>,
      &Kel::describe<PolicyTranslatePerVrfSm>,    &Kel::describe<PolicyTranslatePerRuleSm>,
      &Kel::describe<PolicyTranslatePerOriginSm>, &Kel::describe<PolicyTranslateMatchSm>,
  };
  static constexpr Kel::Module kModule{"VelaPolicyMonitor.policy", kTypes};
  return kModule;
}

}  // namespace VelaPolicyMonitor
