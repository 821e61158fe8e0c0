#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <random>
#include <utility>
#include <vector>

/// What the cases have in common. A case is called "measure/who", where who is ours, floor or a
/// peer; report.py sets those of one measure side by side.
namespace Bench {

/// The processor time of this thread, in seconds: what other programs use does not count.
inline double threadSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// One iteration of a case with UseManualTime(): how long `work` takes.
template <class Work>
void timed(benchmark::State& state, Work work) {
  const double start = threadSeconds();
  work();
  state.SetIterationTime(threadSeconds() - start);
}

/// How many things all iterations did: the report divides by it.
inline void itemsPerIteration(benchmark::State& state, std::size_t items) {
  state.SetItemsProcessed(static_cast<std::int64_t>(items) * state.iterations());
}

/// The numbers below `size` in a random order, the same in each run.
inline std::vector<std::uint32_t> shuffled(std::size_t size, std::uint32_t seed = 1) {
  std::vector<std::uint32_t> order(size);
  std::mt19937 random(seed);
  for (std::uint32_t i = 0; i != size; ++i) {
    order[i] = i;
  }
  for (std::size_t i = size; i > 1; --i) {
    std::swap(order[i - 1], order[random() % i]);
  }
  return order;
}

}  // namespace Bench
