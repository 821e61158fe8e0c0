#include "translation/ServingRecord.h"

#include "common/HAPairDeviceId.h"
#include "common/NameEncoder.h"

namespace Host {

ServingRecord::ServingRecord(const Trees& trees, const std::string& device) {
  using VelaL3V2Shared::NameEncoder;
  using VelaL3V2Shared::NameSet;
  const auto names = NameEncoder::decode(Kel::String(device));
  const std::string first = Kel::textOf(names.name(0));
  constexpr std::string_view kMarker = VelaPolicyMonitor::HAPairDeviceId::kMarker;
  if (!first.ends_with(kMarker)) {
    keys.push_back(device);
  } else {
    const auto members =
        NameEncoder::decode(Kel::String(first.substr(0, first.size() - kMarker.size())));
    for (const NameSet::Index member : {0U, 1U}) {
      NameSet wanted;
      wanted.nameIs(0, members.name(member));
      wanted.nameIs(1, names.name(1));
      wanted.nameIs(2, names.name(2));
      keys.push_back(Kel::textOf(NameEncoder::encode(wanted)));
    }
  }
  for (const std::string& key : keys) {
    if (record == nullptr) {
      record = trees.status->devicePolicyList(Kel::String(key));
    }
  }
}

}  // namespace Host
