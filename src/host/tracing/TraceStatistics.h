#pragma once

#include <cstddef>
#include <map>
#include <string>

#include "Kel/Text.h"
#include "tracing/TracePrinter.h"
#include "tracing/TraceReader.h"

namespace Host {

/// Counts records, and says at the end how many there are of which site and how full the ring is.
class TraceStatistics : public TracePrinter {
 public:
  TraceStatistics(ByteSink& out, const TraceReader& reader, bool json)
      : out_(out), reader_(reader), json_(json) {}

  void record(const Lumo::Record& record, const TraceSite& site) override;
  void flush() override {}
  void end() override;

 private:
  struct Ring {
    std::size_t segments = 0;
    std::size_t used = 0;
    std::uint64_t bytes = 0;        // of a segment
    std::uint64_t overwritten = 0;  // segments, since the trace was begun
    std::uint64_t dropped = 0;      // records, while the present segments were written
  };
  Ring ring() const;
  std::string asText(const Ring& ring) const;
  std::string asJson(const Ring& ring) const;

  ByteSink& out_;
  const TraceReader& reader_;
  const bool json_;
  std::size_t records_ = 0;
  Kel::Seconds first_ = 0;
  Kel::Seconds last_ = 0;
  std::map<std::uint32_t, std::size_t> counts_;  // by site
};

}  // namespace Host
