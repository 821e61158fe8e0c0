#pragma once

#include <string>

#include "control/ControlOptions.h"
#include "text/Console.h"
#include "text/RunOptions.h"

namespace Host {

/// What `vpm ctl apply` is asked for.
struct ApplyRequest : ControlOptions {
  std::string log;      ///< empty or "-": standard input
  bool dryRun = false;  ///< ask what each line would change, and change nothing
};

/// Sends change lines to a running agent, many before the first answer has come. Says which of them
/// failed, and prints what they asked to be shown. Raises std::runtime_error when there is no
/// agent, or none any more.
int apply(const ApplyRequest& request, const RunOptions& options, const Console& console);

}  // namespace Host
