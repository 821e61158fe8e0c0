#pragma once

#include <cstddef>
#include <cstdint>

#include "model/reference/Collection.h"

namespace Reference {

/// What a long run through one world of the library came to.
struct SoakOutcome {
  std::size_t residentBefore = 0;  ///< kilobytes, after a tenth of the operations
  std::size_t residentAfter = 0;   ///< at the end
  double costOfFresh = 0;          ///< nanoseconds that 99 of 100 changes stay below, in a world
                                   ///< that is a hundredth as old
  double costOfOld = 0;            ///< the same in the world that has been through all
};

/// Does so many operations (a multiple of 100) of a calm seed to one world of the library, without
/// a trace.
SoakOutcome soak(std::size_t operations, std::uint64_t seed);

}  // namespace Reference
