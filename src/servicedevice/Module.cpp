#include "servicedevice/Module.h"

#include <array>

#include "servicedevice/ServiceDeviceTranslateRootSm.h"

namespace VelaPolicyMonitor {

const Kel::Module& kelModule(ServiceDeviceType /*type*/) {
  // In the order of ServiceDeviceType.
  static constexpr std::array<Kel::Module::TypeFunction, 4> kTypes{
      &Kel::describe<ServiceDeviceTranslateRootSm>,
      &Kel::describe<PerServiceDeviceTranslateSm>,
      &Kel::describe<PerVrfServiceDeviceTranslateSm>,
      &Kel::describe<PerL3IntfServiceDeviceTranslateSm>,
  };
  static constexpr Kel::Module kModule{"VelaPolicyMonitor.servicedevice", kTypes};
  return kModule;
}

}  // namespace VelaPolicyMonitor
