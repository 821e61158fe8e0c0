#pragma once

#include <string>
#include <vector>

#include "text/Console.h"
#include "text/RunOptions.h"

namespace Host {

/// What `vpm replay` is asked to do.
struct ReplayRequest {
  std::vector<std::string> configs;
  std::string leftOver;  ///< a document with version 2 of an earlier run; empty: none
  std::string record;    ///< a file for a change log of what was applied; empty: none
  std::string log;       ///< empty or "-": standard input
  Kel::Seconds time = 0;
  bool start = true;
};

/// Replays a change log on the trees, with a clock of its own, and prints the answers. Documents
/// and a log that is a file are checked whole before anything is done. Raises OutputError.
int replay(const ReplayRequest& request, const RunOptions& options, const Console& console);

}  // namespace Host
