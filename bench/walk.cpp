#include <memory>

#include "Kel/Set.h"
#include "Keys.h"
#include "Measure.h"

// Walks over sets of 1,000 prefixes, undisturbed and with every second entry deleted at its turn.

namespace Bench {
namespace {

constexpr std::size_t kSize = 1000, kSets = 100;

template <class Container>
void walk(benchmark::State& state) {
  Container all;
  for (const Prefix& key : prefixes(kSize)) {
    all.insert(all.end(), key);
  }
  for (auto _ : state) {
    unsigned sum = 0;
    for (const Prefix& key : all) {
      sum += key.length();
    }
    benchmark::DoNotOptimize(sum);
  }
  itemsPerIteration(state, kSize);
}

/// Kel::Set inserts without a hint.
struct Ours : Kel::Set<Prefix> {
  using Kel::Set<Prefix>::insert;
  void insert(const Iterator& /*hint*/, const Prefix& key) { insert(key); }
};

void deleteSecond(Kel::Set<Prefix>& set) {
  bool second = false;
  for (const Prefix& key : set) {
    if (second) {
      set.erase(key);
    }
    second = !second;
  }
}

template <class Set>
void deleteSecond(Set& set) {
  bool second = false;
  for (auto at = set.begin(); at != set.end();) {
    if (second) {
      set.erase(at++);
    } else {
      ++at;
    }
    second = !second;
  }
}

template <class Set>
void walkWithDeletions(benchmark::State& state) {
  const std::vector<Prefix> keys = prefixes(kSize);
  for (auto _ : state) {
    const auto sets = std::make_unique<Set[]>(kSets);
    for (std::size_t i = 0; i != kSets; ++i) {
      for (const Prefix& key : keys) {
        sets[i].insert(key);
      }
    }
    timed(state, [&] {
      for (std::size_t i = 0; i != kSets; ++i) {
        deleteSecond(sets[i]);
      }
    });
    if (sets[0].size() != kSize / 2) {
      state.SkipWithError("the walk is wrong");
    }
  }
  itemsPerIteration(state, kSets * kSize);
}

BENCHMARK(walk<Ours>)->Name("walk, per entry/ours");
BENCHMARK(walk<std::vector<Prefix>>)->Name("walk, per entry/floor");
BENCHMARK(walkWithDeletions<Kel::Set<Prefix>>)
    ->Name("walk with deletions, per entry/ours")
    ->UseManualTime()
    ->Iterations(5);
#ifdef BENCH_ABSL
using Absl = absl::flat_hash_set<Prefix, KeyHash>;
BENCHMARK(walk<Absl>)->Name("walk, per entry/absl");
BENCHMARK(walkWithDeletions<Absl>)
    ->Name("walk with deletions, per entry/absl")
    ->UseManualTime()
    ->Iterations(5);
#endif

}  // namespace
}  // namespace Bench
