#include "VelaL3/Module.h"

#include <array>

#include "VelaL3/VelaL3.h"

namespace VelaL3 {

const Kel::Module& kelModule(Type /*type*/) {
  // In the order of Type.
  static constexpr std::array<Kel::Module::TypeFunction, 10> kTypes{
      &Kel::describe<VelaPolicySourceConfig>,
      &Kel::describe<VelaPolicySetConfig>,
      &Kel::describe<VelaPolicyConfig>,
      &Kel::describe<VelaRuleConfig>,
      &Kel::describe<VelaRuleOriginConfig>,
      &Kel::describe<VelaMatchConfig>,
      &Kel::describe<ServiceDeviceSourceConfig>,
      &Kel::describe<ServiceDeviceConfig>,
      &Kel::describe<VrfConfig>,
      &Kel::describe<L3IntfConfig>,
  };
  static constexpr Kel::Module kModule{"VelaL3", kTypes};
  return kModule;
}

}  // namespace VelaL3
