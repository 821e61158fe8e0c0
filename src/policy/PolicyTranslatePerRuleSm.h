#pragma once

#include <array>
#include <string_view>

#include "VelaL3/VelaRuleConfig.h"
#include "VelaL3V2/VelaRuleConfig.h"
#include "policy/PolicyTranslatePerOriginSm.h"

namespace [[using gnu: visibility("default")]] VelaPolicyMonitor {

/// Mirrors one rule: keeps the origins of both generations in step, by name. Owned by the per-VRF
/// machine, which shares its cookie, but for the lowest priority; owns a machine per origin.
class PolicyTranslatePerRuleSm final : public TranslateSm,
                                       public Kel::SlabAllocated<PolicyTranslatePerRuleSm> {
  using Self = PolicyTranslatePerRuleSm;

 public:
  static constexpr const char* kelTypeName() {
    return "VelaPolicyMonitor::PolicyTranslatePerRuleSm";
  }
  static constexpr std::array<std::string_view, 3> kelOperations{"handleOrigin", "cleanup",
                                                                 "handleInitialized"};
  static constexpr bool kDispatchIsNoexcept = false;

  KEL_CONST(130, priority, VelaL3::VelaPriority)
  SM_INPUT(131, ruleV1, const VelaL3::VelaRuleConfig)
  KEL_CONST(132, ruleV2, Brix::Ptr<VelaL3V2::VelaRuleConfig>)
  KEL_CONST(133, cookie, Brix::Ptr<UpdateCookie>)
  SM_CHILDREN(134, perOriginSm, policyName, PolicyTranslatePerOriginSm)
  KEL_CONST(137, initialized, bool)

  PolicyTranslatePerRuleSm(VelaL3::VelaPriority priority,
                           const Brix::Ptr<const VelaL3::VelaRuleConfig>& ruleV1,
                           const Brix::Ptr<VelaL3V2::VelaRuleConfig>& ruleV2,
                           const Brix::Ptr<UpdateCookie>& cookie);
  ~PolicyTranslatePerRuleSm() override;
  static Brix::Ptr<PolicyTranslatePerRuleSm> PolicyTranslatePerRuleSmIs(
      VelaL3::VelaPriority priority, const Brix::Ptr<const VelaL3::VelaRuleConfig>& ruleV1,
      const Brix::Ptr<VelaL3V2::VelaRuleConfig>& ruleV2, const Brix::Ptr<UpdateCookie>& cookie);

  Kel::FwkType fwkType() const noexcept override;
  void hasNotificationActiveIs(bool on) noexcept override;
  bool builtFrom(const Brix::Ptr<const VelaL3::VelaRuleConfig>& ruleV1,
                 const Brix::Ptr<VelaL3V2::VelaRuleConfig>& ruleV2,
                 const Brix::Ptr<UpdateCookie>& cookie) const noexcept;

  /// The child for `name`; raises Kel::ReinstantiationException when it was built from others.
  Brix::Ptr<PolicyTranslatePerOriginSm> perOriginSmIs(
      const String& name, const Brix::Ptr<const VelaL3::VelaRuleOriginConfig>& originV1,
      const Brix::Ptr<VelaL3V2::VelaRuleOriginConfig>& originV2,
      const Brix::Ptr<UpdateCookie>& cookie);
  Brix::Ptr<PolicyTranslatePerOriginSm> perOriginSmDel(const String& name);
  void perOriginSmDelAll();

  void handleInitialized();
  void handleOrigin(const String& name);
  void handleOrigin();
  void cleanup();

  /// Where the machine stands, for the trace.
  const TracePlace& tracePlace() const noexcept { return tracePlace_; }

 private:
  friend class TranslateSm;
  auto parts() { return std::tie(ruleV1_, perOriginSm_); }
  void tearDown() noexcept override;

  TracePlace tracePlace_ = TracePlace::ofOwner().with(OnRule{priority_.value()});
};

/// The library's entry point; the arguments of the constructor.
Brix::Ptr<PolicyTranslatePerRuleSm> policyTranslatePerRuleSmFactory(
    VelaL3::VelaPriority priority, const Brix::Ptr<const VelaL3::VelaRuleConfig>& ruleV1,
    const Brix::Ptr<VelaL3V2::VelaRuleConfig>& ruleV2, const Brix::Ptr<UpdateCookie>& cookie);

}  // namespace VelaPolicyMonitor
