#pragma once

#include "Brix/Counted.h"
#include "Brix/Ptr.h"
#include "Brix/Publisher.h"
#include "Kel/TypeDescriptor.h"

namespace [[using gnu: visibility("default")]] Kel {

using Brix::AttrId;
using Brix::threadSafePointers;

/// The base of every framework object, entity or state machine: counted, described, switchable.
class PtrInterface : public Brix::Counted {
 public:
  /// The type's descriptor: the module that defines it, and its index there.
  virtual FwkType fwkType() const noexcept = 0;
  ~PtrInterface() override = default;

  /// Whether its reactors are on.
  bool hasNotificationActive() const noexcept { return notificationActive_; }
  /// Switches the object's reactors on or off; off when an object is made, and switched on by its
  /// creator. Cannot fail: an exception inside ends the process.
  virtual void hasNotificationActiveIs(bool on) noexcept { notificationActive_ = on; }

  /// Whether it ignores every notification.
  bool kelMarkedForDeletion() const noexcept { return markedForDeletion_; }
  /// Sets the mark for deletion; a marked object ignores every notification.
  virtual void kelDoZombieReactors(bool on) noexcept { markedForDeletion_ = on; }

  /// What old-style notifiees register with; null for objects that cannot be watched that way.
  virtual Brix::Publisher notifieeList() const noexcept { return {}; }

 protected:
  PtrInterface() noexcept = default;

 private:
  // One byte in the gap behind the count; what follows in derived classes goes on in that gap.
  bool notificationActive_ : 1 = false;
  bool markedForDeletion_ : 1 = false;
};

}  // namespace Kel
