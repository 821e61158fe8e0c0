#include <malloc.h>

#include <type_traits>

#include "Sides.h"

// What concerns a whole tree: the first mirror, suspension and resumption, the end.

namespace Bench {
namespace {

// The tree is built anew each time, so that version 2 comes to lie in new memory.
template <class Side, std::uint32_t Entries>
void initialMirror(benchmark::State& state) {
  const Shape shape = Shape::ofEntries(Entries);
  Side side(shape);
  for (auto _ : state) {
    malloc_trim(0);
    {
      [[maybe_unused]] const typename Side::WhileMeasured on;
      timed(state, [&] { side.mirror(); });
    }
    side.link();
    if (!side.mirrored(shape.matches - 1, prefixOf((shape.matches - 1) * 32 + 9))) {
      state.SkipWithError("the mirror is wrong");
    }
    side.drop();
  }
  itemsPerIteration(state, shape.entries());
}

template <class Side, std::uint32_t Entries>
void drop(benchmark::State& state) {
  const Shape shape = Shape::ofEntries(Entries);
  Side side(shape);
  for (auto _ : state) {
    side.mirror();
    [[maybe_unused]] const typename Side::WhileMeasured on;
    timed(state, [&] { side.drop(); });
  }
  itemsPerIteration(state, shape.matches);
}

template <std::uint32_t Entries>
void suspendAndResume(benchmark::State& state) {
  auto& side = mirroredTree<Library>(Entries);
  for (auto _ : state) {
    timed(state, [&] {
      side.suspend();
      side.resume();
    });
  }
  itemsPerIteration(state, side.size());
}

[[maybe_unused]] const bool registered = [] {
  constexpr std::uint32_t kSmall = 110'000, kLarge = 1'100'000;
  forEachSide([](const std::string& who, auto* side) {
    using Side = std::remove_pointer_t<decltype(side)>;
    const auto add = [&](const char* measure, void (*run)(benchmark::State&)) {
      addCase(measure + ("/" + who), run)->UseManualTime()->Iterations(1);
    };
    add("initial mirror of 110,000 entries, per entry", initialMirror<Side, kSmall>);
    add("initial mirror of 1,100,000 entries, per entry", initialMirror<Side, kLarge>);
    add("dropping a root over 4,000 matches, per match", drop<Side, kSmall>);
    add("dropping a root over 40,000 matches, per match", drop<Side, kLarge>);
  });
  const auto add = [](const char* name, void (*run)(benchmark::State&)) {
    addCase(name, run)->UseManualTime()->Iterations(3);
  };
  add("suspending and resuming 4,000 matches, per match/ours", suspendAndResume<kSmall>);
  add("suspending and resuming 40,000 matches, per match/ours", suspendAndResume<kLarge>);
  return true;
}();

}  // namespace
}  // namespace Bench
