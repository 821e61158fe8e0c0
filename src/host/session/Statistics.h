#pragma once

#include <cstddef>

namespace Host {

class JsonWriter;

/// How much a session has done. Only counts, no times: the same lines give the same counts.
struct Statistics {
  std::size_t applied = 0;  ///< lines that were applied without an error
  std::size_t failed = 0;   ///< lines with an error, refused or not
  std::size_t writes = 0;   ///< single writes to version 1 and the monitor, and announcements
};

/// The member "stats": what was done, and the objects that there are by type, with their bytes.
void writeStatistics(JsonWriter& json, const Statistics& statistics);
/// What stands in that member, without its braces.
void writeStatisticsMembers(JsonWriter& json, const Statistics& statistics);

}  // namespace Host
