#pragma once

#include <string>

#include "control/ControlOptions.h"
#include "text/Console.h"
#include "text/RunOptions.h"

namespace Host {

/// What `vpm ctl show` is asked for: a path, or whole parts of the data; version 2 when nothing is
/// said.
struct ShowRequest : ControlOptions {
  std::string path;
  bool v1 = false;
  bool v2 = false;
  bool status = false;
};

/// Prints what a running agent holds. Raises std::runtime_error when there is none.
int show(const ShowRequest& request, const RunOptions& options, const Console& console);

}  // namespace Host
