#include "servicedevice/ServiceDeviceTranslateRootSm.h"

#include "common/Handling.h"
#include "common/Output.h"
#include "common/PolicyListLookup.h"
#include "servicedevice/Module.h"

namespace VelaPolicyMonitor {
namespace {

using Self = ServiceDeviceTranslateRootSm;
using SdSourceV1 = VelaL3::ServiceDeviceSourceConfig;
using SdSourceV2 = VelaL3V2::ServiceDeviceSourceConfig;

constexpr TraceScope kTrace{"void VelaPolicyMonitor::ServiceDeviceTranslateRootSm::", "return"};

}  // namespace

constexpr Kel::Dispatch<Self> ServiceDeviceTranslateRootSm::sdSourceV1Dispatch{
    Kel::On<Self>::key<SdSourceV1::serviceDeviceAttr, &Self::handleDevice>,
};

ServiceDeviceTranslateRootSm::ServiceDeviceTranslateRootSm(
    const Brix::Ptr<const SdSourceV1>& sdSourceV1, const Brix::Ptr<SdSourceV2>& sdSourceV2,
    const Brix::Ptr<Status>& vpmStatus)
    : sdSourceV1_(sdSourceV1, *this),
      sdSourceV2_(sdSourceV2),
      vpmStatus_(vpmStatus),
      initialized_(false) {
  start(*this);
}

ServiceDeviceTranslateRootSm::~ServiceDeviceTranslateRootSm() { retire(); }

void ServiceDeviceTranslateRootSm::tearDown() noexcept {
  hasNotificationActiveIs(false);
  cleanup();
  kelDoZombieReactors(true);
  sdSourceV1_.activeIs(false);
  perDeviceSmDelAll();
}

Brix::Ptr<ServiceDeviceTranslateRootSm>
ServiceDeviceTranslateRootSm::ServiceDeviceTranslateRootSmIs(
    const Brix::Ptr<const SdSourceV1>& sdSourceV1, const Brix::Ptr<SdSourceV2>& sdSourceV2,
    const Brix::Ptr<Status>& vpmStatus) {
  return make<Self>(sdSourceV1, sdSourceV2, vpmStatus);
}

Brix::Ptr<ServiceDeviceTranslateRootSm> serviceDeviceTranslateRootSmFactory(
    const Brix::Ptr<const SdSourceV1>& sdSourceV1, const Brix::Ptr<SdSourceV2>& sdSourceV2,
    const Brix::Ptr<Status>& vpmStatus) {
  return ServiceDeviceTranslateRootSm::ServiceDeviceTranslateRootSmIs(sdSourceV1, sdSourceV2,
                                                                      vpmStatus);
}

Kel::FwkType ServiceDeviceTranslateRootSm::fwkType() const noexcept {
  return fwkTypeOf(ServiceDeviceType::root);
}

void ServiceDeviceTranslateRootSm::hasNotificationActiveIs(bool on) noexcept {
  switchParts(*this, on);
}

Brix::Ptr<PerServiceDeviceTranslateSm> ServiceDeviceTranslateRootSm::perDeviceSmIs(
    const String& name, const Brix::Ptr<const VelaL3::ServiceDeviceConfig>& sdConfigV1,
    const Brix::Ptr<VelaL3V2::ServiceDeviceConfig>& sdConfigV2,
    const Brix::Ptr<DevicePolicyList>& policyList) {
  return perDeviceSm_.keepOrReplace(*this, name, sdConfigV1, sdConfigV2, policyList);
}

Brix::Ptr<PerServiceDeviceTranslateSm> ServiceDeviceTranslateRootSm::perDeviceSmDel(
    const String& name) {
  return perDeviceSm_.remove(name);
}

void ServiceDeviceTranslateRootSm::perDeviceSmDelAll() { perDeviceSm_.removeAll(); }

Brix::Ptr<DevicePolicyList> ServiceDeviceTranslateRootSm::getPolicyList(
    const Vela::DeviceName& deviceName) const {
  return policyListOf(vpmStatus(), deviceName.stringValue());
}

void ServiceDeviceTranslateRootSm::handleInitialized() {
  const Handling run{*this, kTrace, "handleInitialized()"};
  run.enter();
  initialized_ = true;
  handleDevice();
  run.leave();
}

void ServiceDeviceTranslateRootSm::handleDevice(const String& name) {
  if (!initialized()) {
    return;
  }
  const Handling run{*this, kTrace, "handleDevice(const String&)", OnDevice{name}};
  run.enter(" Device name: ", name);
  const Vela::DeviceName deviceName(name);
  const auto sdConfigV1 = sdSourceV1() ? sdSourceV1()->serviceDevice(name) : nullptr;
  const auto policyList = getPolicyList(deviceName);
  if (sdConfigV1 && policyList) {
    run.act(" add device ", name);
    const auto sdConfigV2 =
        output(sdSourceV2(), "handleDevice(const String&)").serviceDeviceIs(deviceName);
    perDeviceSmIs(name, sdConfigV1, sdConfigV2, policyList);
  } else {
    run.act(" remove device ", name);
    perDeviceSmDel(name);
    if (sdSourceV2()) {
      sdSourceV2()->serviceDeviceDel(deviceName);
    }
  }
  run.leave();
}

void ServiceDeviceTranslateRootSm::handleDevice() {
  if (!initialized()) {
    return;
  }
  const Handling run{*this, kTrace, "handleDevice()"};
  run.enter();
  if (sdSourceV2()) {
    for (const auto& [deviceName, sdConfigV2] : sdSourceV2()->serviceDevice()) {
      if (sdSourceV1() && sdSourceV1()->serviceDevice(deviceName.stringValue())) {
        continue;
      }
      run.act(" remove device ", deviceName);
      sdSourceV2()->serviceDeviceDel(deviceName);
    }
  }
  if (sdSourceV1()) {
    for (const auto& [name, sdConfigV1] : sdSourceV1()->serviceDevice()) {
      handleDevice(name);
    }
  }
  run.leave();
}

void ServiceDeviceTranslateRootSm::cleanup() {
  const Handling run{*this, kTrace, "cleanup()"};
  run.enter();
  initialized_ = false;
  perDeviceSmDelAll();
  if (sdSourceV2()) {
    sdSourceV2()->serviceDeviceDelAll();
  }
  run.leave();
}

}  // namespace VelaPolicyMonitor
