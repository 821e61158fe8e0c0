#pragma once

#include <string>

#include "VelaL3/VelaL3.h"
#include "VelaL3V2/VelaL3V2.h"
#include "monitor/Status.h"

namespace Contract {

/// Everything that the ten machines read and write: version 1 of one firewall with one path down to
/// the leaves of both trees, the monitor's records, and version 2, empty.
///
/// On each level there is room for further entries, numbered from 0 (see Machines.h); records and
/// network VRF names for them exist from the start.
class World {
 public:
  World();

  // Version 1, along the path.
  auto policySetV1() const { return policySrcV1->policySet("fw1"); }
  auto policyV1() const { return policySetV1()->policy(L3::VrfName("red")); }
  auto ruleV1() const { return policyV1()->rule(VelaL3::VelaPriority(20000)); }
  auto originV1() const { return ruleV1()->origin("web"); }
  auto matchV1() const { return originV1()->match(); }
  auto deviceV1() const { return sdSourceV1->serviceDevice("fw1"); }
  auto vrfV1() const { return deviceV1()->vrf(L3::VrfName("red")); }
  auto intfV1() const { return vrfV1()->l3Intf(Norv::IpGenAddr("10.0.0.1")); }
  auto record() const { return status->devicePolicyList("fw1"); }

  // Version 2, along the path, created down to there.
  auto policySetV2() const { return policySrcV2->policySetIs(Vela::DeviceName("fw1")); }
  auto policyV2() const { return policySetV2()->policyIs("net-red"); }
  auto ruleV2() const { return policyV2()->ruleIs(VelaL3V2::VelaPriority(20000)); }
  auto originV2() const { return ruleV2()->originIs("web"); }
  auto matchV2() const { return originV2()->matchIs(); }
  auto deviceV2() const { return sdSourceV2->serviceDeviceIs(Vela::DeviceName("fw1")); }
  auto netVrfV2() const { return deviceV2()->netVrfIs("net-red"); }
  auto intfV2() const { return netVrfV2()->l3IntfIs(Norv::IpGenAddr("10.0.0.1")); }

  Brix::Ptr<VelaL3::VelaPolicySourceConfig> policySrcV1;
  Brix::Ptr<VelaL3V2::VelaPolicySourceConfig> policySrcV2;
  Brix::Ptr<VelaL3::ServiceDeviceSourceConfig> sdSourceV1;
  Brix::Ptr<VelaL3V2::ServiceDeviceSourceConfig> sdSourceV2;
  Brix::Ptr<VelaPolicyMonitor::Status> status;

  static Kel::String device(int number) { return "dev" + std::to_string(number); }
  static L3::VrfName vrf(int number) { return L3::VrfName("vrf" + std::to_string(number)); }
  static Kel::String netVrf(int number) { return "net" + std::to_string(number); }
};

// The children of each entity, whatever its type.
template <class Entity, class Each>
void forEachChild(const Entity& entity, const Each& each) {
  const auto all = [&](const auto& entries) {
    for (const auto& [key, entry] : entries) {
      each(*entry);
    }
  };
  if constexpr (requires { entity.policySet(); }) {
    all(entity.policySet());
  } else if constexpr (requires { entity.policy(); }) {
    all(entity.policy());
  } else if constexpr (requires { entity.rule(); }) {
    all(entity.rule());
  } else if constexpr (requires { entity.origin(); }) {
    all(entity.origin());
  } else if constexpr (requires { entity.match(); }) {
    if (const auto match = entity.match()) {
      each(*match);
    }
  } else if constexpr (requires { entity.serviceDevice(); }) {
    all(entity.serviceDevice());
  } else if constexpr (requires { entity.vrf(); }) {
    all(entity.vrf());
  } else if constexpr (requires { entity.netVrf(); }) {
    all(entity.netVrf());
  } else if constexpr (requires { entity.l3Intf(); }) {
    all(entity.l3Intf());
  }
}

/// The subscribers of an entity and of everything below it.
template <class Entity>
std::size_t subscribersBelow(const Entity& entity) {
  std::size_t count = entity.publisher().subscriberCount();
  forEachChild(entity, [&](const auto& child) { count += subscribersBelow(child); });
  return count;
}

/// What an entity and everything below it hold, as sorted text, without times.
std::string dump(const Kel::PtrInterface& entity);
/// What both version-2 trees of a world hold.
std::string dumpV2(const World& world);

}  // namespace Contract
