#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>
#include <vector>

#include "Lumo/Site.h"

namespace [[using gnu: visibility("default")]] Lumo {

/// One value of a record, where it lies.
struct RecordedValue {
  const ValueType* type;
  std::string_view bytes;  ///< as many as the type says; of text without the NUL
};

/// A record as it lies in a segment. All views end with the memory that was read.
struct Record {
  const Site* site;
  std::uint64_t stamp;    ///< nanoseconds since 1970, strictly increasing
  double seconds;         ///< the time to print
  std::uint64_t subject;  ///< what it is about, as the writer has said
  std::vector<RecordedValue> values;
};

/// Reads records that lie behind one another and calls `each` for every one. Returns the size of
/// those: less than all of `records` when what follows is cut off or names an unknown site, for
/// which `siteOf` returns null.
std::size_t readRecords(std::string_view records,
                        const std::function<const Site*(std::uint32_t)>& siteOf,
                        const std::function<void(const Record&)>& each);

/// Reads the records of a ring, oldest first, and calls `each` for every one. `memory` is that of
/// all segments behind one another (TraceFile::memory or the files); `siteOf` finds a site by its
/// number and returns null for an unknown one. False when a segment does not hold what its header
/// says or names an unknown site; the records of that segment up to there have been delivered.
bool forEachRecord(std::span<const std::byte> memory, std::size_t segmentSize,
                   const std::function<const Site*(std::uint32_t)>& siteOf,
                   const std::function<void(const Record&)>& each);

}  // namespace Lumo
