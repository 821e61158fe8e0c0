#pragma once

#include <string>
#include <vector>

#include "host/Console.h"
#include "host/RunOptions.h"
#include "host/SubtreeAudit.h"

namespace Host {

class JsonWriter;

/// Writes {"equal": ..., "differences": [...]}. Whether one of them is alarming.
bool writeDifferences(JsonWriter& json, const std::vector<Difference>& differences);

/// Compares version 1, the monitor's records and version 2 as documents have them: what a run has
/// printed and what it was made from. Nothing is translated. Raises OutputError.
int auditDocuments(const std::vector<std::string>& documents, const RunOptions& options,
                   const Console& console);

}  // namespace Host
