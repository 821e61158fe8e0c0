#include "model/reference/Types.h"

namespace Reference {
namespace {

constexpr auto kTable = Order::table;
constexpr auto kValue = Kind::value;
constexpr auto kMembers = Kind::members;
constexpr auto kEntries = Kind::entries;

}  // namespace

const NodeType kMatchV1{"VelaL3::VelaMatchConfig",
                        {{258, kMembers},
                         {259, kMembers},
                         {260, kMembers},
                         {261, kMembers},
                         {262, kMembers},
                         {263, kMembers},
                         {264, kMembers},
                         {265, kMembers},
                         {266, kMembers}}};
const NodeType kOriginV1{"VelaL3::VelaRuleOriginConfig",
                         {{259, kValue},
                          {260, kValue},
                          {261, kMembers},
                          {262, kValue},
                          {263, Kind::single, &kMatchV1},
                          {264, kValue, nullptr, "forward"},
                          {265, kValue, nullptr, "false"}}};
const NodeType kRuleV1{"VelaL3::VelaRuleConfig", {{261, kEntries, &kOriginV1}}};
const NodeType kPolicyV1{
    "VelaL3::VelaPolicyConfig", {{259, kEntries, &kRuleV1}, {261, kValue}}, Order::descending};
const NodeType kPolicySetV1{"VelaL3::VelaPolicySetConfig", {{259, kEntries, &kPolicyV1}}};
const NodeType kPolicySourceV1{"VelaL3::VelaPolicySourceConfig", {{258, kEntries, &kPolicySetV1}}};

const NodeType kIntfV1{"VelaL3::L3IntfConfig", {{259, kMembers}}};
const NodeType kVrfV1{"VelaL3::VrfConfig", {{259, kEntries, &kIntfV1}, {260, kValue}}};
const NodeType kDeviceV1{"VelaL3::ServiceDeviceConfig", {{259, kEntries, &kVrfV1}}};
const NodeType kDeviceSourceV1{"VelaL3::ServiceDeviceSourceConfig", {{258, kEntries, &kDeviceV1}}};

const NodeType kMatchV2{"VelaL3V2::VelaMatchConfig",
                        {{258, kMembers},
                         {259, kMembers},
                         {260, kMembers},
                         {261, kMembers},
                         {262, kMembers},
                         {265, kMembers},
                         {266, kMembers}},
                        kTable,
                        true};
const NodeType kOriginV2{"VelaL3V2::VelaRuleOriginConfig",
                         {{259, kValue},
                          {261, kMembers},
                          {263, Kind::single, &kMatchV2},
                          {264, kValue, nullptr, "forward"},
                          {265, kValue, nullptr, "false"}},
                         kTable,
                         true};
const NodeType kRuleV2{"VelaL3V2::VelaRuleConfig", {{261, kEntries, &kOriginV2}}, kTable, true};
const NodeType kPolicyV2{"VelaL3V2::VelaPolicyConfig",
                         {{259, kEntries, &kRuleV2}, {261, kValue}},
                         Order::descending,
                         true};
const NodeType kPolicySetV2{
    "VelaL3V2::VelaPolicySetConfig", {{259, kEntries, &kPolicyV2}}, kTable, true};
const NodeType kPolicySourceV2{
    "VelaL3V2::VelaPolicySourceConfig", {{258, kEntries, &kPolicySetV2}}, kTable, true};

const NodeType kIntfV2{"VelaL3V2::L3IntfConfig", {{259, kMembers}}, kTable, true};
const NodeType kNetVrfV2{"VelaL3V2::NetVrfConfig",
                         {{258, kValue}, {259, kEntries, &kIntfV2}, {260, kValue}},
                         kTable,
                         true};
const NodeType kDeviceV2{
    "VelaL3V2::ServiceDeviceConfig", {{258, kValue}, {259, kEntries, &kNetVrfV2}}, kTable, true};
const NodeType kDeviceSourceV2{
    "VelaL3V2::ServiceDeviceSourceConfig", {{258, kEntries, &kDeviceV2}}, kTable, true};

const NodeType kRecord{"VelaPolicyMonitor::DevicePolicyList",
                       {{257, kValue, nullptr, "false"},
                        {258, kValue, nullptr, "false"},
                        {259, Kind::names},
                        {260, kValue}},
                       kTable,
                       true};
const NodeType kStatus{"VelaPolicyMonitor::Status", {{257, kEntries, &kRecord}}, kTable, true};

}  // namespace Reference
