#pragma once

#include <cstddef>
#include <string>

#include "Kel/TextTrace.h"
#include "text/TraceSubject.h"

namespace Host {

/// What the commands that run the library have in common.
struct RunOptions {
  std::string output;                             ///< empty: standard output
  std::string trace;                              ///< empty: none; "-": standard error
  std::string traceFile;                          ///< folder of the binary trace; empty: none
  std::size_t traceSize = std::size_t{8} << 20U;  ///< of the binary trace, in bytes
  Kel::TextTrace::Levels traceLevels = Kel::TextTrace::kAllLevels;
  TraceSubject traceOnly;  ///< of both traces
  bool progress = false;
  bool color = false;     ///< of messages
  bool outColor = false;  ///< of what is printed
};

}  // namespace Host
