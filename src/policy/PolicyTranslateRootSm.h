#pragma once

#include <array>
#include <string_view>

#include "VelaL3/VelaPolicySourceConfig.h"
#include "VelaL3V2/VelaPolicySourceConfig.h"
#include "monitor/Status.h"
#include "policy/PolicyTranslatePerDeviceSm.h"

namespace [[using gnu: visibility("default")]] VelaPolicyMonitor {

/// The top of the policy tree: keeps the version-2 policy source at exactly one policy set for each
/// version-1 device that a monitor record serves. Created by the agent; owns a machine per such
/// device. Dropping it empties the version-2 source: drop a root before making its successor.
class PolicyTranslateRootSm final : public TranslateSm,
                                    public Kel::SlabAllocated<PolicyTranslateRootSm> {
  using Self = PolicyTranslateRootSm;

 public:
  static constexpr const char* kelTypeName() { return "VelaPolicyMonitor::PolicyTranslateRootSm"; }
  static constexpr std::array<std::string_view, 5> kelOperations{
      "getPolicyList", "handlePolicySet", "cleanup", "handleInitialized", "perDeviceSmIs"};
  static constexpr bool kDispatchIsNoexcept = false;

  SM_INPUT(130, policySrcV1, const VelaL3::VelaPolicySourceConfig)
  KEL_CONST(131, policySrcV2, Brix::Ptr<VelaL3V2::VelaPolicySourceConfig>)
  KEL_CONST(132, vpmStatus, Brix::Ptr<Status>)
  SM_CHILDREN(133, perDeviceSm, deviceName, PolicyTranslatePerDeviceSm)
  KEL_CONST(134, initialized, bool)

  PolicyTranslateRootSm(const Brix::Ptr<const VelaL3::VelaPolicySourceConfig>& policySrcV1,
                        const Brix::Ptr<VelaL3V2::VelaPolicySourceConfig>& policySrcV2,
                        const Brix::Ptr<Status>& vpmStatus);
  ~PolicyTranslateRootSm() override;
  static Brix::Ptr<PolicyTranslateRootSm> PolicyTranslateRootSmIs(
      const Brix::Ptr<const VelaL3::VelaPolicySourceConfig>& policySrcV1,
      const Brix::Ptr<VelaL3V2::VelaPolicySourceConfig>& policySrcV2,
      const Brix::Ptr<Status>& vpmStatus);

  Kel::FwkType fwkType() const noexcept override;
  void hasNotificationActiveIs(bool on) noexcept override;

  /// The child for `deviceName`; one that was built from other objects gives way to a new one.
  Brix::Ptr<PolicyTranslatePerDeviceSm> perDeviceSmIs(
      const String& deviceName, const Brix::Ptr<const VelaL3::VelaPolicySetConfig>& policySetV1,
      const Brix::Ptr<VelaL3V2::VelaPolicySetConfig>& policySetV2,
      const Brix::Ptr<DevicePolicyList>& policyList);
  Brix::Ptr<PolicyTranslatePerDeviceSm> perDeviceSmDel(const String& deviceName);
  void perDeviceSmDelAll();

  /// The record that serves a device (see PolicyListLookup.h); null when there is none.
  Brix::Ptr<DevicePolicyList> getPolicyList(const String& deviceName) const;

  void handleInitialized();
  void handlePolicySet(const String& deviceName);
  void handlePolicySet();
  void cleanup();

  /// Where the machine stands, for the trace.
  const TracePlace& tracePlace() const noexcept { return tracePlace_; }

 private:
  friend class TranslateSm;
  auto parts() { return std::tie(policySrcV1_, perDeviceSm_); }
  void tearDown() noexcept override;

  TracePlace tracePlace_;
};

/// The agent's entry point: mirrors what is there and then follows every change, until dropped.
Brix::Ptr<PolicyTranslateRootSm> policyTranslateRootSmFactory(
    const Brix::Ptr<const VelaL3::VelaPolicySourceConfig>& policySrcV1,
    const Brix::Ptr<VelaL3V2::VelaPolicySourceConfig>& policySrcV2,
    const Brix::Ptr<Status>& vpmStatus);

/// The name under which dlsym finds the factory.
inline constexpr const char* kPolicyTranslateRootSmFactory =
    "_ZN17VelaPolicyMonitor28policyTranslateRootSmFactoryERKN4Brix3PtrIKN6VelaL3"
    "22VelaPolicySourceConfigEEERKNS1_IN8VelaL3V222VelaPolicySourceConfigEEERKNS1_INS_"
    "6StatusEEE";

}  // namespace VelaPolicyMonitor
