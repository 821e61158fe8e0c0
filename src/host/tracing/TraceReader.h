#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Lumo/Records.h"
#include "tracing/TraceMetadata.h"
#include "tracing/TraceSource.h"

namespace Host {

/// Reads the records of a trace in the order of their writing, once: each call of `read` those that
/// have come since the one before. So it reads a trace that is over in one call, and follows one
/// that is being written, through wraps of the ring and on to the trace of the next process.
class TraceReader {
 public:
  /// Raises TraceError when there is no trace.
  explicit TraceReader(std::unique_ptr<TraceSource> source);

  using Each = std::function<void(const Lumo::Record& record, const TraceSite& site)>;
  /// Raises TraceError when the trace is gone.
  void read(const Each& each);

  /// What is wrong with single segments; what could be read of them was delivered.
  const std::vector<std::string>& faults() const { return faults_; }
  /// Of the trace that was read last.
  const TraceMetadata& metadata() const { return *metadata_; }
  const TraceSource& source() const { return *source_; }
  /// The number of the first segment that was read: more than 1 when the ring had wrapped before.
  std::uint64_t firstSegment() const { return first_; }
  /// How many segments, at most, were overwritten between two calls before all was read.
  std::uint64_t missed() const { return missed_; }

 private:
  std::vector<TraceSource::Packet> unread(const TraceSource& source) const;
  bool readOnce(const TraceSource& source, const Each& each);
  void readAll(const TraceSource& source, const Each& each);
  void deliver(const TraceSource& source, const TraceSource::Packet& packet,
               std::string_view records, const Each& each);
  const TraceSite* siteOf(const TraceSource& source, std::uint32_t id);

  bool renewMetadata(const TraceSource& source);

  std::unique_ptr<TraceSource> source_;
  std::string metadataText_;
  std::unique_ptr<TraceMetadata> metadata_;
  std::vector<std::unique_ptr<TraceMetadata>> earlier_;  // callers may remember their sites
  std::uint64_t sequence_ = 0;  // of the segment that was read last; 0: none
  std::size_t done_ = 0;        // bytes of records of that one
  std::uint64_t first_ = 0;
  std::uint64_t missed_ = 0;
  std::vector<std::string> faults_;
};

}  // namespace Host
