#pragma once

#include "Kel/Walk.h"

namespace [[using gnu: visibility("default")]] Kel {

/// A walk over a sorted collection: it remembers its place, and looks for the key after its own
/// when the collection has changed since.
class SortedWalk : public Walk {
 public:
  /// To be called by the collection after every change of its keys.
  static void changed(const Anchor& collection) noexcept {
    for (Walk* walk = collection.walks(); walk != nullptr; walk = walk->next()) {
      static_cast<SortedWalk*>(walk)->stale_ = true;
    }
  }

 protected:
  using Walk::Walk;

  bool stale_ = false;
};

}  // namespace Kel
