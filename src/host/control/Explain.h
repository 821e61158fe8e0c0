#pragma once

#include <simdjson.h>

#include <string>

#include "control/ControlOptions.h"
#include "text/Console.h"
#include "text/RunOptions.h"

namespace Host {

/// What `vpm ctl explain` is asked for.
struct ExplainRequest : ControlOptions {
  std::string path;
};

/// Prints why something is in the agent's version 2, or is not. Raises std::runtime_error when
/// there is no agent.
int explainAgent(const ExplainRequest& request, const RunOptions& options, const Console& console);

/// Prints an explanation as it is answered: for people, or as JSON.
void printExplanation(const simdjson::dom::object& explanation, bool json, const Console& console);

}  // namespace Host
