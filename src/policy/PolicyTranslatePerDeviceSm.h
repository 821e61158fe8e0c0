#pragma once

#include <array>
#include <string_view>

#include "VelaL3/VelaPolicySetConfig.h"
#include "VelaL3V2/VelaPolicySetConfig.h"
#include "monitor/DevicePolicyList.h"
#include "policy/PolicyTranslatePerVrfSm.h"

namespace [[using gnu: visibility("default")]] VelaPolicyMonitor {

/// Mirrors the policies of one device: each VRF's policy under the network VRF name that the
/// device's monitor record gives it. Reports policyConverge there. Owned by the root; owns a
/// machine per VRF that has both a version-1 policy and a network VRF name.
class PolicyTranslatePerDeviceSm final : public TranslateSm,
                                         public Kel::SlabAllocated<PolicyTranslatePerDeviceSm> {
  using Self = PolicyTranslatePerDeviceSm;

 public:
  static constexpr const char* kelTypeName() {
    return "VelaPolicyMonitor::PolicyTranslatePerDeviceSm";
  }
  static constexpr std::array<std::string_view, 3> kelOperations{"handleVrf", "cleanup",
                                                                 "handleInitialized"};
  static constexpr bool kDispatchIsNoexcept = false;

  KEL_CONST(130, deviceName, String)
  SM_INPUT(131, policySetV1, const VelaL3::VelaPolicySetConfig)
  KEL_CONST(132, policySetV2, Brix::Ptr<VelaL3V2::VelaPolicySetConfig>)
  SM_INPUT(133, policyList, DevicePolicyList)
  SM_CHILDREN(134, perVrfSm, vrfName, PolicyTranslatePerVrfSm)
  KEL_CONST(135, initialized, bool)

  PolicyTranslatePerDeviceSm(const String& deviceName,
                             const Brix::Ptr<const VelaL3::VelaPolicySetConfig>& policySetV1,
                             const Brix::Ptr<VelaL3V2::VelaPolicySetConfig>& policySetV2,
                             const Brix::Ptr<DevicePolicyList>& policyList);
  ~PolicyTranslatePerDeviceSm() override;
  static Brix::Ptr<PolicyTranslatePerDeviceSm> PolicyTranslatePerDeviceSmIs(
      const String& deviceName, const Brix::Ptr<const VelaL3::VelaPolicySetConfig>& policySetV1,
      const Brix::Ptr<VelaL3V2::VelaPolicySetConfig>& policySetV2,
      const Brix::Ptr<DevicePolicyList>& policyList);

  Kel::FwkType fwkType() const noexcept override;
  void hasNotificationActiveIs(bool on) noexcept override;
  bool builtFrom(const Brix::Ptr<const VelaL3::VelaPolicySetConfig>& policySetV1,
                 const Brix::Ptr<VelaL3V2::VelaPolicySetConfig>& policySetV2,
                 const Brix::Ptr<DevicePolicyList>& policyList) const noexcept;

  /// The child for `vrfName`; one that was built from other objects gives way to a new one.
  Brix::Ptr<PolicyTranslatePerVrfSm> perVrfSmIs(
      const L3::VrfName& vrfName, const String& netVrfName,
      const Brix::Ptr<const VelaL3::VelaPolicyConfig>& policyV1,
      const Brix::Ptr<VelaL3V2::VelaPolicyConfig>& policyV2);
  Brix::Ptr<PolicyTranslatePerVrfSm> perVrfSmDel(const L3::VrfName& vrfName);
  void perVrfSmDelAll();

  void handleInitialized();
  void handleVrf(const String& vrfName);
  void handleVrf();
  void cleanup();

  /// Where the machine stands, for the trace.
  const TracePlace& tracePlace() const noexcept { return tracePlace_; }

 private:
  friend class TranslateSm;
  auto parts() { return std::tie(policySetV1_, policyList_, perVrfSm_); }
  void tearDown() noexcept override;
  void kel_handlePolicySetV1_policy(const L3::VrfName& vrfName);
  /// Removes the child for a VRF, then the version-2 entry that it wrote to.
  void removeVrf(const L3::VrfName& vrf);

  TracePlace tracePlace_ = TracePlace::ofOwner().with(OnDevice{deviceName_});
};

/// The library's entry point; the arguments of the constructor.
Brix::Ptr<PolicyTranslatePerDeviceSm> policyTranslatePerDeviceSmFactory(
    const String& deviceName, const Brix::Ptr<const VelaL3::VelaPolicySetConfig>& policySetV1,
    const Brix::Ptr<VelaL3V2::VelaPolicySetConfig>& policySetV2,
    const Brix::Ptr<DevicePolicyList>& policyList);

}  // namespace VelaPolicyMonitor
