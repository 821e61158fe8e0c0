#pragma once

#include <gtest/gtest.h>

#include <string>

#include "contract/Machines.h"
#include "contract/Watch.h"

namespace Contract {

/// What each test of the contract starts from: a world in which the output of a machine of type Sm
/// exists, and no machine.
template <class Sm>
class MachineTest : public ::testing::Test {
 protected:
  using M = Machine<Sm>;

  MachineTest() {
    M::args(world, [](const auto&...) {});
  }

  Ptr<Sm> make() { return M::args(world, M::make); }
  Ptr<Sm> makeWithoutInputs() { return M::nulls(world, M::make); }
  /// As a creator does it, but for the last step.
  Ptr<Sm> constructed() {
    return M::args(world,
                   [](const auto&... args) { return Ptr<Sm>(new Sm(args...), Brix::adopt); });
  }

  void add(int n) { M::add(world, n); }
  void remove(int n) { M::remove(world, n); }
  bool mirrored(int n) { return M::mirrored(world, n); }
  /// The subscribers on each input.
  std::string registered() {
    std::string counts;
    for (const Brix::Publisher& input : M::inputs(world)) {
      counts += std::to_string(input.subscriberCount());
    }
    return counts;
  }
  /// `count` for each input, as registered() returns it.
  std::string each(char count) { return std::string(M::inputs(world).size(), count); }

  World world;
};

/// Names the instances of a suite after the machines.
struct MachineNames {
  template <class Sm>
  static std::string GetName(int /*index*/) {
    const std::string name = Machine<Sm>::kName;
    return name.substr(name.rfind(':') + 1);
  }
};

}  // namespace Contract
