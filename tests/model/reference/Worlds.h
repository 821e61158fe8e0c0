#pragma once

#include <cstdint>

#include "model/reference/Operation.h"

namespace Reference {

/// What all short histories of a tiny world have come to.
struct WorldsOutcome {
  std::size_t histories = 0;
  std::size_t operations = 0;
  Text difference;                 ///< empty: none
  std::vector<Operation> history;  ///< that of the difference
};

/// Does every sequence of `depth` out of sixteen operations to the tiny policy world (or the tiny
/// service-device world), compares the logs after each operation and the whole worlds at the end.
/// Of the histories, only those are done whose number leaves `part` when divided by `parts`.
WorldsOutcome everyHistory(bool policy, std::size_t depth, std::size_t part, std::size_t parts);

}  // namespace Reference
