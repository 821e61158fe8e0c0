#pragma once

#include <signal.h>  // NOLINT(modernize-deprecated-headers): sigset_t is not in <csignal>

#include "protocol/Descriptor.h"

namespace Host {

/// While it lives, SIGINT and SIGTERM do not end the program: they make a descriptor readable. Once
/// one has come, none ends it any more: whoever looks at the descriptor does.
class Interruption {
 public:
  Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;
  ~Interruption();

  int descriptor() const { return descriptor_.number(); }

 private:
  sigset_t signals_{};
  sigset_t before_{};
  Descriptor descriptor_;
};

}  // namespace Host
