#pragma once

#include <cstdint>

#include "Kel/Text.h"

namespace Kel::Impl {

/// The time of day by a counter that runs at one rate, between two questions to the kernel.
class Reckoning {
 public:
  /// What the clocks said when the kernel was asked.
  struct Reading {
    std::uint64_t counter;
    Seconds time;     ///< of day
    Seconds running;  ///< the clock that nobody sets
    Seconds took;     ///< by that clock, from the first of these answers to the last
  };

  /// Whether the time is known at this state of the counter: for ten milliseconds from the last
  /// reading, once two measurements of a tick in a row have agreed.
  bool covers(std::uint64_t counter) const noexcept {
    return counter - counter_ < interval_;  // huge when the counter went back
  }
  /// The time there.
  Seconds timeAt(std::uint64_t counter) const noexcept {
    return time_ + static_cast<Seconds>(static_cast<std::int64_t>(counter - counter_)) * tick_;
  }
  /// Whether there is something to learn from a reading now, or not enough time has gone by.
  bool isDue(std::uint64_t counter, Seconds running) const noexcept {
    return running - running_ >= kInterval || counter <= counter_;
  }
  /// Takes a reading over. One that was interrupted is ignored: its answers do not belong together.
  void learn(const Reading& reading) noexcept;

 private:
  static constexpr Seconds kInterval = 0.010;  // how long the kernel is not asked

  std::uint64_t counter_ = 0;   // at the last reading
  Seconds time_ = 0;            // then
  Seconds running_ = 0;         // then
  Seconds tick_ = 0;            // the length of one
  std::uint64_t interval_ = 0;  // in ticks; 0: the kernel is asked every time
};

}  // namespace Kel::Impl
