#include "audit/Audit.h"

#include <algorithm>

#include "text/Concat.h"

namespace Host {
namespace {

using Kind = Difference::Kind;

const Node* firstList(const Node& node) {
  const auto at = std::ranges::find(node.children, Node::Kind::list, &Node::kind);
  return at == node.children.end() ? nullptr : *at;
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

std::vector<Difference> Audit::run(const std::set<std::string>* only) {
  only_ = only;
  const auto side = [](const char* name1, const char* name2, bool policies) {
    const Node* const top1 = Schema::instance().top(name1);
    const Node* const top2 = Schema::instance().top(name2);
    const Node* const devices1 = firstList(*top1);
    const Node* const devices2 = firstList(*top2);
    return Side{top1,    top2, devices1, devices2, firstList(*devices1), firstList(*devices2),
                policies};
  };
  tree(side("vela-l3:policy-source", "vela-l3v2:policy-source", true), policies_,
       history_.policies());
  tree(side("vela-l3:service-device-source", "vela-l3v2:service-device-source", false),
       serviceDevices_, history_.serviceDevices());
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
    if (!isAskedFor(name)) {
      continue;
    }
    const Kel::PtrInterface* const device2 = SubtreeAudit::lookUp(all2, name);
    found_.enter(*side.devices1, device1, *side.devices2, device2);
    device(side, *device1, device2);
    found_.leave();
  }
  for (const auto& [name, device2] : all2) {
    if (!all1.contains(name) && isAskedFor(name)) {
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
  const std::string name = leafText(*side.devices1->children.front(), device1);
  const ServingRecord served(trees_, name);
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
bool Audit::isBindingUnsure(const Side& side, const ServingRecord& served,
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

}  // namespace Host
