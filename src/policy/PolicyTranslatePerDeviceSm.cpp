#include "policy/PolicyTranslatePerDeviceSm.h"

#include <set>

#include "common/Handling.h"
#include "common/Output.h"
#include "policy/Module.h"

namespace VelaPolicyMonitor {
namespace {

using Self = PolicyTranslatePerDeviceSm;
using PolicySetV1 = VelaL3::VelaPolicySetConfig;
using PolicySetV2 = VelaL3V2::VelaPolicySetConfig;

constexpr TraceScope kTrace{"void VelaPolicyMonitor::PolicyTranslatePerDeviceSm::", "return"};

}  // namespace

constexpr Kel::Dispatch<Self> PolicyTranslatePerDeviceSm::policySetV1Dispatch{
    Kel::On<Self>::adapted<PolicySetV1::policyAttr, &Self::kel_handlePolicySetV1_policy>,
};
constexpr Kel::Dispatch<Self> PolicyTranslatePerDeviceSm::policyListDispatch{
    Kel::On<Self>::key<DevicePolicyList::netVrfNameByVrfAttr, &Self::handleVrf>,
};

PolicyTranslatePerDeviceSm::PolicyTranslatePerDeviceSm(
    const String& deviceName, const Brix::Ptr<const PolicySetV1>& policySetV1,
    const Brix::Ptr<PolicySetV2>& policySetV2, const Brix::Ptr<DevicePolicyList>& policyList)
    : deviceName_(deviceName),
      policySetV1_(policySetV1, *this),
      policySetV2_(policySetV2),
      policyList_(policyList, *this),
      initialized_(false) {
  start(*this);
}

PolicyTranslatePerDeviceSm::~PolicyTranslatePerDeviceSm() { retire(); }

void PolicyTranslatePerDeviceSm::tearDown() noexcept {
  hasNotificationActiveIs(false);
  cleanup();
  kelDoZombieReactors(true);
  policySetV1_.activeIs(false);
  policyList_.activeIs(false);
  perVrfSmDelAll();
}

Brix::Ptr<PolicyTranslatePerDeviceSm> PolicyTranslatePerDeviceSm::PolicyTranslatePerDeviceSmIs(
    const String& deviceName, const Brix::Ptr<const PolicySetV1>& policySetV1,
    const Brix::Ptr<PolicySetV2>& policySetV2, const Brix::Ptr<DevicePolicyList>& policyList) {
  return make<Self>(deviceName, policySetV1, policySetV2, policyList);
}

Brix::Ptr<PolicyTranslatePerDeviceSm> policyTranslatePerDeviceSmFactory(
    const String& deviceName, const Brix::Ptr<const PolicySetV1>& policySetV1,
    const Brix::Ptr<PolicySetV2>& policySetV2, const Brix::Ptr<DevicePolicyList>& policyList) {
  return PolicyTranslatePerDeviceSm::PolicyTranslatePerDeviceSmIs(deviceName, policySetV1,
                                                                  policySetV2, policyList);
}

Kel::FwkType PolicyTranslatePerDeviceSm::fwkType() const noexcept {
  return fwkTypeOf(PolicyType::perDevice);
}

void PolicyTranslatePerDeviceSm::hasNotificationActiveIs(bool on) noexcept {
  switchParts(*this, on);
}

bool PolicyTranslatePerDeviceSm::builtFrom(
    const Brix::Ptr<const PolicySetV1>& policySetV1, const Brix::Ptr<PolicySetV2>& policySetV2,
    const Brix::Ptr<DevicePolicyList>& policyList) const noexcept {
  return this->policySetV1() == policySetV1 && policySetV2_ == policySetV2 &&
         this->policyList() == policyList;
}

Brix::Ptr<PolicyTranslatePerVrfSm> PolicyTranslatePerDeviceSm::perVrfSmIs(
    const L3::VrfName& vrfName, const String& netVrfName,
    const Brix::Ptr<const VelaL3::VelaPolicyConfig>& policyV1,
    const Brix::Ptr<VelaL3V2::VelaPolicyConfig>& policyV2) {
  return perVrfSm_.keepOrReplace(*this, vrfName, netVrfName, policyV1, policyV2);
}

Brix::Ptr<PolicyTranslatePerVrfSm> PolicyTranslatePerDeviceSm::perVrfSmDel(
    const L3::VrfName& vrfName) {
  return perVrfSm_.remove(vrfName);
}

void PolicyTranslatePerDeviceSm::perVrfSmDelAll() { perVrfSm_.removeAll(); }

void PolicyTranslatePerDeviceSm::kel_handlePolicySetV1_policy(const L3::VrfName& vrfName) {
  handleVrf(vrfName.stringValue());
}

void PolicyTranslatePerDeviceSm::handleInitialized() {
  const Handling run{*this, kTrace, "handleInitialized()"};
  run.enter();
  initialized_ = true;
  handleVrf();
  recordOf(policyList(), "handleInitialized()").policyConvergeIs(true);
  run.leave();
}

// Deliberate: whether the machine is initialized is not asked, here and in the full walk.
void PolicyTranslatePerDeviceSm::handleVrf(const String& vrfName) {
  const Handling run{*this, kTrace, "handleVrf(const String&)", OnVrf{vrfName}};
  run.enter(" Device: ", deviceName(), " VRF name: ", vrfName);
  const L3::VrfName vrf(vrfName);
  const auto policyV1 = policySetV1() ? policySetV1()->policy(vrf) : nullptr;
  const String netVrfName =
      recordOf(policyList(), "handleVrf(const String&)").netVrfNameByVrf(vrfName);
  if (policyV1 && !netVrfName.empty()) {
    run.act(" Device: ", deviceName(), " add VRF ", vrfName, "/", netVrfName);
    const auto policyV2 = output(policySetV2(), "handleVrf(const String&)").policyIs(netVrfName);
    // Not a counted pointer: it would carry the child past the deletion of its entry.
    if (const auto* child = perVrfSm().find(vrf); child && child->netVrfName() != netVrfName) {
      removeVrf(vrf);
    }
    perVrfSmIs(vrf, netVrfName, policyV1, policyV2);
  } else {
    run.act(" Device: ", deviceName(), " remove VRF ", vrfName);
    removeVrf(vrf);
  }
  run.leave();
}

void PolicyTranslatePerDeviceSm::handleVrf() {
  const Handling run{*this, kTrace, "handleVrf()"};
  run.enter();
  std::set<String> wanted;
  if (policySetV1()) {
    for (const auto& [vrf, policyV1] : policySetV1()->policy()) {
      if (const String netVrfName =
              recordOf(policyList(), "handleVrf()").netVrfNameByVrf(vrf.stringValue());
          !netVrfName.empty()) {
        wanted.insert(netVrfName);
      }
    }
  }
  if (policySetV2()) {
    for (const auto& [netVrfName, policyV2] : policySetV2()->policy()) {
      if (wanted.contains(netVrfName)) {
        continue;
      }
      run.act(" remove network VRF ", netVrfName);
      policySetV2()->policyDel(netVrfName);
    }
  }
  if (policySetV1()) {
    for (const auto& [vrf, policyV1] : policySetV1()->policy()) {
      handleVrf(vrf.stringValue());
    }
  }
  run.leave();
}

// Deliberate: no exit line.
void PolicyTranslatePerDeviceSm::cleanup() {
  const Handling run{*this, kTrace, "cleanup()"};
  run.enter();
  initialized_ = false;
  perVrfSmDelAll();
  if (policySetV2()) {
    policySetV2()->policyDelAll();
  }
}

void PolicyTranslatePerDeviceSm::removeVrf(const L3::VrfName& vrf) {
  auto child = perVrfSmDel(vrf);
  if (!child) {
    return;  // the entry's name is known only from the child
  }
  const String netVrfName = child->netVrfName();
  child.reset();  // its clean-up comes before the deletion of the entry that it writes to
  if (policySetV2()) {
    policySetV2()->policyDel(netVrfName);
  }
}

}  // namespace VelaPolicyMonitor
