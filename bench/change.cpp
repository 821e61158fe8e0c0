#include <algorithm>
#include <type_traits>

#include "Sides.h"

// One change: an insertion into or a deletion from a set of version 1, until version 2 has it.

namespace Bench {
namespace {

template <class Side>
void hot(benchmark::State& state) {
  auto& side = mirroredTree<Side>(1000);
  const Prefix key = absentPrefix(7);
  [[maybe_unused]] const typename Side::WhileMeasured on;
  for (auto _ : state) {
    side.insert(7, key);
    side.erase(7, key);
  }
  itemsPerIteration(state, 2);
}

// The same in an agent whose event loop makes a hundred changes in each of its turns, and opens one
// event for all of them.
void hotInTurns(benchmark::State& state) {
  constexpr std::size_t kPairs = 50;
  auto& side = mirroredTree<TracedLibrary>(1000);
  const Prefix key = absentPrefix(7);
  const Tracing on;
  for (auto _ : state) {
    const Pario::Event turn;
    for (std::size_t i = 0; i != kPairs; ++i) {
      side.insert(7, key);
      side.erase(7, key);
    }
  }
  itemsPerIteration(state, 2 * kPairs);
}

// Every match is changed once, in random order.
template <class Side, std::uint32_t Entries>
void cold(benchmark::State& state) {
  auto& side = mirroredTree<Side>(Entries);
  const std::size_t size = side.size(), rounds = std::max<std::size_t>(1, 20'000 / size);
  const std::vector<std::uint32_t> first = shuffled(size, 1), second = shuffled(size, 2);
  std::vector<Prefix> keys;
  for (std::uint32_t match = 0; match != size; ++match) {
    keys.push_back(absentPrefix(match));
  }
  [[maybe_unused]] const typename Side::WhileMeasured on;
  for (auto _ : state) {
    timed(state, [&] {
      for (std::size_t round = 0; round != rounds; ++round) {
        for (const std::uint32_t match : first) {
          side.insert(match, keys[match]);
        }
        for (const std::uint32_t match : second) {
          side.erase(match, keys[match]);
        }
      }
    });
  }
  side.insert(0, keys[0]);
  if (!side.mirrored(0, keys[0])) {
    state.SkipWithError("the change did not arrive");
  }
  side.erase(0, keys[0]);
  if (side.mirrored(0, keys[0])) {
    state.SkipWithError("the change did not arrive");
  }
  itemsPerIteration(state, 2 * size * rounds);
}

// So many insertions below one VRF, then its end-of-burst signal; then likewise as many deletions.
template <class Side, std::uint32_t Changes>
void inBurst(benchmark::State& state) {
  auto& side = mirroredTree<Side>(110'000);
  const auto size = static_cast<std::uint32_t>(side.size());
  const std::vector<Prefix> keys = prefixes(Changes, 0x4000'0000);
  [[maybe_unused]] const typename Side::WhileMeasured on;
  for (auto _ : state) {
    timed(state, [&] {
      for (std::uint32_t i = 0; i != Changes; ++i) {
        side.insert(i % size, keys[i]);
      }
      side.endOfBurst();
      for (std::uint32_t i = 0; i != Changes; ++i) {
        side.erase(i % size, keys[i]);
      }
      side.endOfBurst();
    });
  }
  itemsPerIteration(state, 2 * std::size_t{Changes});
}

[[maybe_unused]] const bool registered = [] {
  forEachSide([](const std::string& who, auto* side) {
    using Side = std::remove_pointer_t<decltype(side)>;
    addCase("one change, hot/" + who, hot<Side>);
    const auto add = [&](const char* measure, void (*run)(benchmark::State&)) {
      addCase(measure + ("/" + who), run)->UseManualTime()->Iterations(2);
    };
    add("one change, cold, in 1000 entries", cold<Side, 1000>);
    add("one change, cold, in 10000 entries", cold<Side, 10'000>);
    add("one change, cold, in 100000 entries", cold<Side, 100'000>);
    add("one change, cold, in 1000000 entries", cold<Side, 1'000'000>);
    add("a burst of 1000 changes, per change", inBurst<Side, 1000>);
    add("a burst of 10000 changes, per change", inBurst<Side, 10'000>);
    add("a burst of 100000 changes, per change", inBurst<Side, 100'000>);
  });
  addCase("one change, hot, in turns of 100/ours, ring on", hotInTurns);
  return true;
}();

}  // namespace
}  // namespace Bench
