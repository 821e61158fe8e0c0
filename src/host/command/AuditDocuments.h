#pragma once

#include <string>
#include <vector>

#include "text/Console.h"
#include "text/RunOptions.h"

namespace Host {

/// Compares version 1, the monitor's records and version 2 as documents have them: what a run has
/// printed and what it was made from. Nothing is translated. Raises OutputError.
int auditDocuments(const std::vector<std::string>& documents, const RunOptions& options,
                   const Console& console);

}  // namespace Host
