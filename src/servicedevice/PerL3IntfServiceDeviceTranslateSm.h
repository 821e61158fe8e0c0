#pragma once

#include <array>
#include <string_view>

#include "VelaL3/L3IntfConfig.h"
#include "VelaL3V2/L3IntfConfig.h"
#include "common/Parts.h"
#include "common/UpdateCookie.h"

namespace [[using gnu: visibility("default")]] VelaPolicyMonitor {

/// Mirrors the reachable subnets of one layer-3 interface: the leaf of the service-device tree.
/// Owned by the per-VRF machine, which deletes the version-2 interface; this one never does.
class PerL3IntfServiceDeviceTranslateSm final
    : public TranslateSm,
      public Kel::SlabAllocated<PerL3IntfServiceDeviceTranslateSm> {
  using Self = PerL3IntfServiceDeviceTranslateSm;

 public:
  static constexpr const char* kelTypeName() {
    return "VelaPolicyMonitor::PerL3IntfServiceDeviceTranslateSm";
  }
  static constexpr std::array<std::string_view, 2> kelOperations{"handleSubnet",
                                                                 "handleInitialized"};
  static constexpr bool kDispatchIsNoexcept = true;

  KEL_CONST(130, l3IntfAddr, Norv::IpGenAddr)
  SM_INPUT(131, l3IntfConfigV1, const VelaL3::L3IntfConfig)
  KEL_CONST(132, l3IntfConfigV2, Brix::Ptr<VelaL3V2::L3IntfConfig>)
  KEL_CONST(133, cookie, Brix::Ptr<UpdateCookie>)
  KEL_CONST(134, initialized, bool)

  PerL3IntfServiceDeviceTranslateSm(const Norv::IpGenAddr& l3IntfAddr,
                                    const Brix::Ptr<const VelaL3::L3IntfConfig>& l3IntfConfigV1,
                                    const Brix::Ptr<VelaL3V2::L3IntfConfig>& l3IntfConfigV2,
                                    const Brix::Ptr<UpdateCookie>& cookie);
  ~PerL3IntfServiceDeviceTranslateSm() override;
  static Brix::Ptr<PerL3IntfServiceDeviceTranslateSm> PerL3IntfServiceDeviceTranslateSmIs(
      const Norv::IpGenAddr& l3IntfAddr,
      const Brix::Ptr<const VelaL3::L3IntfConfig>& l3IntfConfigV1,
      const Brix::Ptr<VelaL3V2::L3IntfConfig>& l3IntfConfigV2,
      const Brix::Ptr<UpdateCookie>& cookie);

  Kel::FwkType fwkType() const noexcept override;
  void hasNotificationActiveIs(bool on) noexcept override;
  bool builtFrom(const Brix::Ptr<const VelaL3::L3IntfConfig>& l3IntfConfigV1,
                 const Brix::Ptr<VelaL3V2::L3IntfConfig>& l3IntfConfigV2,
                 const Brix::Ptr<UpdateCookie>& cookie) const noexcept;

  void handleInitialized();
  void handleSubnet(const Norv::IpGenPrefix& subnet);
  void handleSubnet();

  /// Where the machine stands, for the trace.
  const TracePlace& tracePlace() const noexcept { return tracePlace_; }

 private:
  friend class TranslateSm;
  auto parts() { return std::tie(l3IntfConfigV1_); }
  void tearDown() noexcept override;

  TracePlace tracePlace_ = TracePlace::ofOwner();
};

/// The library's entry point; the arguments of the constructor.
Brix::Ptr<PerL3IntfServiceDeviceTranslateSm> perL3IntfServiceDeviceTranslateSmFactory(
    const Norv::IpGenAddr& l3IntfAddr, const Brix::Ptr<const VelaL3::L3IntfConfig>& l3IntfConfigV1,
    const Brix::Ptr<VelaL3V2::L3IntfConfig>& l3IntfConfigV2, const Brix::Ptr<UpdateCookie>& cookie);

}  // namespace VelaPolicyMonitor
