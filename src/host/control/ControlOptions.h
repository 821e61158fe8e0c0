#pragma once

#include <string>

namespace Host {

/// What all commands that talk to an agent have in common.
struct ControlOptions {
  std::string socket;  ///< empty: where agents listen unless told otherwise
  bool json = false;   ///< print JSON, for programs
};

}  // namespace Host
