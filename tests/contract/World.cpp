#include "contract/World.h"

#include <set>
#include <string_view>

#include "Kel/ValueType.h"

namespace Contract {
namespace {

void appendEntity(std::string& out, const Kel::PtrInterface& entity, const std::string& indent);

struct Lines {
  const Kel::Row& row;
  std::string indent;
  std::multiset<std::string> sorted;
};

void appendRow(std::string& out, const Kel::PtrInterface& entity, const Kel::Row& row,
               const std::string& indent) {
  if (std::string_view(row.name) == "timestamp") {
    return;
  }
  if (row.walk != nullptr) {
    Lines lines{row, indent, {}};
    row.walk(entity, &lines, [](void* context, const void* key, const void* value) {
      Lines& to = *static_cast<Lines*>(context);
      std::string line = to.indent + to.row.name + " ";
      to.row.key().append(line, key);
      if (to.row.kind == Kel::RowKind::map) {
        to.row.value().append(line += " ", value);
      }
      line += "\n";
      if (to.row.kind == Kel::RowKind::entries) {
        appendEntity(line, *static_cast<const Kel::PtrInterface*>(value), to.indent + "  ");
      }
      to.sorted.insert(line);
    });
    for (const std::string& line : lines.sorted) {
      out += line;
    }
    return;
  }
  const void* const found = row.find(entity, nullptr);
  if (found == nullptr) {
    return;
  }
  out += indent + row.name;
  if (row.kind == Kel::RowKind::single) {
    out += "\n";
    appendEntity(out, *static_cast<const Kel::PtrInterface*>(found), indent + "  ");
  } else {
    row.value().append(out += " ", found);
    out += "\n";
  }
}

void appendEntity(std::string& out, const Kel::PtrInterface& entity, const std::string& indent) {
  for (const Kel::Row& row : entity.fwkType().descriptor().rows) {
    appendRow(out, entity, row, indent);
  }
}

}  // namespace

World::World()
    : policySrcV1(VelaL3::VelaPolicySourceConfig::VelaPolicySourceConfigIs()),
      policySrcV2(VelaL3V2::VelaPolicySourceConfig::VelaPolicySourceConfigIs()),
      sdSourceV1(VelaL3::ServiceDeviceSourceConfig::ServiceDeviceSourceConfigIs()),
      sdSourceV2(VelaL3V2::ServiceDeviceSourceConfig::ServiceDeviceSourceConfigIs()),
      status(VelaPolicyMonitor::Status::StatusIs()) {
  const auto own = status->devicePolicyListIs("fw1");
  own->netVrfNameByVrfIs("red", "net-red");
  own->trafficInspectionIs(Vela::TrafficInspection{2});
  for (int number = 0; number != 10; ++number) {
    status->devicePolicyListIs(device(number));
    own->netVrfNameByVrfIs(vrf(number).stringValue(), netVrf(number));
  }

  const auto policy = policySrcV1->policySetIs("fw1")->policyIs(L3::VrfName("red"));
  policy->ruleIs(VelaL3::VelaPriority(10000))->originIs("base");
  const auto origin = policy->ruleIs(VelaL3::VelaPriority(20000))->originIs("web");
  origin->actionIs(VelaL3::VelaAction::redirect);
  origin->logIs(true);
  const auto match = origin->matchIs();
  match->dstIpIs(Norv::IpGenPrefix("192.168.0.0/24"));
  match->srcIpRangeIs({Norv::IpGenAddr("192.168.0.1"), Norv::IpGenAddr("192.168.0.9")});
  match->dstL4AppIs({443, 6});

  const auto vrf = sdSourceV1->serviceDeviceIs("fw1")->vrfIs(L3::VrfName("red"));
  vrf->l3IntfIs(Norv::IpGenAddr("10.0.0.1"))
      ->reachableSubnetIs(Norv::IpGenPrefix("192.168.0.0/24"));
}

std::string dump(const Kel::PtrInterface& entity) {
  std::string out;
  appendEntity(out, entity, "");
  return out;
}

std::string dumpV2(const World& world) {
  return dump(*world.policySrcV2) + dump(*world.sdSourceV2);
}

}  // namespace Contract
