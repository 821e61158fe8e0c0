#include "VelaL3V2/Module.h"

#include <array>

#include "VelaL3V2/VelaL3V2.h"

namespace VelaL3V2 {

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
      &Kel::describe<NetVrfConfig>,
      &Kel::describe<L3IntfConfig>,
  };
  static constexpr Kel::Module kModule{"VelaL3V2", kTypes};
  return kModule;
}

}  // namespace VelaL3V2
