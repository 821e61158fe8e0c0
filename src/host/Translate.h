#pragma once

#include <string>
#include <vector>

#include "Kel/TextTrace.h"
#include "host/Console.h"

namespace Host {

/// What the commands that run the library have in common.
struct RunOptions {
  std::string output;  ///< empty: standard output
  std::string trace;   ///< empty: none; "-": standard error
  Kel::TextTrace::Levels traceLevels = Kel::TextTrace::kAllLevels;
  bool progress = false;
  bool color = false;
};

/// Reads the documents into one configuration, runs both trees on it, and prints version 2 and the
/// monitor's records as one document. The clock stands at `time`, so that the same documents always
/// give the same bytes. Raises OutputError.
int translate(const std::vector<std::string>& documents, Kel::Seconds time,
              const RunOptions& options, const Console& console);

}  // namespace Host
