#pragma once

#include <cstddef>

/// While an object of this class lives, one allocation of this thread fails: the first, the second,
/// and so on. Anything a test itself allocates meanwhile counts as well.
class FailingMemory {
 public:
  explicit FailingMemory(std::size_t nth) noexcept;
  FailingMemory(const FailingMemory&) = delete;
  FailingMemory& operator=(const FailingMemory&) = delete;
  ~FailingMemory();

  /// Whether the allocation came that was to fail.
  static bool failed() noexcept;
};
