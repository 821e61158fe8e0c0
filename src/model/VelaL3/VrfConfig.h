#pragma once

#include "L3/VrfName.h"
#include "VelaL3/L3IntfConfig.h"

namespace [[using gnu: visibility("default")]] VelaL3 {

/// One VRF of a service device: its interfaces by address, and the time at which the last burst of
/// changes ended. Writing that time, also an equal one, is the signal that the burst is complete.
class VrfConfig final : public Kel::Entity<VrfConfig, Type::vrf> {
 public:
  static constexpr const char* kelTypeName() { return "VelaL3::VrfConfig"; }
  explicit VrfConfig(const L3::VrfName& vrfName) : vrfName_(vrfName) {}
  static Brix::Ptr<VrfConfig> VrfConfigIs(const L3::VrfName& vrfName) { return create(vrfName); }

  KEL_CONST(256, vrfName, L3::VrfName)
  KEL_ENTRY(259, l3Intf, address, L3IntfConfig)  ///< Its interfaces.
  KEL_ATTR(260, timestamp, Kel::Seconds)         ///< When a burst has ended; writing it says so.
};

}  // namespace VelaL3
