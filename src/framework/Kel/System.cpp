#include "Kel/System.h"

#include <atomic>
#include <ctime>
#include <utility>

#include "Kel/TimeOfDay.h"

namespace Kel::System {
namespace {

// Never destroyed: state machines that die after main returns still read the time.
std::function<Seconds()>& ownClock() {
  static auto* const clock = new std::function<Seconds()>;
  return *clock;
}

constinit std::atomic<bool> hasOwnClock{false};

}  // namespace

Seconds currentTime() {
  if (hasOwnClock.load(std::memory_order_acquire)) {
    return ownClock()();
  }
  return Impl::timeOfDay();
}

void clockIs(std::function<Seconds()> clock) {
  const bool set = static_cast<bool>(clock);
  ownClock() = std::move(clock);
  hasOwnClock.store(set, std::memory_order_release);
}

}  // namespace Kel::System
