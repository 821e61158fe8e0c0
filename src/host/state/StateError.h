#pragma once

#include <stdexcept>

namespace Host {

/// The state in a folder cannot be gone on from. The message says what was found where, and what
/// to do; nothing in the folder was changed.
class StateError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace Host
