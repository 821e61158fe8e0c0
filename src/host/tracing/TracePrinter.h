#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "Lumo/Records.h"
#include "text/ByteSink.h"
#include "tracing/TraceMetadata.h"

namespace Host {

/// Prints records in some form.
class TracePrinter {
 public:
  TracePrinter() = default;
  TracePrinter(const TracePrinter&) = delete;
  TracePrinter& operator=(const TracePrinter&) = delete;
  virtual ~TracePrinter() = default;

  virtual void record(const Lumo::Record& record, const TraceSite& site) = 0;
  /// No more records at the moment: all that is printed must be seen.
  virtual void flush() = 0;
  virtual void end() { flush(); }
};

/// One line per record: as the text trace prints it, or as a JSON object. When `last` is not 0 only
/// so many are printed, the last ones before the first flush.
std::unique_ptr<TracePrinter> textPrinter(ByteSink& out, std::size_t last);
std::unique_ptr<TracePrinter> jsonPrinter(ByteSink& out, std::size_t last);

/// A timeline, as viewers of Chrome's trace event format show it: runs of handlers as slices.
std::unique_ptr<TracePrinter> chromePrinter(ByteSink& out, long processId);

}  // namespace Host
