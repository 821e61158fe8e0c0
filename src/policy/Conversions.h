#pragma once

#include "VelaL3/VelaAction.h"
#include "VelaL3/VelaIpRange.h"
#include "VelaL3/VelaL4App.h"
#include "VelaL3/VelaL4AppRange.h"
#include "VelaL3/VelaPolicyModifier.h"
#include "VelaL3V2/VelaAction.h"
#include "VelaL3V2/VelaIpRange.h"
#include "VelaL3V2/VelaL4App.h"
#include "VelaL3V2/VelaL4AppRange.h"
#include "VelaL3V2/VelaPolicyModifier.h"

namespace [[using gnu: visibility("default")]] VelaPolicyMonitor {

/// By ordinal. An ordinal outside the enumeration is a broken configuration in memory and stops the
/// process with the assertion "Should not be here".
VelaL3V2::VelaAction toVelaL3V2Action(VelaL3::VelaAction action);
VelaL3V2::VelaPolicyModifier toVelaL3V2PolicyModifier(VelaL3::VelaPolicyModifier modifier);
VelaL3::VelaPolicyModifier toVelaL3V1PolicyModifier(VelaL3V2::VelaPolicyModifier modifier);

// The members of a match: addresses, prefixes and protocols are the same type in both generations
// and pass as they are, the others are copied field by field and not checked.
template <class Same>
const Same& toV2(const Same& value) {
  return value;
}
inline VelaL3V2::VelaIpRange toV2(const VelaL3::VelaIpRange& range) {
  return {range.first, range.last};
}
inline VelaL3V2::VelaL4App toV2(const VelaL3::VelaL4App& app) { return {app.port, app.protocol}; }
inline VelaL3V2::VelaL4AppRange toV2(const VelaL3::VelaL4AppRange& range) {
  return {range.first, range.last, range.protocol};
}

template <class Same>
const Same& toV1(const Same& value) {
  return value;
}
inline VelaL3::VelaIpRange toV1(const VelaL3V2::VelaIpRange& range) {
  return {range.first, range.last};
}
inline VelaL3::VelaL4App toV1(const VelaL3V2::VelaL4App& app) { return {app.port, app.protocol}; }
inline VelaL3::VelaL4AppRange toV1(const VelaL3V2::VelaL4AppRange& range) {
  return {range.first, range.last, range.protocol};
}

}  // namespace VelaPolicyMonitor
