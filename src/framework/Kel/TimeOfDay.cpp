#include "Kel/TimeOfDay.h"

#include <cmath>
#include <cstdint>
#include <ctime>

#if defined(__x86_64__)
#include <cpuid.h>
#include <x86intrin.h>
#endif

namespace Kel::Impl {
namespace {

Seconds kernelTime(clockid_t clock) noexcept {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<Seconds>(now.tv_sec) + static_cast<Seconds>(now.tv_nsec) * 1e-9;
}

#if defined(__x86_64__)

constexpr Seconds kInterval = 0.010;  // how long the kernel is not asked
constexpr Seconds kStale = 10;        // a tick is not measured over more than this
constexpr Seconds kReading = 2e-6;    // readings that took longer were interrupted
constexpr Seconds kAgreement = 1e-3;  // between two measurements of a tick

bool counterHasOneRate() noexcept {
  unsigned a = 0;
  unsigned b = 0;
  unsigned c = 0;
  unsigned d = 0;
  return __get_cpuid(0x80000007, &a, &b, &c, &d) != 0 && (d & (1U << 8U)) != 0;
}

/// What a thread knows about the counter.
struct Reckoning {
  std::uint64_t counter = 0;   // at the last question to the kernel
  Seconds time = 0;            // of day, then
  Seconds running = 0;         // the clock that nobody sets, then
  Seconds tick = 0;            // the length of one
  std::uint64_t interval = 0;  // in ticks; 0: the kernel is asked every time

  [[gnu::cold, gnu::noinline]] Seconds askKernel() noexcept {
    static const bool usable = counterHasOneRate();
    const Seconds runningBefore = usable ? kernelTime(CLOCK_MONOTONIC) : 0;
    const std::uint64_t now = __rdtsc();
    const Seconds present = kernelTime(CLOCK_REALTIME);
    if (!usable || (runningBefore - running < kInterval && now > counter)) {
      return present;  // too early to learn from it
    }
    if (kernelTime(CLOCK_MONOTONIC) - runningBefore > kReading) {
      return present;  // interrupted: the readings do not belong together
    }
    const Seconds elapsed = runningBefore - running;
    if (elapsed > kStale || now <= counter) {
      interval = 0;  // also the first time: there is nothing to measure from
    } else {
      const Seconds measured = elapsed / static_cast<Seconds>(now - counter);
      // Two measurements in a row must agree before one is believed.
      const bool believed = std::abs(measured - tick) <= tick * kAgreement;
      interval = believed ? static_cast<std::uint64_t>(kInterval / measured) : 0;
      tick = measured;
    }
    counter = now;
    time = present;
    running = runningBefore;
    return present;
  }
};

// Used in this file only, so that its place is known when the library is loaded.
[[gnu::tls_model("initial-exec")]] constinit thread_local Reckoning reckoning;

#endif

}  // namespace

Seconds timeOfDay() noexcept {
#if defined(__x86_64__)
  const std::uint64_t now = __rdtsc();
  const std::uint64_t ticks = now - reckoning.counter;  // huge when the counter went back
  if (ticks < reckoning.interval) [[likely]] {
    return reckoning.time + static_cast<Seconds>(static_cast<std::int64_t>(ticks)) * reckoning.tick;
  }
  return reckoning.askKernel();
#else
  return kernelTime(CLOCK_REALTIME);
#endif
}

}  // namespace Kel::Impl
