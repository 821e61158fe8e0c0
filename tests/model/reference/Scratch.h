#pragma once

#include <cstdint>
#include <map>

#include "model/reference/LibrarySide.h"
#include "model/reference/Operation.h"

namespace Reference {

/// What setting a translation that has followed every change beside a fresh one has come to.
struct ScratchOutcome {
  std::size_t operations = 0;
  std::size_t comparisons = 0;
  std::map<Text, std::size_t> intended;  ///< how often each intended difference was seen
  Text difference;                       ///< the first that is not intended; empty: none
};

/// Does the operations to a world of the library. After each `every`-th, builds fresh roots on
/// copies of version 1 and of the records, with an empty version 2, and compares both versions 2.
/// The operations only write version 1 and the records, and redeliver.
ScratchOutcome compareWithScratch(const std::vector<Operation>& operations, std::size_t every);

/// The first difference between this world, whose roots have just been started, and fresh roots on
/// copies of version 1 and of the records; empty: none but those that are intended.
Text differenceFromFresh(const LibrarySide& world);

}  // namespace Reference
