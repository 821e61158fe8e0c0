#pragma once

#include <array>
#include <string_view>

#include "VelaL3/VelaMatchConfig.h"
#include "VelaL3V2/VelaMatchConfig.h"
#include "common/Parts.h"
#include "common/UpdateCookie.h"

namespace [[using gnu: visibility("default")]] VelaPolicyMonitor {

class Handling;

/// Mirrors the seven sets of a version-1 match into the version-2 match: the leaf of the policy
/// tree. Owned by the per-origin machine, which deletes the version-2 match; this one never does.
class PolicyTranslateMatchSm final : public TranslateSm,
                                     public Kel::SlabAllocated<PolicyTranslateMatchSm> {
  using Self = PolicyTranslateMatchSm;

 public:
  static constexpr const char* kelTypeName() { return "VelaPolicyMonitor::PolicyTranslateMatchSm"; }
  static constexpr std::array<std::string_view, 1> kelOperations{"handleInitialized"};
  static constexpr bool kDispatchIsNoexcept = false;

  SM_INPUT(130, matchV1, const VelaL3::VelaMatchConfig)
  KEL_CONST(131, matchV2, Brix::Ptr<VelaL3V2::VelaMatchConfig>)
  KEL_CONST(132, cookie, Brix::Ptr<UpdateCookie>)
  KEL_CONST(133, initialized, bool)

  PolicyTranslateMatchSm(const Brix::Ptr<const VelaL3::VelaMatchConfig>& matchV1,
                         const Brix::Ptr<VelaL3V2::VelaMatchConfig>& matchV2,
                         const Brix::Ptr<UpdateCookie>& cookie);
  ~PolicyTranslateMatchSm() override;
  static Brix::Ptr<PolicyTranslateMatchSm> PolicyTranslateMatchSmIs(
      const Brix::Ptr<const VelaL3::VelaMatchConfig>& matchV1,
      const Brix::Ptr<VelaL3V2::VelaMatchConfig>& matchV2, const Brix::Ptr<UpdateCookie>& cookie);

  Kel::FwkType fwkType() const noexcept override;
  void hasNotificationActiveIs(bool on) noexcept override;
  bool builtFrom(const Brix::Ptr<const VelaL3::VelaMatchConfig>& matchV1,
                 const Brix::Ptr<VelaL3V2::VelaMatchConfig>& matchV2,
                 const Brix::Ptr<UpdateCookie>& cookie) const noexcept;

  void handleInitialized();
  void handleSrcIp(const Norv::IpGenPrefix& prefix);
  void handleSrcIp();
  void handleSrcIpRange(const VelaL3::VelaIpRange& range);
  void handleSrcIpRange();
  void handleDstIp(const Norv::IpGenPrefix& prefix);
  void handleDstIp();
  void handleDstIpRange(const VelaL3::VelaIpRange& range);
  void handleDstIpRange();
  void handleL3App(Norv::IpProto protocol);
  void handleL3App();
  void handleDstL4App(VelaL3::VelaL4App app);
  void handleDstL4App();
  void handleDstL4AppRange(const VelaL3::VelaL4AppRange& range);
  void handleDstL4AppRange();

  /// Where the machine stands, for the trace.
  const TracePlace& tracePlace() const noexcept { return tracePlace_; }

 private:
  friend class TranslateSm;
  auto parts() { return std::tie(matchV1_); }
  void tearDown() noexcept override;

  /// The two bodies of all handlers; `Mirrored` says which set, and what its lines say.
  template <const auto& Mirrored, class Key>
  void mirror(const Key& key);
  template <const auto& Mirrored>
  void mirrorAll();
  template <const auto& Mirrored>
  bool isFresh() const;
  template <const auto& Mirrored>
  void fill(const Handling& run);

  TracePlace tracePlace_ = TracePlace::ofOwner();
};

/// The library's entry point; the arguments of the constructor.
Brix::Ptr<PolicyTranslateMatchSm> policyTranslateMatchSmFactory(
    const Brix::Ptr<const VelaL3::VelaMatchConfig>& matchV1,
    const Brix::Ptr<VelaL3V2::VelaMatchConfig>& matchV2, const Brix::Ptr<UpdateCookie>& cookie);

}  // namespace VelaPolicyMonitor
