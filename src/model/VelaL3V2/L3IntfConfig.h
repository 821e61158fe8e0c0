#pragma once

#include "Kel/Attributes.h"
#include "Norv/Norv.h"
#include "VelaL3V2/Module.h"

namespace [[using gnu: visibility("default")]] VelaL3V2 {

/// One layer-3 interface of a VRF, by its address: the subnets reachable through it.
class L3IntfConfig final : public Kel::Entity<L3IntfConfig, Type::l3Intf> {
 public:
  static constexpr const char* kelTypeName() { return "VelaL3V2::L3IntfConfig"; }
  explicit L3IntfConfig(const Norv::IpGenAddr& address) : address_(address) {}
  static Brix::Ptr<L3IntfConfig> L3IntfConfigIs(const Norv::IpGenAddr& address) {
    return create(address);
  }

  KEL_CONST(256, address, Norv::IpGenAddr)
  KEL_SET(259, reachableSubnet, Norv::IpGenPrefix)  ///< What is reached through it.
};

}  // namespace VelaL3V2
