#pragma once

#include <array>
#include <string_view>

#include "VelaL3/ServiceDeviceSourceConfig.h"
#include "VelaL3V2/ServiceDeviceSourceConfig.h"
#include "monitor/Status.h"
#include "servicedevice/PerServiceDeviceTranslateSm.h"

namespace [[using gnu: visibility("default")]] VelaPolicyMonitor {

/// The top of the service-device tree: keeps the version-2 source at exactly one device for each
/// version-1 device that a monitor record serves. Created by the agent; owns a machine per such
/// device. Dropping it empties the version-2 source: drop a root before making its successor.
class ServiceDeviceTranslateRootSm final : public TranslateSm,
                                           public Kel::SlabAllocated<ServiceDeviceTranslateRootSm> {
  using Self = ServiceDeviceTranslateRootSm;

 public:
  static constexpr const char* kelTypeName() {
    return "VelaPolicyMonitor::ServiceDeviceTranslateRootSm";
  }
  static constexpr std::array<std::string_view, 4> kelOperations{"getPolicyList", "handleDevice",
                                                                 "cleanup", "handleInitialized"};
  static constexpr bool kDispatchIsNoexcept = true;

  SM_INPUT(130, sdSourceV1, const VelaL3::ServiceDeviceSourceConfig)
  KEL_CONST(131, sdSourceV2, Brix::Ptr<VelaL3V2::ServiceDeviceSourceConfig>)
  KEL_CONST(132, vpmStatus, Brix::Ptr<Status>)
  SM_CHILDREN(133, perDeviceSm, deviceName, PerServiceDeviceTranslateSm)
  KEL_CONST(137, initialized, bool)

  ServiceDeviceTranslateRootSm(const Brix::Ptr<const VelaL3::ServiceDeviceSourceConfig>& sdSourceV1,
                               const Brix::Ptr<VelaL3V2::ServiceDeviceSourceConfig>& sdSourceV2,
                               const Brix::Ptr<Status>& vpmStatus);
  ~ServiceDeviceTranslateRootSm() override;
  static Brix::Ptr<ServiceDeviceTranslateRootSm> ServiceDeviceTranslateRootSmIs(
      const Brix::Ptr<const VelaL3::ServiceDeviceSourceConfig>& sdSourceV1,
      const Brix::Ptr<VelaL3V2::ServiceDeviceSourceConfig>& sdSourceV2,
      const Brix::Ptr<Status>& vpmStatus);

  Kel::FwkType fwkType() const noexcept override;
  void hasNotificationActiveIs(bool on) noexcept override;

  /// The child for `name`; one that was built from other objects gives way to a new one.
  Brix::Ptr<PerServiceDeviceTranslateSm> perDeviceSmIs(
      const String& name, const Brix::Ptr<const VelaL3::ServiceDeviceConfig>& sdConfigV1,
      const Brix::Ptr<VelaL3V2::ServiceDeviceConfig>& sdConfigV2,
      const Brix::Ptr<DevicePolicyList>& policyList);
  Brix::Ptr<PerServiceDeviceTranslateSm> perDeviceSmDel(const String& name);
  void perDeviceSmDelAll();

  /// The record that serves a device (see PolicyListLookup.h); null when there is none.
  Brix::Ptr<DevicePolicyList> getPolicyList(const Vela::DeviceName& deviceName) const;

  void handleInitialized();
  void handleDevice(const String& name);
  void handleDevice();
  void cleanup();

  /// Where the machine stands, for the trace.
  const TracePlace& tracePlace() const noexcept { return tracePlace_; }

 private:
  friend class TranslateSm;
  auto parts() { return std::tie(sdSourceV1_, perDeviceSm_); }
  void tearDown() noexcept override;

  TracePlace tracePlace_;
};

/// The agent's entry point: mirrors what is there and then follows every change, until dropped.
Brix::Ptr<ServiceDeviceTranslateRootSm> serviceDeviceTranslateRootSmFactory(
    const Brix::Ptr<const VelaL3::ServiceDeviceSourceConfig>& sdSourceV1,
    const Brix::Ptr<VelaL3V2::ServiceDeviceSourceConfig>& sdSourceV2,
    const Brix::Ptr<Status>& vpmStatus);

/// The name under which dlsym finds the factory.
inline constexpr const char* kServiceDeviceTranslateRootSmFactory =
    "_ZN17VelaPolicyMonitor35serviceDeviceTranslateRootSmFactoryERKN4Brix3PtrIKN6"
    "VelaL325ServiceDeviceSourceConfigEEERKNS1_IN8VelaL3V225ServiceDeviceSourceConfigEEE"
    "RKNS1_INS_6StatusEEE";

}  // namespace VelaPolicyMonitor
