// The agent is linked to the entities alone, and loads the library at run time, where it finds the
// factories by their names. Deliberate: it never unloads it, since objects of its types live.
#include <dlfcn.h>

#include <stdexcept>

#include "factories.h"

namespace {

template <class Function>
void find(Function*& function, void* library, const char* name) {
  function = reinterpret_cast<Function*>(dlsym(library, name));
  if (function == nullptr) {
    throw std::runtime_error(dlerror());
  }
}

}  // namespace

Factories factories() {
  void* const library = dlopen("libvelapolicytranslate.so.1", RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    throw std::runtime_error(dlerror());
  }
  Factories found{};
  find(found.policy, library, VelaPolicyMonitor::kPolicyTranslateRootSmFactory);
  find(found.serviceDevice, library, VelaPolicyMonitor::kServiceDeviceTranslateRootSmFactory);
  return found;
}
