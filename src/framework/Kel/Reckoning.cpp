#include "Kel/Reckoning.h"

#include <cmath>

namespace Kel::Impl {
namespace {

constexpr Seconds kStale = 10;        // a tick is not measured over more than this
constexpr Seconds kReading = 2e-6;    // readings that took longer were interrupted
constexpr Seconds kAgreement = 1e-3;  // between two measurements of a tick

}  // namespace

void Reckoning::learn(const Reading& reading) noexcept {
  if (reading.took > kReading) {
    return;
  }
  const Seconds elapsed = reading.running - running_;
  if (elapsed > kStale || reading.counter <= counter_) {
    interval_ = 0;  // also the first time: there is nothing to measure from
  } else {
    const Seconds measured = elapsed / static_cast<Seconds>(reading.counter - counter_);
    const bool believed = std::abs(measured - tick_) <= tick_ * kAgreement;
    interval_ = believed ? static_cast<std::uint64_t>(kInterval / measured) : 0;
    tick_ = measured;
  }
  counter_ = reading.counter;
  time_ = reading.time;
  running_ = reading.running;
}

}  // namespace Kel::Impl
