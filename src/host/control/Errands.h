#pragma once

#include <optional>
#include <string>

#include "control/ControlOptions.h"
#include "text/Console.h"
#include "text/RunOptions.h"

namespace Host {

// Single questions to a running agent. They raise std::runtime_error when there is none.

/// Prints where version 1 and version 2 differ: a table for people, or the audit as it was
/// answered.
int auditAgent(const ControlOptions& request, const RunOptions& options, const Console& console);

/// What `vpm ctl trace` is asked for: a text that is not there stays as it is, an empty one lifts
/// its limit.
struct TraceRequest : ControlOptions {
  std::optional<std::string> levels;
  std::optional<std::string> device;
  std::optional<std::string> vrf;
  std::optional<std::string> rule;
  std::optional<std::string> handler;
};

/// Sets what the agent traces, and prints what it is then.
int traceScope(const TraceRequest& request, const RunOptions& options, const Console& console);

/// What `vpm ctl wait` is asked for.
struct WaitRequest : ControlOptions {
  std::string device;  ///< empty: all
  double timeout = 0;  ///< in seconds
};

/// Waits until version 2 has converged; says what has not when the time is up.
int waitConverged(const WaitRequest& request, const RunOptions& options, const Console& console);

/// Lets the agent read its documents again.
int reload(const ControlOptions& request, const RunOptions& options, const Console& console);

/// Ends the agent.
int stop(const ControlOptions& request, const RunOptions& options, const Console& console);

}  // namespace Host
