#include "data/Trees.h"

#include <array>

namespace Host {

std::span<const Container> containers() {
  using Kel::describe;
  static constexpr std::array<Container, 5> kContainers{{
      {"vela-l3", "policy-source", false, &describe<VelaL3::VelaPolicySourceConfig>,
       [](const Trees& trees) -> Kel::PtrInterface& { return *trees.policyV1; }},
      {"vela-l3", "service-device-source", false, &describe<VelaL3::ServiceDeviceSourceConfig>,
       [](const Trees& trees) -> Kel::PtrInterface& { return *trees.serviceDeviceV1; }},
      {"vela-l3v2", "policy-source", true, &describe<VelaL3V2::VelaPolicySourceConfig>,
       [](const Trees& trees) -> Kel::PtrInterface& { return *trees.policyV2; }},
      {"vela-l3v2", "service-device-source", true, &describe<VelaL3V2::ServiceDeviceSourceConfig>,
       [](const Trees& trees) -> Kel::PtrInterface& { return *trees.serviceDeviceV2; }},
      {"vela-policy-monitor", "status", false, &describe<VelaPolicyMonitor::Status>,
       [](const Trees& trees) -> Kel::PtrInterface& { return *trees.status; }},
  }};
  return kContainers;
}

std::span<const std::string_view> unlistedAttributes() {
  static constexpr std::array<std::string_view, 2> kNames{"description", "owner"};
  return kNames;
}

std::span<const std::string_view> stateAttributes() {
  static constexpr std::array<std::string_view, 2> kNames{"policyConverge",
                                                          "serviceDeviceConverge"};
  return kNames;
}

}  // namespace Host
