#include "policy/PolicyTranslateRootSm.h"

#include "common/Handling.h"
#include "common/Output.h"
#include "common/PolicyListLookup.h"
#include "policy/Module.h"

namespace VelaPolicyMonitor {
namespace {

using Self = PolicyTranslateRootSm;
using PolicySrcV1 = VelaL3::VelaPolicySourceConfig;
using PolicySrcV2 = VelaL3V2::VelaPolicySourceConfig;

constexpr TraceScope kTrace{"void VelaPolicyMonitor::PolicyTranslateRootSm::", "return"};

}  // namespace

constexpr Kel::Dispatch<Self> PolicyTranslateRootSm::policySrcV1Dispatch{
    Kel::On<Self>::key<PolicySrcV1::policySetAttr, &Self::handlePolicySet>,
};

PolicyTranslateRootSm::PolicyTranslateRootSm(const Brix::Ptr<const PolicySrcV1>& policySrcV1,
                                             const Brix::Ptr<PolicySrcV2>& policySrcV2,
                                             const Brix::Ptr<Status>& vpmStatus)
    : policySrcV1_(policySrcV1, *this),
      policySrcV2_(policySrcV2),
      vpmStatus_(vpmStatus),
      initialized_(false) {
  start(*this);
}

PolicyTranslateRootSm::~PolicyTranslateRootSm() { retire(); }

void PolicyTranslateRootSm::tearDown() noexcept {
  hasNotificationActiveIs(false);
  cleanup();
  kelDoZombieReactors(true);
  policySrcV1_.activeIs(false);
  perDeviceSmDelAll();
}

Brix::Ptr<PolicyTranslateRootSm> PolicyTranslateRootSm::PolicyTranslateRootSmIs(
    const Brix::Ptr<const PolicySrcV1>& policySrcV1, const Brix::Ptr<PolicySrcV2>& policySrcV2,
    const Brix::Ptr<Status>& vpmStatus) {
  return make<Self>(policySrcV1, policySrcV2, vpmStatus);
}

Brix::Ptr<PolicyTranslateRootSm> policyTranslateRootSmFactory(
    const Brix::Ptr<const PolicySrcV1>& policySrcV1, const Brix::Ptr<PolicySrcV2>& policySrcV2,
    const Brix::Ptr<Status>& vpmStatus) {
  return PolicyTranslateRootSm::PolicyTranslateRootSmIs(policySrcV1, policySrcV2, vpmStatus);
}

Kel::FwkType PolicyTranslateRootSm::fwkType() const noexcept { return fwkTypeOf(PolicyType::root); }

void PolicyTranslateRootSm::hasNotificationActiveIs(bool on) noexcept { switchParts(*this, on); }

Brix::Ptr<PolicyTranslatePerDeviceSm> PolicyTranslateRootSm::perDeviceSmIs(
    const String& deviceName, const Brix::Ptr<const VelaL3::VelaPolicySetConfig>& policySetV1,
    const Brix::Ptr<VelaL3V2::VelaPolicySetConfig>& policySetV2,
    const Brix::Ptr<DevicePolicyList>& policyList) {
  return perDeviceSm_.keepOrReplace(*this, deviceName, policySetV1, policySetV2, policyList);
}

Brix::Ptr<PolicyTranslatePerDeviceSm> PolicyTranslateRootSm::perDeviceSmDel(
    const String& deviceName) {
  return perDeviceSm_.remove(deviceName);
}

void PolicyTranslateRootSm::perDeviceSmDelAll() { perDeviceSm_.removeAll(); }

Brix::Ptr<DevicePolicyList> PolicyTranslateRootSm::getPolicyList(const String& deviceName) const {
  return policyListOf(vpmStatus(), deviceName);
}

void PolicyTranslateRootSm::handleInitialized() {
  const Handling run{*this, kTrace, "handleInitialized()"};
  run.enter();
  initialized_ = true;
  handlePolicySet();
  run.leave();
}

void PolicyTranslateRootSm::handlePolicySet(const String& deviceName) {
  if (!initialized()) {
    return;
  }
  const Handling run{*this, kTrace, "handlePolicySet(const String&)", OnDevice{deviceName}};
  run.enter(" Device name: ", deviceName);
  const auto policySetV1 = policySrcV1() ? policySrcV1()->policySet(deviceName) : nullptr;
  const auto policyList = getPolicyList(deviceName);
  if (policySetV1 && policyList) {
    run.act(" add device ", deviceName);
    const auto policySetV2 =
        output(policySrcV2(), "handlePolicySet(const String&)").policySetIs(deviceName);
    perDeviceSmIs(deviceName, policySetV1, policySetV2, policyList);
  } else {
    run.act(" remove device ", deviceName);
    // The argument may lie in the child.
    const String key = deviceName;  // NOLINT(performance-unnecessary-copy-initialization)
    perDeviceSmDel(key);
    if (policySrcV2()) {
      policySrcV2()->policySetDel(key);
    }
  }
  run.leave();
}

void PolicyTranslateRootSm::handlePolicySet() {
  if (!initialized()) {
    return;
  }
  const Handling run{*this, kTrace, "handlePolicySet()"};
  run.enter();
  if (policySrcV2()) {
    for (const auto& [deviceName, policySetV2] : policySrcV2()->policySet()) {
      if (policySrcV1() && policySrcV1()->policySet(deviceName.stringValue())) {
        continue;
      }
      run.act(" remove device ", deviceName);
      policySrcV2()->policySetDel(deviceName);
    }
  }
  if (policySrcV1()) {
    for (const auto& [deviceName, policySetV1] : policySrcV1()->policySet()) {
      handlePolicySet(deviceName);
    }
  }
  run.leave();
}

// Deliberate: no exit line.
void PolicyTranslateRootSm::cleanup() {
  const Handling run{*this, kTrace, "cleanup()"};
  run.enter();
  initialized_ = false;
  perDeviceSmDelAll();
  if (policySrcV2()) {
    policySrcV2()->policySetDelAll();
  }
}

}  // namespace VelaPolicyMonitor
