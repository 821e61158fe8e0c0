#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "text/Console.h"
#include "tracing/TraceFilter.h"

namespace Host {

enum class TraceForm : std::uint8_t { lines, json, chrome, statistics, jsonStatistics };

struct ShowTraceRequest {
  std::string path;  ///< a trace's folder, one of its segments, or a core file
  TraceFilter filter;
  TraceForm form = TraceForm::lines;
  std::size_t last = 0;    ///< only so many; 0: all
  bool follow = false;     ///< go on as records are written, until SIGINT or SIGTERM
  bool exitAtEnd = false;  ///< or until the process that writes has ended
};

/// Prints a binary trace. Raises OutputError.
int showTrace(const ShowTraceRequest& request, bool color, const Console& console);

}  // namespace Host
