#pragma once

#include <iosfwd>

#include "text/ByteSink.h"

namespace Host {

/// Where a run of the program speaks: what it makes goes to `out`, what it has to say to `err`.
struct Console {
  ByteSink& out;
  std::ostream& err;
  bool errIsTerminal = false;
  bool outIsTerminal = false;
};

}  // namespace Host
