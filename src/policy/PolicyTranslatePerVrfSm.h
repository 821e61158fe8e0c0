#pragma once

#include <array>
#include <string_view>

#include "VelaL3/VelaPolicyConfig.h"
#include "VelaL3V2/VelaPolicyConfig.h"
#include "policy/PolicyTranslatePerRuleSm.h"

namespace [[using gnu: visibility("default")]] VelaPolicyMonitor {

/// Mirrors the policy of one VRF, rule by rule, and stamps the version-2 policy once per burst of
/// changes. Owned by the per-device machine; owns a machine per priority, and the cookie that they
/// share. Publishes perRuleSm, cookie, initialized and initComplete to its notifiees.
class PolicyTranslatePerVrfSm final : public TranslateSm,
                                      public Kel::SlabAllocated<PolicyTranslatePerVrfSm> {
  using Self = PolicyTranslatePerVrfSm;

 public:
  static constexpr const char* kelTypeName() {
    return "VelaPolicyMonitor::PolicyTranslatePerVrfSm";
  }
  static constexpr std::array<std::string_view, 4> kelOperations{"doUpdate", "handleRule",
                                                                 "cleanup", "handleInitialized"};
  static constexpr std::array<Kel::AttrId, 4> kelPublished{134, 135, 139, 140};
  static constexpr bool kDispatchIsNoexcept = false;

  KEL_CONST(130, vrfName, L3::VrfName)
  KEL_CONST(131, netVrfName, String)
  SM_INPUT(132, policyV1, const VelaL3::VelaPolicyConfig)
  KEL_CONST(133, policyV2, Brix::Ptr<VelaL3V2::VelaPolicyConfig>)
  SM_CHILDREN(134, perRuleSm, priority, PolicyTranslatePerRuleSm)
  KEL_CONST(135, cookie, Brix::Ptr<UpdateCookie>)
  KEL_CONST(139, initialized, bool)
  KEL_CONST(140, initComplete, bool)

  PolicyTranslatePerVrfSm(const L3::VrfName& vrfName, const String& netVrfName,
                          const Brix::Ptr<const VelaL3::VelaPolicyConfig>& policyV1,
                          const Brix::Ptr<VelaL3V2::VelaPolicyConfig>& policyV2);
  ~PolicyTranslatePerVrfSm() override;
  static Brix::Ptr<PolicyTranslatePerVrfSm> PolicyTranslatePerVrfSmIs(
      const L3::VrfName& vrfName, const String& netVrfName,
      const Brix::Ptr<const VelaL3::VelaPolicyConfig>& policyV1,
      const Brix::Ptr<VelaL3V2::VelaPolicyConfig>& policyV2);

  Kel::FwkType fwkType() const noexcept override;
  void hasNotificationActiveIs(bool on) noexcept override;
  Brix::Publisher notifieeList() const noexcept override { return {*this, notifiees_}; }
  bool builtFrom(const String& netVrfName,
                 const Brix::Ptr<const VelaL3::VelaPolicyConfig>& policyV1,
                 const Brix::Ptr<VelaL3V2::VelaPolicyConfig>& policyV2) const noexcept;

  /// Each stores and publishes a value that differs from the present one; an equal one is nothing.
  void cookieIs(const Brix::Ptr<UpdateCookie>& cookie);
  void initializedIs(bool initialized);
  void initCompleteIs(bool initComplete);

  /// The child for `priority`; raises Kel::ReinstantiationException when it was built from others.
  Brix::Ptr<PolicyTranslatePerRuleSm> perRuleSmIs(
      VelaL3::VelaPriority priority, const Brix::Ptr<const VelaL3::VelaRuleConfig>& ruleV1,
      const Brix::Ptr<VelaL3V2::VelaRuleConfig>& ruleV2, const Brix::Ptr<UpdateCookie>& cookie);
  Brix::Ptr<PolicyTranslatePerRuleSm> perRuleSmDel(VelaL3::VelaPriority priority);
  void perRuleSmDelAll();

  void handleInitialized();
  void handleRule(VelaL3::VelaPriority priority);
  void handleRule();
  void doUpdate();
  void cleanup();

  /// Where the machine stands, for the trace.
  const TracePlace& tracePlace() const noexcept { return tracePlace_; }

 private:
  friend class TranslateSm;
  auto parts() { return std::tie(policyV1_, perRuleSm_); }
  void tearDown() noexcept override;

  TracePlace tracePlace_ = TracePlace::ofOwner().with(OnVrf{vrfName_.stringValue()});
  mutable Brix::SubscriberList notifiees_;
};

/// The library's entry point; the arguments of the constructor.
Brix::Ptr<PolicyTranslatePerVrfSm> policyTranslatePerVrfSmFactory(
    const L3::VrfName& vrfName, const String& netVrfName,
    const Brix::Ptr<const VelaL3::VelaPolicyConfig>& policyV1,
    const Brix::Ptr<VelaL3V2::VelaPolicyConfig>& policyV2);

}  // namespace VelaPolicyMonitor
