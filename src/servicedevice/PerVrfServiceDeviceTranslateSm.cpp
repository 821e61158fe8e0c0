#include "servicedevice/PerVrfServiceDeviceTranslateSm.h"

#include "common/Handling.h"
#include "common/Output.h"
#include "servicedevice/Module.h"

namespace VelaPolicyMonitor {
namespace {

using Self = PerVrfServiceDeviceTranslateSm;
using VrfV1 = VelaL3::VrfConfig;
using NetVrfV2 = VelaL3V2::NetVrfConfig;

constexpr TraceScope kTrace{"void VelaPolicyMonitor::PerVrfServiceDeviceTranslateSm::", "return"};

}  // namespace

constexpr Kel::Dispatch<Self> PerVrfServiceDeviceTranslateSm::vrfConfigV1Dispatch{
    Kel::On<Self>::key<VrfV1::l3IntfAttr, &Self::handleL3Intf>,
    Kel::On<Self>::change<VrfV1::timestampAttr, &Self::doUpdate>,
};

PerVrfServiceDeviceTranslateSm::PerVrfServiceDeviceTranslateSm(
    const L3::VrfName& vrfName, const String& netVrfName, const Brix::Ptr<const VrfV1>& vrfConfigV1,
    const Brix::Ptr<NetVrfV2>& vrfConfigV2)
    : vrfName_(vrfName),
      netVrfName_(netVrfName),
      vrfConfigV1_(vrfConfigV1, *this),
      vrfConfigV2_(vrfConfigV2),
      initialized_(false),
      initComplete_(false) {
  start(*this);
}

PerVrfServiceDeviceTranslateSm::~PerVrfServiceDeviceTranslateSm() { retire(); }

void PerVrfServiceDeviceTranslateSm::tearDown() noexcept {
  kelDoZombieReactors(true);
  cleanup();
  hasNotificationActiveIs(false);
  vrfConfigV1_.activeIs(false);
  perL3IntfSmDelAll();
}

Brix::Ptr<PerVrfServiceDeviceTranslateSm>
PerVrfServiceDeviceTranslateSm::PerVrfServiceDeviceTranslateSmIs(
    const L3::VrfName& vrfName, const String& netVrfName, const Brix::Ptr<const VrfV1>& vrfConfigV1,
    const Brix::Ptr<NetVrfV2>& vrfConfigV2) {
  return make<Self>(vrfName, netVrfName, vrfConfigV1, vrfConfigV2);
}

Brix::Ptr<PerVrfServiceDeviceTranslateSm> perVrfServiceDeviceTranslateSmFactory(
    const L3::VrfName& vrfName, const String& netVrfName, const Brix::Ptr<const VrfV1>& vrfConfigV1,
    const Brix::Ptr<NetVrfV2>& vrfConfigV2) {
  return PerVrfServiceDeviceTranslateSm::PerVrfServiceDeviceTranslateSmIs(vrfName, netVrfName,
                                                                          vrfConfigV1, vrfConfigV2);
}

Kel::FwkType PerVrfServiceDeviceTranslateSm::fwkType() const noexcept {
  return fwkTypeOf(ServiceDeviceType::perVrf);
}

void PerVrfServiceDeviceTranslateSm::hasNotificationActiveIs(bool on) noexcept {
  switchParts(*this, on);
}

bool PerVrfServiceDeviceTranslateSm::builtFrom(
    const String& netVrfName, const Brix::Ptr<const VrfV1>& vrfConfigV1,
    const Brix::Ptr<NetVrfV2>& vrfConfigV2) const noexcept {
  return netVrfName_ == netVrfName && this->vrfConfigV1() == vrfConfigV1 &&
         vrfConfigV2_ == vrfConfigV2;
}

void PerVrfServiceDeviceTranslateSm::cookieIs(const Brix::Ptr<UpdateCookie>& cookie) {
  storeAndPublish(*this, cookie_, cookie, cookieAttr.id);
}

void PerVrfServiceDeviceTranslateSm::initializedIs(bool initialized) {
  storeAndPublish(*this, initialized_, initialized, initializedAttr.id);
}

void PerVrfServiceDeviceTranslateSm::initCompleteIs(bool initComplete) {
  storeAndPublish(*this, initComplete_, initComplete, initCompleteAttr.id);
}

Brix::Ptr<PerL3IntfServiceDeviceTranslateSm> PerVrfServiceDeviceTranslateSm::perL3IntfSmIs(
    const Norv::IpGenAddr& addr, const Brix::Ptr<const VelaL3::L3IntfConfig>& l3IntfV1,
    const Brix::Ptr<VelaL3V2::L3IntfConfig>& l3IntfV2, const Brix::Ptr<UpdateCookie>& cookie) {
  return perL3IntfSm_.keepOrReplace(*this, addr, l3IntfV1, l3IntfV2, cookie);
}

Brix::Ptr<PerL3IntfServiceDeviceTranslateSm> PerVrfServiceDeviceTranslateSm::perL3IntfSmDel(
    const Norv::IpGenAddr& addr) {
  return perL3IntfSm_.remove(addr);
}

void PerVrfServiceDeviceTranslateSm::perL3IntfSmDelAll() { perL3IntfSm_.removeAll(); }

void PerVrfServiceDeviceTranslateSm::handleInitialized() {
  const Handling run{*this, kTrace, "handleInitialized()"};
  run.enter(" VRF name: ", vrfName());
  cookieIs(UpdateCookie::UpdateCookieIs());
  initializedIs(true);
  output(vrfConfigV2(), "handleInitialized()").vrfNameIs(vrfName());
  handleL3Intf();
  doUpdate();
  initCompleteIs(true);
  run.leave();
}

void PerVrfServiceDeviceTranslateSm::handleL3Intf(const Norv::IpGenAddr& addr) {
  const Handling run{*this, kTrace, "handleL3Intf(const Norv::IpGenAddr&)"};
  run.enter(" VRF: ", vrfName(), " l3 intf: ", addr);
  if (const auto l3IntfV1 = vrfConfigV1() ? vrfConfigV1()->l3Intf(addr) : nullptr) {
    run.act(" VRF: ", vrfName(), " add l3 intf ", addr);
    const auto l3IntfV2 =
        output(vrfConfigV2(), "handleL3Intf(const Norv::IpGenAddr&)").l3IntfIs(addr);
    perL3IntfSmIs(addr, l3IntfV1, l3IntfV2, cookie());
  } else {
    run.act(" VRF: ", vrfName(), " remove l3 intf ", addr);
    const Norv::IpGenAddr key = addr;  // the argument may lie in the child
    perL3IntfSmDel(key);
    vrfConfigV2()->l3IntfDel(key);
  }
  markUpdated(cookie());
  run.leave();
}

void PerVrfServiceDeviceTranslateSm::handleL3Intf() {
  const Handling run{*this, kTrace, "handleL3Intf()"};
  run.enter();
  bool deleted = false;
  for (const auto& [addr, l3IntfV2] : vrfConfigV2()->l3Intf()) {
    if (vrfConfigV1() && vrfConfigV1()->l3Intf(addr)) {
      continue;
    }
    run.act(" remove l3 intf ", addr);
    vrfConfigV2()->l3IntfDel(addr);
    deleted = true;
  }
  if (vrfConfigV1()) {
    for (const auto& [addr, l3IntfV1] : vrfConfigV1()->l3Intf()) {
      handleL3Intf(addr);
    }
  }
  if (deleted) {
    markUpdated(cookie());
  }
  run.leave();
}

void PerVrfServiceDeviceTranslateSm::doUpdate() {
  if (!initialized() || !cookie() || !cookie()->updated()) {
    return;
  }
  const Handling run{*this, kTrace, "doUpdate()"};
  run.enter(" VRF name: ", vrfName());
  stamp(output(vrfConfigV2(), "doUpdate()"), cookie());
}

// Deliberate: initComplete and the time stamp stay as they are.
void PerVrfServiceDeviceTranslateSm::cleanup() {
  const Handling run{*this, kTrace, "cleanup()"};
  run.enter(" VRF name: ", vrfName());
  initializedIs(false);
  perL3IntfSmDelAll();
  vrfConfigV2()->l3IntfDelAll();
  run.leave();
}

}  // namespace VelaPolicyMonitor
