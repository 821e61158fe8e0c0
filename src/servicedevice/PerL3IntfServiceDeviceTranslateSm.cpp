#include "servicedevice/PerL3IntfServiceDeviceTranslateSm.h"

#include "common/Handling.h"
#include "common/Output.h"
#include "servicedevice/Module.h"

namespace VelaPolicyMonitor {
namespace {

using Self = PerL3IntfServiceDeviceTranslateSm;
using L3IntfV1 = VelaL3::L3IntfConfig;
using L3IntfV2 = VelaL3V2::L3IntfConfig;

constexpr TraceScope kTrace{"void VelaPolicyMonitor::PerL3IntfServiceDeviceTranslateSm::",
                            "return"};

}  // namespace

constexpr Kel::Dispatch<Self> PerL3IntfServiceDeviceTranslateSm::l3IntfConfigV1Dispatch{
    Kel::On<Self>::key<L3IntfV1::reachableSubnetAttr, &Self::handleSubnet>,
};

PerL3IntfServiceDeviceTranslateSm::PerL3IntfServiceDeviceTranslateSm(
    const Norv::IpGenAddr& l3IntfAddr, const Brix::Ptr<const L3IntfV1>& l3IntfConfigV1,
    const Brix::Ptr<L3IntfV2>& l3IntfConfigV2, const Brix::Ptr<UpdateCookie>& cookie)
    : l3IntfAddr_(l3IntfAddr),
      l3IntfConfigV1_(l3IntfConfigV1, *this),
      l3IntfConfigV2_(l3IntfConfigV2),
      cookie_(cookie),
      initialized_(false) {
  start(*this);
}

PerL3IntfServiceDeviceTranslateSm::~PerL3IntfServiceDeviceTranslateSm() { retire(); }

// Deliberate: no clean-up. The per-VRF machine deletes the version-2 interface as a whole.
void PerL3IntfServiceDeviceTranslateSm::tearDown() noexcept {
  kelDoZombieReactors(true);
  hasNotificationActiveIs(false);
  l3IntfConfigV1_.activeIs(false);
}

Brix::Ptr<PerL3IntfServiceDeviceTranslateSm>
PerL3IntfServiceDeviceTranslateSm::PerL3IntfServiceDeviceTranslateSmIs(
    const Norv::IpGenAddr& l3IntfAddr, const Brix::Ptr<const L3IntfV1>& l3IntfConfigV1,
    const Brix::Ptr<L3IntfV2>& l3IntfConfigV2, const Brix::Ptr<UpdateCookie>& cookie) {
  return make<Self>(l3IntfAddr, l3IntfConfigV1, l3IntfConfigV2, cookie);
}

Brix::Ptr<PerL3IntfServiceDeviceTranslateSm> perL3IntfServiceDeviceTranslateSmFactory(
    const Norv::IpGenAddr& l3IntfAddr, const Brix::Ptr<const L3IntfV1>& l3IntfConfigV1,
    const Brix::Ptr<L3IntfV2>& l3IntfConfigV2, const Brix::Ptr<UpdateCookie>& cookie) {
  return PerL3IntfServiceDeviceTranslateSm::PerL3IntfServiceDeviceTranslateSmIs(
      l3IntfAddr, l3IntfConfigV1, l3IntfConfigV2, cookie);
}

Kel::FwkType PerL3IntfServiceDeviceTranslateSm::fwkType() const noexcept {
  return fwkTypeOf(ServiceDeviceType::perL3Intf);
}

void PerL3IntfServiceDeviceTranslateSm::hasNotificationActiveIs(bool on) noexcept {
  switchParts(*this, on);
}

bool PerL3IntfServiceDeviceTranslateSm::builtFrom(
    const Brix::Ptr<const L3IntfV1>& l3IntfConfigV1, const Brix::Ptr<L3IntfV2>& l3IntfConfigV2,
    const Brix::Ptr<UpdateCookie>& cookie) const noexcept {
  return this->l3IntfConfigV1() == l3IntfConfigV1 && l3IntfConfigV2_ == l3IntfConfigV2 &&
         cookie_ == cookie;
}

void PerL3IntfServiceDeviceTranslateSm::handleInitialized() {
  const Handling run{*this, kTrace, "handleInitialized()"};
  run.enter(" l3 intf: ", l3IntfAddr());
  initialized_ = true;
  handleSubnet();
  run.leave();
}

void PerL3IntfServiceDeviceTranslateSm::handleSubnet(const Norv::IpGenPrefix& subnet) {
  const Handling run{*this, kTrace, "handleSubnet(const Norv::IpGenPrefix&)"};
  run.enter(" l3 intf: ", l3IntfAddr(), " subnet: ", subnet);
  if (l3IntfConfigV1() && l3IntfConfigV1()->reachableSubnet(subnet)) {
    run.act(" l3 intf: ", l3IntfAddr(), " add subnet ", subnet);
    output(l3IntfConfigV2(), "handleSubnet(const Norv::IpGenPrefix&)").reachableSubnetIs(subnet);
  } else {
    run.act(" l3 intf: ", l3IntfAddr(), " remove subnet ", subnet);
    if (l3IntfConfigV2()) {
      l3IntfConfigV2()->reachableSubnetDel(subnet);
    }
  }
  markUpdated(cookie());
  run.leave();
}

void PerL3IntfServiceDeviceTranslateSm::handleSubnet() {
  const Handling run{*this, kTrace, "handleSubnet()"};
  run.enter(" l3 intf: ", l3IntfAddr());
  bool deleted = false;
  if (l3IntfConfigV2()) {
    for (const Norv::IpGenPrefix& subnet : l3IntfConfigV2()->reachableSubnet()) {
      if (l3IntfConfigV1() && l3IntfConfigV1()->reachableSubnet(subnet)) {
        continue;
      }
      run.act(" l3 intf: ", l3IntfAddr(), " remove subnet ", subnet);
      l3IntfConfigV2()->reachableSubnetDel(subnet);
      deleted = true;
    }
  }
  if (l3IntfConfigV1()) {
    for (const Norv::IpGenPrefix& subnet : l3IntfConfigV1()->reachableSubnet()) {
      handleSubnet(subnet);
    }
  }
  if (deleted) {
    markUpdated(cookie());
  }
  run.leave();
}

}  // namespace VelaPolicyMonitor
