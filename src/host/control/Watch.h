#pragma once

#include <string>

#include "control/ControlOptions.h"
#include "text/Console.h"
#include "text/RunOptions.h"

namespace Host {

/// What `vpm ctl watch` is asked for.
struct WatchRequest : ControlOptions {
  std::string path;  ///< empty: everything
};

/// Prints what there is and then each change, until it is interrupted. Raises std::runtime_error
/// when there is no agent, or none any more.
int watch(const WatchRequest& request, const RunOptions& options, const Console& console);

}  // namespace Host
