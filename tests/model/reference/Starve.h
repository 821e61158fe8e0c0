#pragma once

#include "model/reference/Operation.h"

namespace Reference {

/// What taking memory away has come to.
struct StarveOutcome {
  std::size_t operations = 0;
  std::size_t failures = 0;  ///< allocations that failed, each in a process of its own
  std::size_t endings =
      0;            ///< of these processes that came to their end where nothing may be raised
  Text difference;  ///< what was wrong first; empty: nothing
};

/// Does the operations to a world of the library. Before each one, in a process of its own for each
/// of its allocations, that one fails, and in another process all from that one on. What has to
/// come of it: the operation raises std::bad_alloc or copes, or the process ends for want of memory
/// where nothing may be raised. Roots that are started anew on what was left then come to what
/// fresh ones come to, and in the end no entity and no machine lives on.
///
/// `calm` operations only write version 1 and the records: of others it is not known what fresh
/// roots come to.
StarveOutcome starve(const std::vector<Operation>& operations, bool calm);

}  // namespace Reference
