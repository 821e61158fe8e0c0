#include "common/HAPairDeviceId.h"

#include <array>
#include <cstddef>
#include <ostream>

#include "Kel/Describe.h"
#include "common/NameEncoder.h"

namespace VelaPolicyMonitor {

using VelaL3V2Shared::NameEncoder;
using VelaL3V2Shared::NameSet;

Kel::String HAPairDeviceId::encode(const Kel::String& fw1Name, const Kel::String& fw2Name) {
  const bool inOrder = fw1Name < fw2Name;
  NameSet names;
  names.nameIs(0, inOrder ? fw1Name : fw2Name);
  names.nameIs(1, inOrder ? fw2Name : fw1Name);
  return std::string(NameEncoder::encode(names)) + std::string(kMarker);
}

bool HAPairDeviceId::isHAPairDeviceId(const Kel::String& deviceId) noexcept {
  return deviceId.view().ends_with(kMarker);
}

Kel::String HAPairDeviceId::memberName(std::uint32_t index) const {
  // Deliberate: whether the end really is the marker is not checked here.
  const std::size_t size = value_.size();
  if (size <= kMarker.size()) {
    return {};
  }
  return NameEncoder::decode(value_.view().substr(0, size - kMarker.size())).name(index);
}

void kelAppend(std::string& out, const HAPairDeviceId& id) { out += id.value().view(); }

bool kelParse(std::string_view text, HAPairDeviceId& value, std::string& /*why*/) {
  value = HAPairDeviceId(text);
  return true;
}

std::ostream& operator<<(std::ostream& out, const HAPairDeviceId& id) {
  return out << id.value().view();
}

}  // namespace VelaPolicyMonitor

namespace Kel {

template <>
const ValueType& valueTypeOf<VelaPolicyMonitor::HAPairDeviceId>() {
  static const ValueType type = describeValue<VelaPolicyMonitor::HAPairDeviceId>(
      "VelaPolicyMonitor::HAPairDeviceId", Encoding::string);
  return type;
}

namespace {
const ValueTypeRegistration kRegistration{valueTypeOf<VelaPolicyMonitor::HAPairDeviceId>()};
}  // namespace

}  // namespace Kel
