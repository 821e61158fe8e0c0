#include <array>
#include <vector>

#include "Brix/Publisher.h"
#include "Measure.h"

// A round of notification against a loop over function pointers.

namespace Bench {
namespace {

class Source : public Brix::Counted {
 public:
  Brix::Publisher publisher() { return {*this, subscribers_}; }

 private:
  Brix::SubscriberList subscribers_;
};

class Watcher final : public Brix::Subscriber {
 public:
  Watcher() : Subscriber(&notify) {}
  std::uint64_t seen = 0;

 private:
  static void notify(const Brix::Publisher& /*publisher*/, Subscriber& self, Brix::AttrId id,
                     const void* /*key*/, const void* /*value*/) {
    static_cast<Watcher&>(self).seen += static_cast<std::uint64_t>(id);
  }
};

template <std::size_t N>
void ours(benchmark::State& state) {
  auto* const source = new Source;
  std::array<Watcher, N> watchers;
  for (Watcher& watcher : watchers) {
    source->publisher().subscriberAdd(watcher);
  }
  for (auto _ : state) {
    source->publisher().publish(258, &state);
    benchmark::ClobberMemory();
  }
  for (Watcher& watcher : watchers) {
    source->publisher().subscriberRemove(watcher);
  }
  source->refDec();
}

template <std::size_t N>
void rawLoop(benchmark::State& state) {
  const Brix::Publisher publisher;
  std::array<Watcher, N> watchers;
  std::vector<Brix::Subscriber*> list;
  for (Watcher& watcher : watchers) {
    list.push_back(&watcher);
  }
  benchmark::DoNotOptimize(list.data());
  for (auto _ : state) {
    for (Brix::Subscriber* const subscriber : list) {
      subscriber->dispatch()(publisher, *subscriber, 258, &state, nullptr);
    }
    benchmark::ClobberMemory();
  }
}

BENCHMARK(ours<8>)->Name("notification of 8 subscribers/ours");
BENCHMARK(rawLoop<8>)->Name("notification of 8 subscribers/floor");
BENCHMARK(ours<1>)->Name("notification of 1 subscriber/ours");
BENCHMARK(rawLoop<1>)->Name("notification of 1 subscriber/floor");
BENCHMARK(ours<0>)->Name("notification of 0 subscribers/ours");
BENCHMARK(rawLoop<0>)->Name("notification of 0 subscribers/floor");

}  // namespace
}  // namespace Bench
