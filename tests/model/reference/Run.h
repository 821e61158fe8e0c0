#pragma once

#include <cstdint>

#include "model/reference/Operation.h"
#include "model/reference/World.h"

namespace Reference {

/// What a run came to.
struct Outcome {
  std::size_t operations = 0;   ///< done, until the first difference
  std::size_t comparisons = 0;  ///< of whole worlds; the logs are compared after each operation
  std::size_t endings = 0;      ///< of the process, as expected
  Text difference;              ///< empty: none
  Hits hits;
};

/// Does the operations to a world of the reference model and to one of the library, and compares
/// the logs after each, the whole worlds after each `every`-th and at the end.
Outcome run(const std::vector<Operation>& operations, const Seen& seen, std::size_t every);

/// The operations of a seed.
std::vector<Operation> operationsOf(std::uint64_t seed, std::size_t count, Seen& seen);

/// The operations of a seed that only write version 1 and the records, and redeliver.
std::vector<Operation> calmOperationsOf(std::uint64_t seed, std::size_t count);

/// As few of the operations as still come to a difference.
std::vector<Operation> shrunk(std::vector<Operation> operations, const Seen& seen);

}  // namespace Reference
