#include <atomic>
#include <memory>

#include "Brix/Counted.h"
#include "Brix/Ptr.h"
#include "Measure.h"

// Copy and destruction of a counted pointer, against the bare count.

namespace Bench {
namespace {

class Object final : public Brix::Counted {};

void ours(benchmark::State& state, bool threadSafe) {
  Brix::Ptr<Object> object(new Object, Brix::adopt);
  benchmark::DoNotOptimize(object);
  Brix::threadSafePointers = threadSafe;
  for (auto _ : state) {
    const Brix::Ptr<Object> copy = object;
    benchmark::DoNotOptimize(copy.get());
  }
  Brix::threadSafePointers = false;
}

void plainCount(benchmark::State& state) {
  std::uint32_t count = 1;
  for (auto _ : state) {
    benchmark::DoNotOptimize(++count);
    benchmark::DoNotOptimize(--count);
    if (count == 0) {
      break;
    }
  }
}

void atomicCount(benchmark::State& state) {
  std::atomic<std::uint32_t> count{1};
  benchmark::DoNotOptimize(&count);
  for (auto _ : state) {
    count.fetch_add(1, std::memory_order_relaxed);
    if (count.fetch_sub(1, std::memory_order_acq_rel) == 1) {
      break;
    }
  }
}

BENCHMARK_CAPTURE(ours, off, false)->Name("pointer copy and destruction, switch off/ours");
BENCHMARK(plainCount)->Name("pointer copy and destruction, switch off/floor");
BENCHMARK_CAPTURE(ours, on, true)->Name("pointer copy and destruction, switch on/ours");
BENCHMARK(atomicCount)->Name("pointer copy and destruction, switch on/floor");

}  // namespace
}  // namespace Bench
