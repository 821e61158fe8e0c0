#include <malloc.h>

#include <string_view>
#include <type_traits>

#include "Kel/Slab.h"
#include "Sides.h"

// What a mirror takes from the heap, per set entry, with what the heap needs for itself.

namespace Bench {
namespace {

double heapBytes() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<double>(info.uordblks + info.hblkhd);
}

/// The pages of the slabs of all machines.
double machineBytes() {
  double bytes = 0;
  Kel::Slab::forEach(
      [](void* sum, const Kel::Slab& slab) {
        if (std::string_view(slab.typeName()).ends_with("Sm")) {
          *static_cast<double*>(sum) += static_cast<double>(slab.bytes());
        }
      },
      &bytes);
  return bytes;
}

template <class Side, bool WithMachines>
void memory(benchmark::State& state) {
  const Shape shape = Shape::ofEntries(1'100'000);
  for (auto _ : state) {
    Side side(shape);
    const double before = heapBytes(), machinesBefore = machineBytes();
    side.mirror();
    const double all = heapBytes() - before, machines = machineBytes() - machinesBefore;
    state.counters["value"] =
        (WithMachines ? all : all - machines) / static_cast<double>(shape.entries());
  }
}

[[maybe_unused]] const bool registered = [] {
  const auto add = [](const std::string& name, void (*run)(benchmark::State&)) {
    addCase(name, run)->Iterations(1);
  };
  add("heap bytes per entry, with machines/ours", memory<Library, true>);
  forEachSide([&](const std::string& who, auto* side) {
    using Side = std::remove_pointer_t<decltype(side)>;
    if (who != "ours, ring on") {
      add("heap bytes per entry, version 2/" + who, memory<Side, false>);
    }
  });
  return true;
}();

}  // namespace
}  // namespace Bench
