#pragma once

#include <cstddef>

/// While an object of this class lives, one allocation of this thread fails: the first, the second,
/// and so on. Anything a test itself allocates meanwhile counts as well.
class FailingMemory {
 public:
  /// What comes after the `nth` allocation: more memory, or none any more.
  enum class Then { recovers, staysAway };

  explicit FailingMemory(std::size_t nth, Then then = Then::recovers) noexcept;
  FailingMemory(const FailingMemory&) = delete;
  FailingMemory& operator=(const FailingMemory&) = delete;
  ~FailingMemory();

  /// Whether the allocation came that was to fail.
  static bool failed() noexcept;
};
