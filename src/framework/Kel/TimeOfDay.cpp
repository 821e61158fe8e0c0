#include "Kel/TimeOfDay.h"

#include <cstdint>
#include <ctime>

#include "Kel/Reckoning.h"

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

bool counterHasOneRate() noexcept {
  unsigned a = 0;
  unsigned b = 0;
  unsigned c = 0;
  unsigned d = 0;  // stays so on a processor that does not know the question
  __get_cpuid(0x80000007, &a, &b, &c, &d);
  return (d & (1U << 8U)) != 0;
}

// Each thread's own. Used in this file only, so that its place is known when the library is loaded.
[[gnu::tls_model("initial-exec")]] constinit thread_local Reckoning reckoning;

[[gnu::cold, gnu::noinline]] Seconds askKernel() noexcept {
  static const bool usable = counterHasOneRate();
  const Seconds running = kernelTime(CLOCK_MONOTONIC);
  const std::uint64_t counter = __rdtsc();
  const Seconds time = kernelTime(CLOCK_REALTIME);
  if (!usable) {  // Unreachable: processors that run these tests have a counter of one rate
    return time;
  }
  if (reckoning.isDue(counter, running)) {
    reckoning.learn({counter, time, running, kernelTime(CLOCK_MONOTONIC) - running});
  }
  return time;
}

#endif

}  // namespace

Seconds timeOfDay() noexcept {
#if defined(__x86_64__)
  const std::uint64_t counter = __rdtsc();
  if (reckoning.covers(counter)) [[likely]] {
    return reckoning.timeAt(counter);
  }
  return askKernel();
#else
  return kernelTime(CLOCK_REALTIME);
#endif
}

}  // namespace Kel::Impl
