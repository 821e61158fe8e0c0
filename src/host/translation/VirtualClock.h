#pragma once

#include "Kel/System.h"

namespace Host {

/// The framework's clock for as long as this lives: it stands still until it is set.
class VirtualClock {
 public:
  explicit VirtualClock(Kel::Seconds time) : time_(time) {
    Kel::System::clockIs([this] { return time_; });
  }
  VirtualClock(const VirtualClock&) = delete;
  VirtualClock& operator=(const VirtualClock&) = delete;
  ~VirtualClock() { Kel::System::clockIs({}); }

  Kel::Seconds time() const { return time_; }
  void timeIs(Kel::Seconds time) { time_ = time; }

 private:
  Kel::Seconds time_;
};

}  // namespace Host
