#pragma once

#include <string>
#include <vector>

#include "control/Explain.h"

namespace Host {

/// What `vpm explain` is asked for.
struct ExplainDocumentsRequest : ExplainRequest {
  std::vector<std::string> configs;  ///< none: ask an agent
  std::string leftOver;              ///< version 2 of an earlier run; empty: none
};

/// Runs both trees on documents, and prints why something is in version 2, or is not.
int explainDocuments(const ExplainDocumentsRequest& request, const RunOptions& options,
                     const Console& console);

}  // namespace Host
