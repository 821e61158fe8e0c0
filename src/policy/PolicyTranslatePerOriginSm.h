#pragma once

#include <array>
#include <string_view>

#include "VelaL3/VelaRuleOriginConfig.h"
#include "VelaL3V2/VelaRuleOriginConfig.h"
#include "policy/PolicyTranslateMatchSm.h"

namespace [[using gnu: visibility("default")]] VelaPolicyMonitor {

/// Mirrors one origin of a rule: its tags, action, log flag and policy modifiers. Owned by the
/// per-rule machine; owns the match machine, from the moment the version-1 origin has a match.
class PolicyTranslatePerOriginSm final : public TranslateSm,
                                         public Kel::SlabAllocated<PolicyTranslatePerOriginSm> {
  using Self = PolicyTranslatePerOriginSm;

 public:
  static constexpr const char* kelTypeName() {
    return "VelaPolicyMonitor::PolicyTranslatePerOriginSm";
  }
  static constexpr std::array<std::string_view, 2> kelOperations{"cleanup", "handleInitialized"};
  static constexpr bool kDispatchIsNoexcept = false;

  KEL_CONST(130, policyName, String)
  SM_INPUT(131, originPolicyV1, const VelaL3::VelaRuleOriginConfig)
  KEL_CONST(132, originPolicyV2, Brix::Ptr<VelaL3V2::VelaRuleOriginConfig>)
  KEL_CONST(133, cookie, Brix::Ptr<UpdateCookie>)
  SM_CHILD(134, matchSm, PolicyTranslateMatchSm)
  KEL_CONST(135, initialized, bool)

  PolicyTranslatePerOriginSm(const String& name,
                             const Brix::Ptr<const VelaL3::VelaRuleOriginConfig>& originPolicyV1,
                             const Brix::Ptr<VelaL3V2::VelaRuleOriginConfig>& originPolicyV2,
                             const Brix::Ptr<UpdateCookie>& cookie);
  ~PolicyTranslatePerOriginSm() override;
  static Brix::Ptr<PolicyTranslatePerOriginSm> PolicyTranslatePerOriginSmIs(
      const String& name, const Brix::Ptr<const VelaL3::VelaRuleOriginConfig>& originPolicyV1,
      const Brix::Ptr<VelaL3V2::VelaRuleOriginConfig>& originPolicyV2,
      const Brix::Ptr<UpdateCookie>& cookie);

  Kel::FwkType fwkType() const noexcept override;
  void hasNotificationActiveIs(bool on) noexcept override;
  bool builtFrom(const Brix::Ptr<const VelaL3::VelaRuleOriginConfig>& originPolicyV1,
                 const Brix::Ptr<VelaL3V2::VelaRuleOriginConfig>& originPolicyV2,
                 const Brix::Ptr<UpdateCookie>& cookie) const noexcept;

  /// The match machine for these three; a machine built from others gives way to a new one.
  Brix::Ptr<PolicyTranslateMatchSm> matchSmIs(
      const Brix::Ptr<const VelaL3::VelaMatchConfig>& matchV1,
      const Brix::Ptr<VelaL3V2::VelaMatchConfig>& matchV2, const Brix::Ptr<UpdateCookie>& cookie);
  void matchSmDel();

  void handleInitialized();
  void handleTags();
  void handleModifier(VelaL3::VelaPolicyModifier modifier);
  void handleModifier();
  void handleMatch();
  void handleAction();
  void handleLog();
  void cleanup();

  /// Where the machine stands, for the trace.
  const TracePlace& tracePlace() const noexcept { return tracePlace_; }

 private:
  friend class TranslateSm;
  auto parts() { return std::tie(originPolicyV1_, matchSm_); }
  void tearDown() noexcept override;

  TracePlace tracePlace_ = TracePlace::ofOwner();
};

/// The library's entry point; the arguments of the constructor.
Brix::Ptr<PolicyTranslatePerOriginSm> policyTranslatePerOriginSmFactory(
    const String& name, const Brix::Ptr<const VelaL3::VelaRuleOriginConfig>& originPolicyV1,
    const Brix::Ptr<VelaL3V2::VelaRuleOriginConfig>& originPolicyV2,
    const Brix::Ptr<UpdateCookie>& cookie);

}  // namespace VelaPolicyMonitor
