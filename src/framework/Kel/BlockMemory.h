#pragma once

#include <cstddef>

namespace [[using gnu: visibility("default")]] Kel {

/// Memory for what collections keep their slots in. Small blocks come from slabs, one for each
/// size: they lie close together and are given back without a look at them, while the heap of the
/// process keeps notes before each block, which have left the caches when a tree goes.
class BlockMemory {
 public:
  /// Raises std::bad_alloc. Aligned for numbers of 8 bytes.
  static void* allocate(std::size_t bytes);
  /// Takes back a block of so many bytes.
  static void deallocate(void* block, std::size_t bytes) noexcept;
};

}  // namespace Kel
