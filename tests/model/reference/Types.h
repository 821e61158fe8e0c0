#pragma once

#include "model/reference/Node.h"

namespace Reference {

// The entities of both generations and the monitor's, by the numbers of their attributes.
extern const NodeType kMatchV1, kOriginV1, kRuleV1, kPolicyV1, kPolicySetV1, kPolicySourceV1;
extern const NodeType kIntfV1, kVrfV1, kDeviceV1, kDeviceSourceV1;
extern const NodeType kMatchV2, kOriginV2, kRuleV2, kPolicyV2, kPolicySetV2, kPolicySourceV2;
extern const NodeType kIntfV2, kNetVrfV2, kDeviceV2, kDeviceSourceV2;
extern const NodeType kRecord, kStatus;

}  // namespace Reference
