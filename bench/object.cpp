#include <array>
#include <vector>

#include "Kel/Slab.h"
#include "Measure.h"

// Creation and destruction of an object of 48 bytes. The peers jemalloc and mimalloc are the floor
// with another heap loaded before it.

namespace Bench {
namespace {

struct Plain {
  std::array<std::uint64_t, 6> content{};
};
struct Tracked : Plain, Kel::SlabAllocated<Tracked> {
  static constexpr const char* kelTypeName() { return "Bench::Tracked"; }
};

template <class Object>
void pair(benchmark::State& state) {
  for (auto _ : state) {
    auto* object = new Object;
    benchmark::DoNotOptimize(object);
    delete object;
  }
}

// Objects come by the hundred thousand and nine of ten end in random order. What is timed is that
// as many come anew, and end in the order of their coming.
template <class Object>
void pairAfterShuffle(benchmark::State& state) {
  constexpr std::size_t kAll = 400'000, kKept = kAll / 10;
  const std::vector<std::uint32_t> order = shuffled(kAll);
  std::vector<Object*> first(kAll), second(kAll - kKept);
  for (auto _ : state) {
    for (Object*& object : first) {
      object = new Object;
    }
    for (std::size_t i = kKept; i != kAll; ++i) {
      delete first[order[i]];
    }
    timed(state, [&] {
      for (Object*& object : second) {
        object = new Object;
      }
      for (Object* const object : second) {
        delete object;
      }
    });
    for (std::size_t i = 0; i != kKept; ++i) {
      delete first[order[i]];
    }
  }
  itemsPerIteration(state, second.size());
}

BENCHMARK(pair<Tracked>)->Name("object creation and destruction/ours");
BENCHMARK(pair<Plain>)->Name("object creation and destruction/floor");
BENCHMARK(pairAfterShuffle<Tracked>)
    ->Name("object pair after a shuffled teardown/ours")
    ->UseManualTime()
    ->Iterations(3);
BENCHMARK(pairAfterShuffle<Plain>)
    ->Name("object pair after a shuffled teardown/floor")
    ->UseManualTime()
    ->Iterations(3);

}  // namespace
}  // namespace Bench
