#pragma once

#include "Brix/Ptr.h"
#include "Kel/Assert.h"

namespace VelaPolicyMonitor {

/// The version-2 entity that is about to be written. Deleting tolerates null, adding does not:
/// whoever built the machine has given it nowhere to write to.
template <class Entity>
Entity& output(const Brix::Ptr<Entity>& entity, const char* function) {
  Kel::require(static_cast<bool>(entity), "entity != nullptr",
               "an entry is to be added to version 2, but the state machine was built without the "
               "version-2 entity to add it to",
               function);
  return *entity;
}

}  // namespace VelaPolicyMonitor
