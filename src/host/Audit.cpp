#include "host/Audit.h"

#include <algorithm>

#include "common/HAPairDeviceId.h"
#include "common/NameEncoder.h"
#include "host/Concat.h"

namespace Host {
namespace {

using Kind = Difference::Kind;

const Node* firstList(const Node& node) {
  const auto at = std::ranges::find(node.children, Node::Kind::list, &Node::kind);
  return at == node.children.end() ? nullptr : *at;
}

const Node& childOf(const Node& node, std::string_view name) {
  std::size_t hint = 0;
  return *node.child(name, hint);
}

std::string textOf(const Node& leaf, const Kel::PtrInterface& object) {
  std::string text;
  leaf.type->append(text, leaf.row->find(object, nullptr));
  return text;
}

const Kel::PtrInterface* lookUp(const SubtreeAudit::Entries& entries, const std::string& key) {
  const auto at = entries.find(key);
  return at == entries.end() ? nullptr : at->second;
}

std::string whyTree(const Translation::State& state, const History::Tree& past) {
  if (!state.running) {
    return "the tree is not running";
  }
  if (!state.initialized) {
    return "the tree was cleaned up and not initialized since";
  }
  if (past.raised) {
    return "a handler has raised an error and may have left its work undone; clean the tree up and "
           "initialize it";
  }
  return past.missed ? "something was changed while the tree was suspended, which is not made up "
                       "for; clean it up and initialize it"
                     : "";
}

}  // namespace

std::vector<Difference> Audit::run() {
  const auto side = [](const char* name1, const char* name2, bool policies) {
    const Node* const top1 = Schema::instance().top(name1);
    const Node* const top2 = Schema::instance().top(name2);
    const Node* const devices1 = firstList(*top1);
    const Node* const devices2 = firstList(*top2);
    return Side{top1,    top2, devices1, devices2, firstList(*devices1), firstList(*devices2),
                policies};
  };
  tree(side("vela-l3:policy-source", "vela-l3v2:policy-source", true), translation_.policies(),
       history_.policies());
  tree(side("vela-l3:service-device-source", "vela-l3v2:service-device-source", false),
       translation_.serviceDevices(), history_.serviceDevices());
  return std::move(found_.differences());
}

void Audit::tree(const Side& side, const Translation::State& state, const History::Tree& past) {
  const Kel::PtrInterface& source1 = side.top1->top->root(trees_);
  const Kel::PtrInterface& source2 = side.top2->top->root(trees_);
  const auto all1 = SubtreeAudit::entriesOf(*side.devices1, source1);
  const auto all2 = SubtreeAudit::entriesOf(*side.devices2, source2);
  found_.excuse(Kind::pending, whyTree(state, past));
  found_.enter(*side.top1, nullptr, *side.top2, nullptr);
  for (const auto& [name, device1] : all1) {
    const Kel::PtrInterface* const device2 = lookUp(all2, name);
    found_.enter(*side.devices1, device1, *side.devices2, device2);
    device(side, *device1, device2);
    found_.leave();
  }
  for (const auto& [name, device2] : all2) {
    if (!all1.contains(name)) {
      found_.enter(*side.devices1, nullptr, *side.devices2, device2);
      found_.at2(Kind::foreign, "version 1 has no such device");
      found_.leave();
    }
  }
  found_.leave();
  found_.noExcuse();
}

void Audit::device(const Side& side, const Kel::PtrInterface& device1,
                   const Kel::PtrInterface* device2) {
  const std::string name = textOf(*side.devices1->children.front(), device1);
  const Served served = servedBy(name);
  if (served.record == nullptr) {
    std::string tried;
    for (const std::string& key : served.keys) {
      tried += concat({tried.empty() ? "\"" : " and \"", key, "\""});
    }
    if (device2 == nullptr) {
      found_.at1(Kind::pending,
                 concat({"the monitor has no record for this device: looked for ", tried}));
    } else {
      found_.at2(Kind::asDesigned,
                 concat({"the monitor's record of this device is gone (looked for ", tried,
                         "); what was translated stays until the device is announced again"}));
    }
    return;
  }
  const bool excused = found_.hasExcuse();
  if (!excused && isBindingUnsure(side, served, name)) {
    found_.excuse(Kind::pending,
                  "the monitor's record came or went, which is noticed when the "
                  "device is announced the next time");
  }
  if (device2 == nullptr) {
    found_.at1(Kind::defect, "this device is missing in version 2");
  } else {
    vrfs(side, served, device1, *device2);
  }
  if (!excused) {
    found_.noExcuse();
  }
}

/// Whether the translation may still follow another record than the one that is there now.
bool Audit::isBindingUnsure(const Side& side, const Served& served,
                            const std::string& device) const {
  const bool converged =
      side.policies ? served.record->policyConverge() : served.record->serviceDeviceConverge();
  if (!converged) {
    return true;
  }
  const bool changed = std::ranges::any_of(
      served.keys, [&](const std::string& key) { return history_.cameOrWent(key); });
  // A pair may have changed over from one member's record to the other's; and the flag of a record
  // that serves a pair as well, whose name has several components, may have been set for the pair.
  return changed && (served.keys.size() > 1 || device.find(':') != std::string::npos);
}

void Audit::vrfs(const Side& side, const Served& served, const Kel::PtrInterface& device1,
                 const Kel::PtrInterface& device2) {
  if (!side.policies) {
    const Node& leaf = childOf(*side.devices2, "traffic-inspection");
    const std::string wanted = Kel::textOf(served.record->trafficInspection());
    const std::string found = textOf(leaf, device2);
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
    const Kel::PtrInterface* const vrf2 = lookUp(all2, netVrfName);
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
      const std::string wanted = textOf(*side.vrfs1->children.front(), vrf1);
      const std::string found = textOf(leaf, *vrf2);
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

/// The record that serves a device, worked out from the names alone.
Audit::Served Audit::servedBy(const std::string& device) const {
  using VelaL3V2Shared::NameEncoder;
  using VelaL3V2Shared::NameSet;
  const auto names = NameEncoder::decode(Kel::String(device));
  const std::string first = Kel::textOf(names.name(0));
  constexpr std::string_view kMarker = VelaPolicyMonitor::HAPairDeviceId::kMarker;
  Served served;
  if (!first.ends_with(kMarker)) {
    served.keys.push_back(device);
  } else {
    const auto members =
        NameEncoder::decode(Kel::String(first.substr(0, first.size() - kMarker.size())));
    for (const NameSet::Index member : {0U, 1U}) {
      NameSet wanted;
      wanted.nameIs(0, members.name(member));
      wanted.nameIs(1, names.name(1));
      wanted.nameIs(2, names.name(2));
      served.keys.push_back(Kel::textOf(NameEncoder::encode(wanted)));
    }
  }
  for (const std::string& key : served.keys) {
    if (served.record == nullptr) {
      served.record = trees_.status->devicePolicyList(Kel::String(key));
    }
  }
  return served;
}

}  // namespace Host
