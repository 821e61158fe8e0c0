#pragma once

#include <string>

#include "Kel/TextTrace.h"

namespace Host {

/// What the commands that run the library have in common.
struct RunOptions {
  std::string output;  ///< empty: standard output
  std::string trace;   ///< empty: none; "-": standard error
  Kel::TextTrace::Levels traceLevels = Kel::TextTrace::kAllLevels;
  bool progress = false;
  bool color = false;     ///< of messages
  bool outColor = false;  ///< of what is printed
};

}  // namespace Host
