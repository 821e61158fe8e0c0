#pragma once

#include <string>
#include <vector>

#include "text/Console.h"
#include "text/RunOptions.h"

namespace Host {

/// Reads the documents into one configuration, runs both trees on it, and prints version 2 and the
/// monitor's records as one document. The clock stands at `time`, so that the same documents always
/// give the same bytes. Raises OutputError.
int translate(const std::vector<std::string>& documents, Kel::Seconds time,
              const RunOptions& options, const Console& console);

}  // namespace Host
