#include "monitor/Module.h"

#include <array>

#include "monitor/Status.h"

namespace VelaPolicyMonitor {

const Kel::Module& kelModule(MonitorType /*type*/) {
  // In the order of MonitorType.
  static constexpr std::array<Kel::Module::TypeFunction, 2> kTypes{
      &Kel::describe<Status>,
      &Kel::describe<DevicePolicyList>,
  };
  static constexpr Kel::Module kModule{"VelaPolicyMonitor", kTypes};
  return kModule;
}

}  // namespace VelaPolicyMonitor
