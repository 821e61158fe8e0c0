#include "agent/Convergence.h"

#include <map>

#include "common/PolicyListLookup.h"

namespace Host {
namespace {

Unconverged stateOf(const Trees& trees, const std::string& name, bool inPolicies,
                    bool inServiceDevices) {
  const auto record = VelaPolicyMonitor::policyListOf(trees.status, Kel::String(name));
  Unconverged state{name, {}, {}};
  if (inPolicies) {
    state.policies = record != nullptr && record->policyConverge();
  }
  if (inServiceDevices) {
    state.serviceDevices = record != nullptr && record->serviceDeviceConverge();
  }
  return state;
}

bool hasConverged(const Unconverged& state) {
  return (state.policies || state.serviceDevices) && state.policies.value_or(true) &&
         state.serviceDevices.value_or(true);
}

}  // namespace

std::vector<Unconverged> unconverged(const Trees& trees, const std::optional<std::string>& device) {
  struct In {
    bool policies = false;
    bool serviceDevices = false;
  };
  std::map<std::string, In> devices;
  if (device) {
    devices[*device] = {trees.policyV1->policySet(Kel::String(*device)) != nullptr,
                        trees.serviceDeviceV1->serviceDevice(Kel::String(*device)) != nullptr};
  } else {
    for (const auto& [name, set] : trees.policyV1->policySet()) {
      devices[Kel::textOf(name)].policies = true;
    }
    for (const auto& [name, serviceDevice] : trees.serviceDeviceV1->serviceDevice()) {
      devices[Kel::textOf(name)].serviceDevices = true;
    }
  }
  std::vector<Unconverged> all;
  for (const auto& [name, in] : devices) {
    Unconverged state = stateOf(trees, name, in.policies, in.serviceDevices);
    if (!hasConverged(state)) {
      all.push_back(std::move(state));
    }
  }
  return all;
}

}  // namespace Host
