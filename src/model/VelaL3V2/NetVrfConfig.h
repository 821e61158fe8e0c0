#pragma once

#include "L3/VrfName.h"
#include "VelaL3V2/L3IntfConfig.h"

namespace [[using gnu: visibility("default")]] VelaL3V2 {

/// One network VRF of a service device: the VRF that it was made from (empty until that is known),
/// the time of its last change (absent until the first one), and its interfaces by address.
class NetVrfConfig final : public Kel::Entity<NetVrfConfig, Type::netVrf> {
 public:
  static constexpr const char* kelTypeName() { return "VelaL3V2::NetVrfConfig"; }
  explicit NetVrfConfig(const Kel::String& netVrfName) : netVrfName_(netVrfName) {}
  static Brix::Ptr<NetVrfConfig> NetVrfConfigIs(const Kel::String& netVrfName) {
    return create(netVrfName);
  }

  KEL_CONST(256, netVrfName, Kel::String)
  KEL_ATTR(258, vrfName, L3::VrfName)            ///< What the device calls it.
  KEL_ENTRY(259, l3Intf, address, L3IntfConfig)  ///< Its interfaces.
  KEL_ATTR(260, timestamp, Kel::Seconds)         ///< When a burst has changed it last.
};

}  // namespace VelaL3V2
