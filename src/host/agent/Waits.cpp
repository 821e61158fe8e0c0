#include "agent/Waits.h"

#include <algorithm>

#include "agent/Convergence.h"
#include "text/Reply.h"

namespace Host {
namespace {

void writeState(JsonWriter& json, std::string_view tree, const std::optional<bool>& converged) {
  if (converged) {
    json.name(tree);
    json.boolean(*converged);
  }
}

}  // namespace

void Waits::add(Client& from, std::size_t number, const Request& request) {
  Wait wait{&from, number, request.device, {}};
  if (request.timeout) {
    wait.end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                  std::chrono::duration<double>(*request.timeout));
  }
  from.holdIs(true);
  if (!answered(wait, true)) {
    waits_.push_back(std::move(wait));
  }
}

void Waits::drop(const Client& from) {
  waits_.remove_if([&](const Wait& wait) { return wait.from == &from; });
}

void Waits::look() {
  const bool changed = looked_ != engine_.generation();
  looked_ = engine_.generation();
  waits_.remove_if([&](const Wait& wait) { return answered(wait, changed); });
}

bool Waits::answered(const Wait& wait, bool changed) {
  const bool over = wait.end && Clock::now() >= *wait.end;
  if (!changed && !over) {
    return false;
  }
  const std::vector<Unconverged> left = unconverged(engine_.trees(), wait.device);
  if (!left.empty() && !over) {
    return false;
  }
  Reply reply(wait.from->output(), wait.number);
  JsonWriter& json = reply.json();
  json.name("converged");
  json.boolean(left.empty());
  json.name("devices");
  json.openArray();
  for (const Unconverged& each : left) {
    json.openRecord();
    json.name("device");
    json.text(each.device);
    writeState(json, "policy", each.policies);
    writeState(json, "service-device", each.serviceDevices);
    json.closeRecord();
  }
  json.closeArray();
  reply.end();
  wait.from->holdIs(false);
  return true;
}

std::optional<std::chrono::milliseconds> Waits::patience() const {
  std::optional<std::chrono::milliseconds> least;
  for (const Wait& wait : waits_) {
    if (wait.end) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(*wait.end - Clock::now());
      least = std::clamp(left, std::chrono::milliseconds(0),
                         least.value_or(std::chrono::milliseconds(60'000)));
    }
  }
  return least;
}

}  // namespace Host
