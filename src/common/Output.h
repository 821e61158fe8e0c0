#pragma once

#include "Brix/Ptr.h"
#include "Kel/Assert.h"
#include "Kel/System.h"
#include "common/UpdateCookie.h"

namespace VelaPolicyMonitor {

/// The version-2 entity that is about to be written. Deleting tolerates null, writing does not:
/// whoever built the machine has given it nowhere to write to.
template <class Entity>
Entity& output(const Brix::Ptr<Entity>& entity, const char* function) {
  Kel::require(static_cast<bool>(entity), "entity != nullptr",
               "version 2 is to be written, but the state machine was built without the version-2 "
               "entity to write to",
               function);
  return *entity;
}

/// The monitor's record of a device, which is read and written throughout: a machine for a device
/// cannot do without.
template <class Record>
Record& recordOf(const Brix::Ptr<Record>& policyList, const char* function) {
  Kel::require(static_cast<bool>(policyList), "policyList != nullptr",
               "the state machine of a device was built without the monitor's record of it",
               function);
  return *policyList;
}

/// Stamps the time once for all that was marked since the last stamp. What an observer of the stamp
/// marks meanwhile is left to the next one.
template <class Entity>
void stamp(Entity& entityV2, const Brix::Ptr<UpdateCookie>& cookie) {
  const Brix::Ptr<UpdateCookie> stamped = cookie;  // the observer may have it replaced
  const std::uint32_t marks = stamped->marks();
  entityV2.timestampIs(Kel::System::currentTime());
  if (stamped->marks() == marks) {
    stamped->updatedIs(false);
  }
}

}  // namespace VelaPolicyMonitor
