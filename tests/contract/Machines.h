#pragma once

#include <memory>
#include <string>
#include <vector>

#include "contract/World.h"
#include "policy/VelaPolicyTranslateSm.h"
#include "servicedevice/VelaServiceDeviceTranslateSm.h"

namespace Contract {

using namespace VelaPolicyMonitor;  // NOLINT(google-build-using-namespace): the tests' subject
using Brix::Ptr;
using Kel::String;

/// How the contract's tests build a machine of type Sm in a World and make it work:
///
/// - kName; inputs(world): the publishers that it watches;
/// - args(world, use): calls `use` with the arguments of its constructor;
/// - nulls(world, use): the same with every version-1 input null that may be null;
/// - make: its creator; factory: its exported factory;
/// - top(world): the version-1 entity it mirrors;
/// - add(world, n) and remove(world, n): the n-th change of version 1 that it reacts to by key, and
///   the opposite; mirrored(world, n): whether version 2 has it;
/// - walk(sm): the full walk over what add() changes;
/// - children(sm): all of them, nameless.
template <class Sm>
struct Machine;

template <class Map>
std::vector<Ptr<TranslateSm>> childrenOf(const Map& map) {
  std::vector<Ptr<TranslateSm>> all;
  for (const auto& [key, child] : map) {
    all.emplace_back(child);
  }
  return all;
}

template <>
struct Machine<PolicyTranslateRootSm> {
  using Sm = PolicyTranslateRootSm;
  using Child = PolicyTranslatePerDeviceSm;
  static constexpr const char* kName = "VelaPolicyMonitor::PolicyTranslateRootSm";
  static constexpr auto make = &Sm::PolicyTranslateRootSmIs;
  static constexpr auto factory = &policyTranslateRootSmFactory;
  static auto args(World& world, auto use) {
    return use(world.policySrcV1, world.policySrcV2, world.status);
  }
  static auto nulls(World& world, auto use) {
    return use(nullptr, world.policySrcV2, world.status);
  }
  static auto top(World& world) { return world.policySrcV1; }
  static std::vector<Brix::Publisher> inputs(World& world) {
    return {world.policySrcV1->publisher()};
  }
  static void add(World& world, int n) { world.policySrcV1->policySetIs(World::device(n)); }
  static void remove(World& world, int n) { world.policySrcV1->policySetDel(World::device(n)); }
  static bool mirrored(World& world, int n) {
    return static_cast<bool>(world.policySrcV2->policySet(World::device(n)));
  }
  static void walk(Sm& sm) { sm.handlePolicySet(); }
  static auto children(Sm& sm) { return childrenOf(sm.perDeviceSm()); }
};

template <>
struct Machine<PolicyTranslatePerDeviceSm> {
  using Sm = PolicyTranslatePerDeviceSm;
  using Child = PolicyTranslatePerVrfSm;
  static constexpr const char* kName = "VelaPolicyMonitor::PolicyTranslatePerDeviceSm";
  static constexpr auto make = &Sm::PolicyTranslatePerDeviceSmIs;
  static constexpr auto factory = &policyTranslatePerDeviceSmFactory;
  static auto args(World& world, auto use) {
    return use(String("fw1"), world.policySetV1(), world.policySetV2(), world.record());
  }
  static auto nulls(World& world, auto use) {
    return use(String("fw1"), nullptr, world.policySetV2(), world.record());
  }
  static auto top(World& world) { return world.policySetV1(); }
  static std::vector<Brix::Publisher> inputs(World& world) {
    return {world.policySetV1()->publisher(), world.record()->publisher()};
  }
  static void add(World& world, int n) { world.policySetV1()->policyIs(World::vrf(n)); }
  static void remove(World& world, int n) { world.policySetV1()->policyDel(World::vrf(n)); }
  static bool mirrored(World& world, int n) {
    return static_cast<bool>(world.policySetV2()->policy(World::netVrf(n)));
  }
  static void walk(Sm& sm) { sm.handleVrf(); }
  static auto children(Sm& sm) { return childrenOf(sm.perVrfSm()); }
};

template <>
struct Machine<PolicyTranslatePerVrfSm> {
  using Sm = PolicyTranslatePerVrfSm;
  using Child = PolicyTranslatePerRuleSm;
  static constexpr const char* kName = "VelaPolicyMonitor::PolicyTranslatePerVrfSm";
  static constexpr auto make = &Sm::PolicyTranslatePerVrfSmIs;
  static constexpr auto factory = &policyTranslatePerVrfSmFactory;
  static auto args(World& world, auto use) {
    return use(L3::VrfName("red"), String("net-red"), world.policyV1(), world.policyV2());
  }
  static auto nulls(World& world, auto use) {
    return use(L3::VrfName("red"), String("net-red"), nullptr, world.policyV2());
  }
  static auto top(World& world) { return world.policyV1(); }
  static std::vector<Brix::Publisher> inputs(World& world) {
    return {world.policyV1()->publisher()};
  }
  static std::uint32_t priority(int n) { return static_cast<std::uint32_t>(21000 + n); }
  static void add(World& world, int n) {
    world.policyV1()->ruleIs(VelaL3::VelaPriority(priority(n)));
  }
  static void remove(World& world, int n) {
    world.policyV1()->ruleDel(VelaL3::VelaPriority(priority(n)));
  }
  static bool mirrored(World& world, int n) {
    return static_cast<bool>(world.policyV2()->rule(VelaL3V2::VelaPriority(priority(n))));
  }
  static void walk(Sm& sm) { sm.handleRule(); }
  static auto children(Sm& sm) { return childrenOf(sm.perRuleSm()); }
};

template <>
struct Machine<PolicyTranslatePerRuleSm> {
  using Sm = PolicyTranslatePerRuleSm;
  using Child = PolicyTranslatePerOriginSm;
  static constexpr const char* kName = "VelaPolicyMonitor::PolicyTranslatePerRuleSm";
  static constexpr auto make = &Sm::PolicyTranslatePerRuleSmIs;
  static constexpr auto factory = &policyTranslatePerRuleSmFactory;
  static auto args(World& world, auto use) {
    return use(VelaL3::VelaPriority(20000), world.ruleV1(), world.ruleV2(), updateCookieFactory());
  }
  static auto nulls(World& world, auto use) {
    return use(VelaL3::VelaPriority(20000), nullptr, world.ruleV2(), nullptr);
  }
  static auto top(World& world) { return world.ruleV1(); }
  static std::vector<Brix::Publisher> inputs(World& world) { return {world.ruleV1()->publisher()}; }
  static String name(int n) { return "origin" + std::to_string(n); }
  static void add(World& world, int n) { world.ruleV1()->originIs(name(n)); }
  static void remove(World& world, int n) { world.ruleV1()->originDel(name(n)); }
  static bool mirrored(World& world, int n) {
    return static_cast<bool>(world.ruleV2()->origin(name(n)));
  }
  static void walk(Sm& sm) { sm.handleOrigin(); }
  static auto children(Sm& sm) { return childrenOf(sm.perOriginSm()); }
};

/// The keys of this level are the policy modifiers, of which there are two.
template <>
struct Machine<PolicyTranslatePerOriginSm> {
  using Sm = PolicyTranslatePerOriginSm;
  using Child = PolicyTranslateMatchSm;
  static constexpr const char* kName = "VelaPolicyMonitor::PolicyTranslatePerOriginSm";
  static constexpr auto make = &Sm::PolicyTranslatePerOriginSmIs;
  static constexpr auto factory = &policyTranslatePerOriginSmFactory;
  static auto args(World& world, auto use) {
    return use(String("web"), world.originV1(), world.originV2(), updateCookieFactory());
  }
  static auto nulls(World& world, auto use) {
    return use(String("web"), nullptr, world.originV2(), nullptr);
  }
  static auto top(World& world) { return world.originV1(); }
  static std::vector<Brix::Publisher> inputs(World& world) {
    return {world.originV1()->publisher()};
  }
  static void add(World& world, int n) {
    world.originV1()->policyModifierSetIs(static_cast<VelaL3::VelaPolicyModifier>(n));
  }
  static void remove(World& world, int n) {
    world.originV1()->policyModifierSetDel(static_cast<VelaL3::VelaPolicyModifier>(n));
  }
  static bool mirrored(World& world, int n) {
    return world.originV2()->policyModifierSet(static_cast<VelaL3V2::VelaPolicyModifier>(n));
  }
  static void walk(Sm& sm) { sm.handleModifier(); }
  static std::vector<Ptr<TranslateSm>> children(Sm& sm) {
    return sm.matchSm() ? std::vector<Ptr<TranslateSm>>{sm.matchSm()}
                        : std::vector<Ptr<TranslateSm>>{};
  }
};

template <>
struct Machine<PolicyTranslateMatchSm> {
  using Sm = PolicyTranslateMatchSm;
  static constexpr const char* kName = "VelaPolicyMonitor::PolicyTranslateMatchSm";
  static constexpr auto make = &Sm::PolicyTranslateMatchSmIs;
  static constexpr auto factory = &policyTranslateMatchSmFactory;
  static auto args(World& world, auto use) {
    return use(world.matchV1(), world.matchV2(), updateCookieFactory());
  }
  static auto nulls(World& world, auto use) { return use(nullptr, world.matchV2(), nullptr); }
  static Ptr<VelaL3::VelaMatchConfig> top(World& world) { return world.matchV1(); }
  static std::vector<Brix::Publisher> inputs(World& world) {
    return {world.matchV1()->publisher()};
  }
  static Norv::IpGenPrefix prefix(int n) {
    return Norv::IpGenPrefix("10." + std::to_string(n) + ".0.0/16");
  }
  static void add(World& world, int n) { world.matchV1()->srcIpIs(prefix(n)); }
  static void remove(World& world, int n) { world.matchV1()->srcIpDel(prefix(n)); }
  static bool mirrored(World& world, int n) { return world.matchV2()->srcIp(prefix(n)); }
  static void walk(Sm& sm) { sm.handleSrcIp(); }
  static std::vector<Ptr<TranslateSm>> children(Sm& /*sm*/) { return {}; }
};

template <>
struct Machine<ServiceDeviceTranslateRootSm> {
  using Sm = ServiceDeviceTranslateRootSm;
  using Child = PerServiceDeviceTranslateSm;
  static constexpr const char* kName = "VelaPolicyMonitor::ServiceDeviceTranslateRootSm";
  static constexpr auto make = &Sm::ServiceDeviceTranslateRootSmIs;
  static constexpr auto factory = &serviceDeviceTranslateRootSmFactory;
  static auto args(World& world, auto use) {
    return use(world.sdSourceV1, world.sdSourceV2, world.status);
  }
  static auto nulls(World& world, auto use) { return use(nullptr, world.sdSourceV2, world.status); }
  static auto top(World& world) { return world.sdSourceV1; }
  static std::vector<Brix::Publisher> inputs(World& world) {
    return {world.sdSourceV1->publisher()};
  }
  static void add(World& world, int n) { world.sdSourceV1->serviceDeviceIs(World::device(n)); }
  static void remove(World& world, int n) { world.sdSourceV1->serviceDeviceDel(World::device(n)); }
  static bool mirrored(World& world, int n) {
    return static_cast<bool>(world.sdSourceV2->serviceDevice(World::device(n)));
  }
  static void walk(Sm& sm) { sm.handleDevice(); }
  static auto children(Sm& sm) { return childrenOf(sm.perDeviceSm()); }
};

template <>
struct Machine<PerServiceDeviceTranslateSm> {
  using Sm = PerServiceDeviceTranslateSm;
  using Child = PerVrfServiceDeviceTranslateSm;
  static constexpr const char* kName = "VelaPolicyMonitor::PerServiceDeviceTranslateSm";
  static constexpr auto make = &Sm::PerServiceDeviceTranslateSmIs;
  static constexpr auto factory = &perServiceDeviceTranslateSmFactory;
  static auto args(World& world, auto use) {
    return use(String("fw1"), world.deviceV1(), world.deviceV2(), world.record());
  }
  static auto nulls(World& world, auto use) {
    return use(String("fw1"), nullptr, world.deviceV2(), world.record());
  }
  static auto top(World& world) { return world.deviceV1(); }
  static std::vector<Brix::Publisher> inputs(World& world) {
    return {world.deviceV1()->publisher(), world.record()->publisher()};
  }
  static void add(World& world, int n) { world.deviceV1()->vrfIs(World::vrf(n)); }
  static void remove(World& world, int n) { world.deviceV1()->vrfDel(World::vrf(n)); }
  static bool mirrored(World& world, int n) {
    return static_cast<bool>(world.deviceV2()->netVrf(World::netVrf(n)));
  }
  static void walk(Sm& sm) { sm.handleVrf(); }
  static auto children(Sm& sm) { return childrenOf(sm.perVrfSm()); }
};

template <>
struct Machine<PerVrfServiceDeviceTranslateSm> {
  using Sm = PerVrfServiceDeviceTranslateSm;
  using Child = PerL3IntfServiceDeviceTranslateSm;
  static constexpr const char* kName = "VelaPolicyMonitor::PerVrfServiceDeviceTranslateSm";
  static constexpr auto make = &Sm::PerVrfServiceDeviceTranslateSmIs;
  static constexpr auto factory = &perVrfServiceDeviceTranslateSmFactory;
  static auto args(World& world, auto use) {
    return use(L3::VrfName("red"), String("net-red"), world.vrfV1(), world.netVrfV2());
  }
  static auto nulls(World& world, auto use) {
    return use(L3::VrfName("red"), String("net-red"), nullptr, world.netVrfV2());
  }
  static auto top(World& world) { return world.vrfV1(); }
  static std::vector<Brix::Publisher> inputs(World& world) { return {world.vrfV1()->publisher()}; }
  static Norv::IpGenAddr address(int n) { return Norv::IpGenAddr("10.1.0." + std::to_string(n)); }
  static void add(World& world, int n) { world.vrfV1()->l3IntfIs(address(n)); }
  static void remove(World& world, int n) { world.vrfV1()->l3IntfDel(address(n)); }
  static bool mirrored(World& world, int n) {
    return static_cast<bool>(world.netVrfV2()->l3Intf(address(n)));
  }
  static void walk(Sm& sm) { sm.handleL3Intf(); }
  static auto children(Sm& sm) { return childrenOf(sm.perL3IntfSm()); }
};

template <>
struct Machine<PerL3IntfServiceDeviceTranslateSm> {
  using Sm = PerL3IntfServiceDeviceTranslateSm;
  static constexpr const char* kName = "VelaPolicyMonitor::PerL3IntfServiceDeviceTranslateSm";
  static constexpr auto make = &Sm::PerL3IntfServiceDeviceTranslateSmIs;
  static constexpr auto factory = &perL3IntfServiceDeviceTranslateSmFactory;
  static auto args(World& world, auto use) {
    return use(Norv::IpGenAddr("10.0.0.1"), world.intfV1(), world.intfV2(), updateCookieFactory());
  }
  static auto nulls(World& world, auto use) {
    return use(Norv::IpGenAddr("10.0.0.1"), nullptr, world.intfV2(), nullptr);
  }
  static auto top(World& world) { return world.intfV1(); }
  static std::vector<Brix::Publisher> inputs(World& world) { return {world.intfV1()->publisher()}; }
  static Norv::IpGenPrefix subnet(int n) {
    return Norv::IpGenPrefix("10." + std::to_string(n) + ".0.0/16");
  }
  static void add(World& world, int n) { world.intfV1()->reachableSubnetIs(subnet(n)); }
  static void remove(World& world, int n) { world.intfV1()->reachableSubnetDel(subnet(n)); }
  static bool mirrored(World& world, int n) { return world.intfV2()->reachableSubnet(subnet(n)); }
  static void walk(Sm& sm) { sm.handleSubnet(); }
  static std::vector<Ptr<TranslateSm>> children(Sm& /*sm*/) { return {}; }
};

/// The one list that all tests of the contract run over.
using AllMachines =
    ::testing::Types<PolicyTranslateRootSm, PolicyTranslatePerDeviceSm, PolicyTranslatePerVrfSm,
                     PolicyTranslatePerRuleSm, PolicyTranslatePerOriginSm, PolicyTranslateMatchSm,
                     ServiceDeviceTranslateRootSm, PerServiceDeviceTranslateSm,
                     PerVrfServiceDeviceTranslateSm, PerL3IntfServiceDeviceTranslateSm>;

/// Those of the list that have children.
template <class Sm>
concept HasChildren = requires {
  typename Machine<Sm>::Child;
};

}  // namespace Contract
