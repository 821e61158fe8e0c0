#pragma once

#include <atomic>
#include <cstdint>

namespace [[using gnu: visibility("default")]] Kel {

/// A number of events since the process began. Any thread may read it at any time. It is exact as
/// long as one thread at a time counts: what two count at the same instant may be one, which is
/// the price of counting in the time of a plain increment.
class EventCount {
 public:
  /// So many more.
  [[gnu::always_inline]] void count(std::uint64_t more = 1) noexcept {
    value_.store(value() + more, std::memory_order_relaxed);
  }
  /// How many until now.
  std::uint64_t value() const noexcept { return value_.load(std::memory_order_relaxed); }

 private:
  std::atomic<std::uint64_t> value_{0};
};

/// What the entities of one type have been doing.
struct EntityCounts {
  /// Changes that were published, whether somebody subscribed or not.
  EventCount notifications;
  /// Attributes and values of maps that were written with the value that they had; members and
  /// values that were inserted though they were there, or erased though they were not.
  EventCount unchangedWrites;
};

}  // namespace Kel
