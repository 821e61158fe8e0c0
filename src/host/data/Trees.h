#pragma once

#include <span>
#include <string_view>

#include "VelaL3/VelaL3.h"
#include "VelaL3V2/VelaL3V2.h"
#include "monitor/Status.h"

namespace Host {

/// The roots of everything that a run works on, fresh and empty.
struct Trees {
  Brix::Ptr<VelaL3::VelaPolicySourceConfig> policyV1 =
      VelaL3::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  Brix::Ptr<VelaL3::ServiceDeviceSourceConfig> serviceDeviceV1 =
      VelaL3::ServiceDeviceSourceConfig::ServiceDeviceSourceConfigIs();
  Brix::Ptr<VelaL3V2::VelaPolicySourceConfig> policyV2 =
      VelaL3V2::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  Brix::Ptr<VelaL3V2::ServiceDeviceSourceConfig> serviceDeviceV2 =
      VelaL3V2::ServiceDeviceSourceConfig::ServiceDeviceSourceConfigIs();
  Brix::Ptr<VelaPolicyMonitor::Status> status = VelaPolicyMonitor::Status::StatusIs();
};

/// A container at the top of the data tree, and the object that it stands for.
struct Container {
  std::string_view module;
  std::string_view name;
  bool state;  ///< written by the library alone: documents must not hold it
  const Kel::TypeDescriptor& (*type)();
  Kel::PtrInterface& (*root)(const Trees& trees);
};

// What the attributes' own descriptors do not say of the data tree. All else is taken from them.

/// The five containers, in the order in which they are printed.
std::span<const Container> containers();
/// Attributes without a node: agents keep notes of their own in them.
std::span<const std::string_view> unlistedAttributes();
/// Attributes of configured entries that the library alone writes.
std::span<const std::string_view> stateAttributes();

}  // namespace Host
