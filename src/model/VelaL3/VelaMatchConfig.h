#pragma once

#include "Kel/Attributes.h"
#include "Norv/Norv.h"
#include "VelaL3/Module.h"
#include "VelaL3/VelaIpRange.h"
#include "VelaL3/VelaL4App.h"
#include "VelaL3/VelaL4AppRange.h"

namespace [[using gnu: visibility("default")]] VelaL3 {

/// What traffic a rule applies to: sets of criteria. The two sets of source layer-4 applications
/// are configured here and not translated.
class VelaMatchConfig final : public Kel::Entity<VelaMatchConfig, Type::match> {
 public:
  static constexpr const char* kelTypeName() { return "VelaL3::VelaMatchConfig"; }
  static Brix::Ptr<VelaMatchConfig> VelaMatchConfigIs() { return create(); }

  KEL_SET(258, srcIp, Norv::IpGenPrefix)       ///< From any of these.
  KEL_SET(259, srcIpRange, VelaIpRange)        ///< From any address in one of these.
  KEL_SET(260, dstIp, Norv::IpGenPrefix)       ///< To any of these.
  KEL_SET(261, dstIpRange, VelaIpRange)        ///< To any address in one of these.
  KEL_SET(262, l3App, Norv::IpProto)           ///< Of any of these IP protocols.
  KEL_SET(263, srcL4App, VelaL4App)            ///< From any of these ports; not translated.
  KEL_SET(264, srcL4AppRange, VelaL4AppRange)  ///< From a port in one of these; not translated.
  KEL_SET(265, dstL4App, VelaL4App)            ///< To any of these ports.
  KEL_SET(266, dstL4AppRange, VelaL4AppRange)  ///< To a port in one of these.
};

}  // namespace VelaL3
