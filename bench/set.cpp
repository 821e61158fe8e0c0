#include "Kel/Set.h"

#include <memory>
#include <string>
#include <unordered_set>

#include "Keys.h"
#include "Measure.h"

// Sets of prefixes of several sizes. The floor is the best flat set that is installed.

namespace Bench {
namespace {

using Ours = Kel::Set<Prefix>;
using Std = std::unordered_set<Prefix, KeyHash>;

template <class Set>
void fill(Set& set, const std::vector<Prefix>& keys) {
  for (const Prefix& key : keys) {
    set.insert(key);
  }
}

// Looks up keys from `from` on in a set of those from 0 on.
template <class Set>
void find(benchmark::State& state, std::size_t size, std::uint32_t from) {
  const std::vector<std::uint32_t> order = shuffled(size);
  std::vector<Prefix> sought;
  for (const std::uint32_t number : order) {
    sought.push_back(prefixOf(from + number));
  }
  Set set;
  fill(set, prefixes(size));
  for (auto _ : state) {
    std::size_t found = 0;
    for (const Prefix& key : sought) {
      found += set.contains(key) ? 1U : 0U;
    }
    if (found != (from == 0 ? size : 0)) {
      state.SkipWithError("the set is wrong");
    }
  }
  itemsPerIteration(state, size);
}

template <class Set>
void insert(benchmark::State& state, std::size_t size) {
  const std::vector<Prefix> keys = prefixes(size);
  for (auto _ : state) {
    Set set;
    fill(set, keys);
    benchmark::DoNotOptimize(set);
  }
  itemsPerIteration(state, size);
}

template <class Set>
void erase(benchmark::State& state, std::size_t size) {
  const std::vector<Prefix> keys = prefixes(size);
  const std::vector<std::uint32_t> order = shuffled(size);
  const std::size_t count = size < 100'000 ? 100'000 / size : 1;  // what is timed must last
  for (auto _ : state) {
    const auto sets = std::make_unique<Set[]>(count);
    for (std::size_t i = 0; i != count; ++i) {
      fill(sets[i], keys);
    }
    timed(state, [&] {
      for (std::size_t i = 0; i != count; ++i) {
        for (const std::uint32_t at : order) {
          sets[i].erase(keys[at]);
        }
      }
    });
  }
  itemsPerIteration(state, size * count);
}

template <class Set>
void cases(const std::string& who) {
  for (const std::size_t size : {4U, 16U, 100U, 1000U, 10'000U, 100'000U, 1'000'000U}) {
    const auto name = [&](const char* what) {
      return "set of " + std::to_string(size) + ": " + (what + ("/" + who));
    };
    const auto add = [](const std::string& called, auto run) {
      return benchmark::RegisterBenchmark(called.c_str(), run);
    };
    add(name("hit"), [=](benchmark::State& state) { find<Set>(state, size, 0); });
    add(name("miss"), [=](benchmark::State& state) { find<Set>(state, size, 2'000'000); });
    add(name("insert"), [=](benchmark::State& state) { insert<Set>(state, size); });
    add(name("erase"), [=](benchmark::State& state) { erase<Set>(state, size); })
        ->UseManualTime()
        ->Iterations(3);
  }
}

[[maybe_unused]] const bool registered = [] {
  cases<Ours>("ours");
  cases<Std>("std");
#ifdef BENCH_ABSL
  cases<absl::flat_hash_set<Prefix, KeyHash>>("absl");
#endif
  return true;
}();

}  // namespace
}  // namespace Bench
