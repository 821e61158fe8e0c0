#include "audit/Audit.h"
#include "text/Concat.h"

namespace Host {
namespace {

using Kind = Difference::Kind;

}  // namespace

void Audit::vrfs(const Side& side, const ServingRecord& served, const Kel::PtrInterface& device1,
                 const Kel::PtrInterface& device2) {
  if (!side.policies) {
    const Node& leaf = childOf(*side.devices2, "traffic-inspection");
    const std::string wanted = Kel::textOf(served.record->trafficInspection());
    const std::string found = leafText(leaf, device2);
    if (wanted != found) {
      found_.steps2().push_back({&leaf});
      found_.at2(Kind::defect,
                 concat({"version 2 has \"", found, "\", the monitor's record \"", wanted, "\""}));
      found_.steps2().pop_back();
    }
  }
  const std::string recordName = Kel::textOf(served.record->deviceName());
  const auto all1 = SubtreeAudit::entriesOf(*side.vrfs1, device1);
  const auto all2 = SubtreeAudit::entriesOf(*side.vrfs2, device2);
  std::map<std::string, std::vector<std::string>> users;
  const auto netVrfNameOf = [&](const std::string& vrf) {
    return Kel::textOf(served.record->netVrfNameByVrf(Kel::String(vrf)));
  };
  for (const auto& [name, vrf1] : all1) {
    users[netVrfNameOf(name)].push_back(name);
  }
  for (const auto& [name, vrf1] : all1) {
    const std::string netVrfName = netVrfNameOf(name);
    const Kel::PtrInterface* const vrf2 = SubtreeAudit::lookUp(all2, netVrfName);
    const std::vector<std::string>& sharing = users[netVrfName];
    found_.enter(*side.vrfs1, vrf1, *side.vrfs2, netVrfName.empty() ? nullptr : vrf2);
    if (netVrfName.empty()) {
      const bool there = served.record->netVrfNameByVrf().find(Kel::String(name)) != nullptr;
      found_.at1(Kind::pending, concat({"the monitor's record \"", recordName,
                                        there ? "\" has an empty network VRF name for this VRF"
                                              : "\" has no network VRF name for this VRF"}));
    } else if (sharing.size() > 1) {
      found_.at1(Kind::asDesigned,
                 concat({"this VRF shares the network VRF name \"", netVrfName, "\" with \"",
                         sharing.front() == name ? sharing[1] : sharing.front(),
                         "\"; one entry of version 2 cannot show both"}));
    } else {
      vrf(side, recordName, netVrfName, *vrf1, vrf2);
    }
    found_.leave();
  }
  for (const auto& [netVrfName, vrf2] : all2) {
    if (!users.contains(netVrfName)) {
      found_.enter(*side.vrfs1, nullptr, *side.vrfs2, vrf2);
      found_.at2(Kind::foreign, "no VRF of version 1 has this network VRF name");
      found_.leave();
    }
  }
}

void Audit::vrf(const Side& side, const std::string& recordName, const std::string& netVrfName,
                const Kel::PtrInterface& vrf1, const Kel::PtrInterface* vrf2) {
  const bool excused = found_.hasExcuse();
  if (!excused && history_.wasShared(recordName, netVrfName)) {
    found_.excuse(Kind::asDesigned,
                  concat({"the network VRF name \"", netVrfName,
                          "\" has belonged to another VRF, "
                          "which took the entry along when it left; it is back when this VRF is "
                          "announced again"}));
  }
  if (vrf2 == nullptr) {
    found_.at1(Kind::defect,
               concat({"this VRF is missing in version 2, where it is \"", netVrfName, "\""}));
  } else {
    if (!side.policies) {
      const Node& leaf = childOf(*side.vrfs2, "vrf-name");
      const std::string wanted = leafText(*side.vrfs1->children.front(), vrf1);
      const std::string found = leafText(leaf, *vrf2);
      if (wanted != found) {
        found_.at2(Kind::defect, concat({"version 2 has the VRF name \"", found,
                                         "\", version 1 has \"", wanted, "\""}));
      }
    }
    found_.members(*side.vrfs1, vrf1, *side.vrfs2, *vrf2);
    timestamps(side, vrf1, *vrf2);
  }
  if (!excused) {
    found_.noExcuse();
  }
}

void Audit::timestamps(const Side& side, const Kel::PtrInterface& vrf1,
                       const Kel::PtrInterface& vrf2) {
  const auto& leaf2 = childOf(*side.vrfs2, "timestamp");
  const auto timeOf = [](const Node& list, const Kel::PtrInterface& vrf) {
    return *static_cast<const Kel::Seconds*>(childOf(list, "timestamp").row->find(vrf, nullptr));
  };
  TreePath entry;
  for (const Step& step : found_.steps1()) {
    entry.push_back(
        {step.node, step.key == nullptr ? nullptr : copyOf(step.node->row->key(), step.key)});
  }
  found_.steps2().push_back({&leaf2});
  if (history_.isUnsignalled(entry)) {
    found_.at2(Kind::pending,
               "a burst of changes was not signalled yet; this follows the next write of the "
               "timestamp in version 1");
  } else if (side.policies && timeOf(*side.vrfs1, vrf1) > timeOf(*side.vrfs2, vrf2)) {
    const Node& rules = childOf(*side.vrfs1, "rule");
    Kel::AnyValue lowest(rules.row->key());
    std::string why;
    rules.row->key().parse("10000", lowest.get(), why);
    if (rules.row->find(vrf1, lowest.get()) != nullptr) {
      found_.at2(Kind::asDesigned,
                 "version 1 has signalled later than this; changes below rule 10000 never move it");
    }
  }
  found_.steps2().pop_back();
}

}  // namespace Host
