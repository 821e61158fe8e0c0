#pragma once

#include <array>
#include <string_view>

#include "VelaL3/VrfConfig.h"
#include "VelaL3V2/NetVrfConfig.h"
#include "servicedevice/PerL3IntfServiceDeviceTranslateSm.h"

namespace [[using gnu: visibility("default")]] VelaPolicyMonitor {

/// Mirrors one VRF of a service device into a network VRF, interface by interface, and stamps it
/// once per burst of changes. Owned by the per-device machine; owns a machine per interface, and
/// the cookie that they share. Publishes cookie, initialized and initComplete to its notifiees.
class PerVrfServiceDeviceTranslateSm final
    : public TranslateSm,
      public Kel::SlabAllocated<PerVrfServiceDeviceTranslateSm> {
  using Self = PerVrfServiceDeviceTranslateSm;

 public:
  static constexpr const char* kelTypeName() {
    return "VelaPolicyMonitor::PerVrfServiceDeviceTranslateSm";
  }
  static constexpr std::array<std::string_view, 4> kelOperations{"handleL3Intf", "doUpdate",
                                                                 "cleanup", "handleInitialized"};
  static constexpr std::array<Kel::AttrId, 3> kelPublished{135, 136, 137};
  static constexpr bool kDispatchIsNoexcept = true;

  KEL_CONST(130, vrfName, L3::VrfName)
  KEL_CONST(131, netVrfName, String)
  SM_INPUT(132, vrfConfigV1, const VelaL3::VrfConfig)
  /// Never null: the constructor writes to it.
  KEL_CONST(133, vrfConfigV2, Brix::Ptr<VelaL3V2::NetVrfConfig>)
  SM_CHILDREN(134, perL3IntfSm, l3IntfAddr, PerL3IntfServiceDeviceTranslateSm)
  KEL_CONST(135, cookie, Brix::Ptr<UpdateCookie>)
  KEL_CONST(136, initialized, bool)
  KEL_CONST(137, initComplete, bool)

  PerVrfServiceDeviceTranslateSm(const L3::VrfName& vrfName, const String& netVrfName,
                                 const Brix::Ptr<const VelaL3::VrfConfig>& vrfConfigV1,
                                 const Brix::Ptr<VelaL3V2::NetVrfConfig>& vrfConfigV2);
  ~PerVrfServiceDeviceTranslateSm() override;
  static Brix::Ptr<PerVrfServiceDeviceTranslateSm> PerVrfServiceDeviceTranslateSmIs(
      const L3::VrfName& vrfName, const String& netVrfName,
      const Brix::Ptr<const VelaL3::VrfConfig>& vrfConfigV1,
      const Brix::Ptr<VelaL3V2::NetVrfConfig>& vrfConfigV2);

  Kel::FwkType fwkType() const noexcept override;
  void hasNotificationActiveIs(bool on) noexcept override;
  Brix::Publisher notifieeList() const noexcept override { return {*this, notifiees_}; }
  bool builtFrom(const String& netVrfName, const Brix::Ptr<const VelaL3::VrfConfig>& vrfConfigV1,
                 const Brix::Ptr<VelaL3V2::NetVrfConfig>& vrfConfigV2) const noexcept;

  /// Each stores and publishes a value that differs from the present one; an equal one is nothing.
  void cookieIs(const Brix::Ptr<UpdateCookie>& cookie);
  void initializedIs(bool initialized);
  void initCompleteIs(bool initComplete);

  /// The child for `addr`; one that was built from other objects gives way to a new one.
  Brix::Ptr<PerL3IntfServiceDeviceTranslateSm> perL3IntfSmIs(
      const Norv::IpGenAddr& addr, const Brix::Ptr<const VelaL3::L3IntfConfig>& l3IntfV1,
      const Brix::Ptr<VelaL3V2::L3IntfConfig>& l3IntfV2, const Brix::Ptr<UpdateCookie>& cookie);
  Brix::Ptr<PerL3IntfServiceDeviceTranslateSm> perL3IntfSmDel(const Norv::IpGenAddr& addr);
  void perL3IntfSmDelAll();

  void handleInitialized();
  void handleL3Intf(const Norv::IpGenAddr& addr);
  void handleL3Intf();
  void doUpdate();
  void cleanup();

  /// Where the machine stands, for the trace.
  const TracePlace& tracePlace() const noexcept { return tracePlace_; }

 private:
  friend class TranslateSm;
  auto parts() { return std::tie(vrfConfigV1_, perL3IntfSm_); }
  void tearDown() noexcept override;

  TracePlace tracePlace_ = TracePlace::ofOwner().with(OnVrf{vrfName_.stringValue()});
  mutable Brix::SubscriberList notifiees_;
};

/// The library's entry point; the arguments of the constructor.
Brix::Ptr<PerVrfServiceDeviceTranslateSm> perVrfServiceDeviceTranslateSmFactory(
    const L3::VrfName& vrfName, const String& netVrfName,
    const Brix::Ptr<const VelaL3::VrfConfig>& vrfConfigV1,
    const Brix::Ptr<VelaL3V2::NetVrfConfig>& vrfConfigV2);

}  // namespace VelaPolicyMonitor
