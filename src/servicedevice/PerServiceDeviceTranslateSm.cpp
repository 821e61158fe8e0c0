#include "servicedevice/PerServiceDeviceTranslateSm.h"

#include "common/Handling.h"
#include "common/Output.h"
#include "servicedevice/Module.h"

namespace VelaPolicyMonitor {
namespace {

using Self = PerServiceDeviceTranslateSm;
using SdConfigV1 = VelaL3::ServiceDeviceConfig;
using SdConfigV2 = VelaL3V2::ServiceDeviceConfig;

constexpr TraceScope kTrace{"void VelaPolicyMonitor::PerServiceDeviceTranslateSm::", "return"};

}  // namespace

constexpr Kel::Dispatch<Self> PerServiceDeviceTranslateSm::sdConfigV1Dispatch{
    Kel::On<Self>::adapted<SdConfigV1::vrfAttr, &Self::kel_handleSdConfigV1_vrf>,
};
constexpr Kel::Dispatch<Self> PerServiceDeviceTranslateSm::policyListDispatch{
    Kel::On<Self>::key<DevicePolicyList::netVrfNameByVrfAttr, &Self::handleVrf>,
    Kel::On<Self>::change<DevicePolicyList::trafficInspectionAttr, &Self::handleTrafficInspection>,
};

PerServiceDeviceTranslateSm::PerServiceDeviceTranslateSm(
    const String& deviceName, const Brix::Ptr<const SdConfigV1>& sdConfigV1,
    const Brix::Ptr<SdConfigV2>& sdConfigV2, const Brix::Ptr<DevicePolicyList>& policyList)
    : deviceName_(deviceName),
      sdConfigV1_(sdConfigV1, *this),
      sdConfigV2_(sdConfigV2),
      policyList_(policyList, *this),
      initialized_(false) {
  start(*this);
}

PerServiceDeviceTranslateSm::~PerServiceDeviceTranslateSm() { retire(); }

void PerServiceDeviceTranslateSm::tearDown() noexcept {
  kelDoZombieReactors(true);
  hasNotificationActiveIs(false);
  cleanup();
  sdConfigV1_.activeIs(false);
  policyList_.activeIs(false);
  perVrfSmDelAll();
}

Brix::Ptr<PerServiceDeviceTranslateSm> PerServiceDeviceTranslateSm::PerServiceDeviceTranslateSmIs(
    const String& deviceName, const Brix::Ptr<const SdConfigV1>& sdConfigV1,
    const Brix::Ptr<SdConfigV2>& sdConfigV2, const Brix::Ptr<DevicePolicyList>& policyList) {
  return make<Self>(deviceName, sdConfigV1, sdConfigV2, policyList);
}

Brix::Ptr<PerServiceDeviceTranslateSm> perServiceDeviceTranslateSmFactory(
    const String& deviceName, const Brix::Ptr<const SdConfigV1>& sdConfigV1,
    const Brix::Ptr<SdConfigV2>& sdConfigV2, const Brix::Ptr<DevicePolicyList>& policyList) {
  return PerServiceDeviceTranslateSm::PerServiceDeviceTranslateSmIs(deviceName, sdConfigV1,
                                                                    sdConfigV2, policyList);
}

Kel::FwkType PerServiceDeviceTranslateSm::fwkType() const noexcept {
  return fwkTypeOf(ServiceDeviceType::perDevice);
}

void PerServiceDeviceTranslateSm::hasNotificationActiveIs(bool on) noexcept {
  switchParts(*this, on);
}

bool PerServiceDeviceTranslateSm::builtFrom(
    const Brix::Ptr<const SdConfigV1>& sdConfigV1, const Brix::Ptr<SdConfigV2>& sdConfigV2,
    const Brix::Ptr<DevicePolicyList>& policyList) const noexcept {
  return this->sdConfigV1() == sdConfigV1 && sdConfigV2_ == sdConfigV2 &&
         this->policyList() == policyList;
}

Brix::Ptr<PerVrfServiceDeviceTranslateSm> PerServiceDeviceTranslateSm::perVrfSmIs(
    const L3::VrfName& vrfName, const String& netVrfName,
    const Brix::Ptr<const VelaL3::VrfConfig>& vrfV1,
    const Brix::Ptr<VelaL3V2::NetVrfConfig>& netVrfV2) {
  return perVrfSm_.keepOrReplace(*this, vrfName, netVrfName, vrfV1, netVrfV2);
}

Brix::Ptr<PerVrfServiceDeviceTranslateSm> PerServiceDeviceTranslateSm::perVrfSmDel(
    const L3::VrfName& vrfName) {
  return perVrfSm_.remove(vrfName);
}

void PerServiceDeviceTranslateSm::perVrfSmDelAll() { perVrfSm_.removeAll(); }

void PerServiceDeviceTranslateSm::kel_handleSdConfigV1_vrf(const L3::VrfName& vrfName) {
  handleVrf(vrfName.stringValue());
}

void PerServiceDeviceTranslateSm::handleInitialized() {
  const Handling run{*this, kTrace, "handleInitialized()"};
  run.enter();
  initialized_ = true;
  handleVrf();
  handleTrafficInspection();
  // Deliberate: never set back, neither by clean-up nor when the device goes.
  recordOf(policyList(), "handleInitialized()").serviceDeviceConvergeIs(true);
  run.leave();
}

// Deliberate: whether the machine is initialized is not asked, here and in the full walk; and
// "VRF name: " has no leading blank.
void PerServiceDeviceTranslateSm::handleVrf(const String& vrf) {
  const Handling run{*this, kTrace, "handleVrf(const String&)", OnVrf{vrf}};
  run.enter(" Device: ", deviceName(), "VRF name: ", vrf);
  const L3::VrfName vrfName(vrf);
  const auto vrfV1 = sdConfigV1() ? sdConfigV1()->vrf(vrfName) : nullptr;
  const String netVrfName = recordOf(policyList(), "handleVrf(const String&)").netVrfNameByVrf(vrf);
  if (vrfV1 && !netVrfName.empty()) {
    run.act(" Device: ", deviceName(), " add VRF ", vrf, "/", netVrfName);
    const auto netVrfV2 = output(sdConfigV2(), "handleVrf(const String&)").netVrfIs(netVrfName);
    // Not a counted pointer: it would carry the child past the deletion of its entry.
    if (const auto* child = perVrfSm().find(vrfName); child && child->netVrfName() != netVrfName) {
      removeVrf(vrfName);
    }
    perVrfSmIs(vrfName, netVrfName, vrfV1, netVrfV2);
  } else {
    run.act(" Device: ", deviceName(), " remove VRF ", vrf);
    removeVrf(vrfName);
  }
  run.leave();
}

// Deliberate: "Device name: " has no leading blank.
void PerServiceDeviceTranslateSm::handleVrf() {
  const Handling run{*this, kTrace, "handleVrf()"};
  run.enter("Device name: ", deviceName());
  if (sdConfigV2()) {
    for (const auto& [netVrfName, netVrfV2] : sdConfigV2()->netVrf()) {
      const L3::VrfName vrfName = netVrfV2->vrfName();
      if (sdConfigV1() && sdConfigV1()->vrf(vrfName) &&
          recordOf(policyList(), "handleVrf()").netVrfNameByVrf(vrfName.stringValue()) ==
              netVrfName) {
        continue;
      }
      run.act(" Device: ", deviceName(), " remove network VRF ", netVrfName);
      sdConfigV2()->netVrfDel(netVrfName);
    }
  }
  if (sdConfigV1()) {
    for (const auto& [vrfName, vrfV1] : sdConfigV1()->vrf()) {
      handleVrf(vrfName.stringValue());
    }
  }
  run.leave();
}

// Deliberate: "Device name: " has no leading blank.
void PerServiceDeviceTranslateSm::handleTrafficInspection() {
  const Vela::TrafficInspection inspection =
      recordOf(policyList(), "handleTrafficInspection()").trafficInspection();
  const Handling run{*this, kTrace, "handleTrafficInspection()"};
  run.enter("Device name: ", deviceName(), " unified: ", inspection.unified());
  output(sdConfigV2(), "handleTrafficInspection()").trafficInspectionIs(inspection);
  run.leave();
}

// Deliberate: the traffic inspection in version 2 and the convergence flag stay as they are.
void PerServiceDeviceTranslateSm::cleanup() {
  const Handling run{*this, kTrace, "cleanup()"};
  run.enter(" Device name: ", deviceName());
  initialized_ = false;
  perVrfSmDelAll();
  if (sdConfigV2()) {
    sdConfigV2()->netVrfDelAll();
  }
  run.leave();
}

void PerServiceDeviceTranslateSm::removeVrf(const L3::VrfName& vrf) {
  auto child = perVrfSmDel(vrf);
  if (!child) {
    return;  // the entry's name is known only from the child
  }
  const String netVrfName = child->netVrfName();
  child.reset();  // its clean-up comes before the deletion of the entry that it writes to
  sdConfigV2()->netVrfDel(netVrfName);
}

}  // namespace VelaPolicyMonitor
