#include "agent/Engine.h"

#include <chrono>

namespace Host {
namespace {

Kel::Seconds now() {
  using std::chrono::microseconds;
  constexpr double kInASecond = 1e6;
  const auto passed = std::chrono::system_clock::now().time_since_epoch();
  return static_cast<double>(std::chrono::duration_cast<microseconds>(passed).count()) / kInASecond;
}

}  // namespace

Engine::Engine(const Trees& trees)
    : trees_(trees), clock_(now()), translation_(trees), session_(trees, translation_, clock_) {}

void Engine::start() {
  clock_.timeIs(now());
  translation_.start();
}

std::optional<std::string> Engine::apply(const Change& change) {
  clock_.timeIs(now());
  ++generation_;
  return session_.apply(change);
}

}  // namespace Host
