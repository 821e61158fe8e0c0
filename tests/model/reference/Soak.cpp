#include "model/reference/Soak.h"

#include <unistd.h>

#include <chrono>
#include <fstream>

#include "model/reference/Generator.h"
#include "model/reference/LibrarySide.h"

namespace Reference {
namespace {

using Clock = std::chrono::steady_clock;

std::size_t residentKilobytes() {
  std::ifstream file("/proc/self/statm");
  std::size_t all = 0;
  std::size_t resident = 0;
  file >> all >> resident;
  return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)) / 1024;
}

/// A world that changes at random, without a trace.
class Worn {
 public:
  explicit Worn(std::uint64_t seed) : generator_(seed, true), side_({}) {
    Kel::TextTrace::facility("VelaPolicyMonitor").levelsAre(0);
  }

  Clock::duration change() {
    const Operation operation = generator_.next();
    side_.log.clear();
    side_.time = static_cast<double>(number_++);
    const auto begin = Clock::now();
    side_.apply(operation);
    return Clock::now() - begin;
  }
  /// The nanoseconds that 99 of so many changes stay below, of 100.
  double cost(std::size_t changes) {
    std::vector<Clock::duration> times(changes);
    std::generate(times.begin(), times.end(), [this] { return change(); });
    const auto at = times.begin() + static_cast<std::ptrdiff_t>(changes * 99 / 100);
    std::nth_element(times.begin(), at, times.end());
    return std::chrono::duration<double, std::nano>(*at).count();
  }

 private:
  Generator generator_;
  LibrarySide side_;
  std::size_t number_ = 0;
};

double middle(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

}  // namespace

SoakOutcome soak(std::size_t operations, std::uint64_t seed) {
  SoakOutcome outcome;
  Worn old(seed);
  const std::size_t tenth = operations / 10;
  for (std::size_t number = 0; number != operations; ++number) {
    old.change();
    // The world fills in the first tenth. To look takes memory, too, so that is done before.
    if (number <= tenth && number % (tenth / 10) == 0) {
      outcome.residentBefore = residentKilobytes();
    }
  }
  outcome.residentAfter = residentKilobytes();
  // They take turns, so that what else the machine does counts for both.
  Worn fresh(seed);
  const std::size_t slice = operations / 100;
  fresh.cost(slice);
  std::vector<double> ofOld;
  std::vector<double> ofFresh;
  for (int turn = 0; turn != 21; ++turn) {
    ofFresh.push_back(fresh.cost(slice));
    ofOld.push_back(old.cost(slice));
  }
  outcome.costOfFresh = middle(ofFresh);
  outcome.costOfOld = middle(ofOld);
  return outcome;
}

}  // namespace Reference
