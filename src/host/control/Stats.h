#pragma once

#include "control/ControlOptions.h"
#include "text/Console.h"
#include "text/RunOptions.h"

namespace Host {

/// What `vpm ctl stats` is asked for.
struct StatsRequest : ControlOptions {
  bool prometheus = false;  ///< print the text that Prometheus collects
};

/// Prints what a running agent has done and what it holds. Raises std::runtime_error when there is
/// none.
int stats(const StatsRequest& request, const RunOptions& options, const Console& console);

}  // namespace Host
