#include "common/PolicyListLookup.h"

#include "common/HAPairDeviceId.h"
#include "common/NameEncoder.h"

namespace VelaPolicyMonitor {

using VelaL3V2Shared::NameEncoder;
using VelaL3V2Shared::NameSet;

Brix::Ptr<DevicePolicyList> policyListOf(const Brix::Ptr<Status>& vpmStatus,
                                         const Kel::String& deviceName) {
  if (!vpmStatus) {
    return nullptr;
  }
  const NameSet names = NameEncoder::decode(deviceName);
  const HAPairDeviceId pair(names.name(0));
  if (!HAPairDeviceId::isHAPairDeviceId(pair.value())) {
    return vpmStatus->devicePolicyList(deviceName);
  }
  const auto recordOfMember = [&](const Kel::String& member) {
    NameSet key;
    key.nameIs(0, member);
    key.nameIs(1, names.name(1));
    key.nameIs(2, names.name(2));
    return vpmStatus->devicePolicyList(NameEncoder::encode(key));
  };
  if (auto record = recordOfMember(pair.getFw1Name())) {
    return record;
  }
  return recordOfMember(pair.getFw2Name());
}

}  // namespace VelaPolicyMonitor
