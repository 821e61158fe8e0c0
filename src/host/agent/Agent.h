#pragma once

#include <string>
#include <vector>

#include "text/Console.h"
#include "text/RunOptions.h"

namespace Host {

/// What `vpm agent` is asked to do.
struct AgentRequest {
  std::vector<std::string> configs;
  std::string listen;  ///< empty: see socketPath
  std::string state;   ///< a folder to go on from after a restart; empty: none
  std::string record;  ///< a file for a change log of what is applied; empty: none
  bool watch = false;  ///< whether saved edits of the documents are followed
};

/// Runs both trees on what the documents say, and answers whoever connects to the control socket,
/// until it is told to stop. Raises OutputError.
int agent(const AgentRequest& request, const RunOptions& options, const Console& console);

}  // namespace Host
