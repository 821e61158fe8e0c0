#pragma once

#include <array>
#include <string_view>

#include "VelaL3/ServiceDeviceConfig.h"
#include "VelaL3V2/ServiceDeviceConfig.h"
#include "monitor/DevicePolicyList.h"
#include "servicedevice/PerVrfServiceDeviceTranslateSm.h"

namespace [[using gnu: visibility("default")]] VelaPolicyMonitor {

/// Mirrors one service device: each VRF under the network VRF name that the device's monitor record
/// gives it, and the record's traffic inspection. Reports serviceDeviceConverge there. Owned by the
/// root; owns a machine per VRF that has both a version-1 VRF and a network VRF name.
class PerServiceDeviceTranslateSm final : public TranslateSm,
                                          public Kel::SlabAllocated<PerServiceDeviceTranslateSm> {
  using Self = PerServiceDeviceTranslateSm;

 public:
  static constexpr const char* kelTypeName() {
    return "VelaPolicyMonitor::PerServiceDeviceTranslateSm";
  }
  static constexpr std::array<std::string_view, 4> kelOperations{
      "handleVrf", "handleTrafficInspection", "cleanup", "handleInitialized"};
  static constexpr bool kDispatchIsNoexcept = true;

  KEL_CONST(130, deviceName, String)
  SM_INPUT(131, sdConfigV1, const VelaL3::ServiceDeviceConfig)
  KEL_CONST(132, sdConfigV2, Brix::Ptr<VelaL3V2::ServiceDeviceConfig>)
  SM_INPUT(133, policyList, DevicePolicyList)
  SM_CHILDREN(134, perVrfSm, vrfName, PerVrfServiceDeviceTranslateSm)
  KEL_CONST(138, initialized, bool)

  PerServiceDeviceTranslateSm(const String& deviceName,
                              const Brix::Ptr<const VelaL3::ServiceDeviceConfig>& sdConfigV1,
                              const Brix::Ptr<VelaL3V2::ServiceDeviceConfig>& sdConfigV2,
                              const Brix::Ptr<DevicePolicyList>& policyList);
  ~PerServiceDeviceTranslateSm() override;
  static Brix::Ptr<PerServiceDeviceTranslateSm> PerServiceDeviceTranslateSmIs(
      const String& deviceName, const Brix::Ptr<const VelaL3::ServiceDeviceConfig>& sdConfigV1,
      const Brix::Ptr<VelaL3V2::ServiceDeviceConfig>& sdConfigV2,
      const Brix::Ptr<DevicePolicyList>& policyList);

  Kel::FwkType fwkType() const noexcept override;
  void hasNotificationActiveIs(bool on) noexcept override;
  bool builtFrom(const Brix::Ptr<const VelaL3::ServiceDeviceConfig>& sdConfigV1,
                 const Brix::Ptr<VelaL3V2::ServiceDeviceConfig>& sdConfigV2,
                 const Brix::Ptr<DevicePolicyList>& policyList) const noexcept;

  /// The child for `vrfName`; one that was built from other objects gives way to a new one.
  Brix::Ptr<PerVrfServiceDeviceTranslateSm> perVrfSmIs(
      const L3::VrfName& vrfName, const String& netVrfName,
      const Brix::Ptr<const VelaL3::VrfConfig>& vrfV1,
      const Brix::Ptr<VelaL3V2::NetVrfConfig>& netVrfV2);
  Brix::Ptr<PerVrfServiceDeviceTranslateSm> perVrfSmDel(const L3::VrfName& vrfName);
  void perVrfSmDelAll();

  void handleInitialized();
  void handleVrf(const String& vrf);
  void handleVrf();
  void handleTrafficInspection();
  void cleanup();

  /// Where the machine stands, for the trace.
  const TracePlace& tracePlace() const noexcept { return tracePlace_; }

 private:
  friend class TranslateSm;
  auto parts() { return std::tie(sdConfigV1_, policyList_, perVrfSm_); }
  void tearDown() noexcept override;
  void kel_handleSdConfigV1_vrf(const L3::VrfName& vrfName);
  /// Removes the child for a VRF, then the version-2 entry that it wrote to.
  void removeVrf(const L3::VrfName& vrf);

  TracePlace tracePlace_ = TracePlace::ofOwner().with(OnDevice{deviceName_});
};

/// The library's entry point; the arguments of the constructor.
Brix::Ptr<PerServiceDeviceTranslateSm> perServiceDeviceTranslateSmFactory(
    const String& deviceName, const Brix::Ptr<const VelaL3::ServiceDeviceConfig>& sdConfigV1,
    const Brix::Ptr<VelaL3V2::ServiceDeviceConfig>& sdConfigV2,
    const Brix::Ptr<DevicePolicyList>& policyList);

}  // namespace VelaPolicyMonitor
