#include "Kel/Walk.h"

namespace Kel {

Anchor::~Anchor() {
  for (Walk* walk = walks(); walk != nullptr; walk = walk->next_) {
    walk->owner_ = nullptr;
  }
}

// Only for a walk that is outlived by one begun later: iterators that were copied or assigned.
void Walk::unlink() noexcept {
  Walk* later = owner_->walks();
  while (later->next_ != this) {
    later = later->next_;
  }
  later->next_ = next_;
}

}  // namespace Kel
