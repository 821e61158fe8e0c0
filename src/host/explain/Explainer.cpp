#include "explain/Explainer.h"

#include <algorithm>
#include <array>
#include <set>

#include "explain/Counterpart.h"
#include "explain/Remedies.h"
#include "text/Concat.h"
#include "text/JsonText.h"

namespace Host {
namespace {

std::string keyOf(const OwnedStep& step) {
  return step.key == nullptr ? "" : keyText(*step.node, step.keyPlace());
}

/// "fw1" and "fw2": in quotes, and joined.
std::string quotedAll(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) {
    text += concat({text.empty() ? "\"" : " and \"", name, "\""});
  }
  return text;
}

}  // namespace

Explanation Explainer::explain(const TreePath& path) {
  explanation_.path = pathOf(stepsOf(path));
  policies_ = path.front().node->name == "policy-source";
  ways(path);
  object1_ = &way1_.front().node->top->root(trees_);
  object2_ = &way2_.front().node->top->root(trees_);
  machine_ = translation_.root(policies_);
  tree();
  for (std::size_t i = kDevice; i < std::max(way1_.size(), way2_.size()); ++i) {
    const OwnedStep* const step1 = i < way1_.size() ? &way1_[i] : nullptr;
    const OwnedStep* const step2 = i < way2_.size() ? &way2_[i] : nullptr;
    const Object* const parent1 = object1_;
    if (step1 != nullptr) {
      version1(*step1);
    }
    if (i == kDevice) {
      record();
    } else if (i == kVrf && step1 != nullptr && step1->key != nullptr) {
      mapping();
    } else if (i == kVrf && step1 == nullptr && step2->key != nullptr) {
      owner();
    }
    if (step1 != nullptr && step1->node->isObject()) {
      const bool known2 = step2 != nullptr && object2_ != nullptr;
      machine(*step1,
              known2 ? asObject(step2->node->row->find(*object2_, step2->keyPlace())) : nullptr);
    }
    if (step2 != nullptr) {
      version2(*step2, step1, parent1);
    }
    if (i == kVrf) {
      stamp();
    }
  }
  conclude();
  return std::move(explanation_);
}

void Explainer::add(Explanation::Step step, const std::string& why, std::string remedy) {
  if (!step.found && explanation_.missing.empty()) {
    explanation_.missing = why;
    explanation_.remedy = std::move(remedy);
  }
  explanation_.steps.push_back(std::move(step));
}

void Explainer::tree() {
  const Translation::State state =
      policies_ ? translation_.policies() : translation_.serviceDevices();
  const std::string name = policies_ ? "policy" : "service-device";
  std::string text = "is running";
  std::string verb;
  if (!state.running) {
    text = "is not running";
    verb = "start";
  } else if (!state.initialized) {
    text = "was cleaned up and not initialized since";
    verb = "initialize";
  } else if (!state.listening) {
    text = "is suspended: it does not follow what changes";
    verb = "resume";
  }
  add({"tree", name, "", verb.empty(), text}, concat({"the ", name, " tree ", text}),
      controlLine(verb, policies_));
}

void Explainer::version1(const OwnedStep& step) {
  if (object1_ == nullptr) {
    return;
  }
  const Node& node = *step.node;
  const void* const value = node.row->find(*object1_, step.keyPlace());
  const bool isLeaf = node.kind == Node::Kind::leaf;
  const bool found = isLeaf ? !node.type->absent(value) : value != nullptr;
  const std::string text =
      !found ? "not in version 1"
             : concat({"in version 1", isLeaf ? concat({": ", valueText(*node.type, value)}) : ""});
  explanation_.steps.push_back({node.name, keyOf(step), path1To(step), found, text});
  if (!found && lackedIn1_ == nullptr) {
    // Nothing else counts then: there is nothing that could be in version 2.
    lackedIn1_ = &node;
    const std::string key = keyOf(step);
    explanation_.missing =
        concat({"version 1 has no ", node.name, key.empty() ? "" : concat({" \"", key, "\""})});
    const Node& last = *way1_.back().node;
    explanation_.remedy = last.kind == Node::Kind::leaf
                              ? ""
                              : updateLine(pathOf(stepsOf(way1_)), last.isObject() ? "{}" : "");
  }
  object1_ = node.isObject() ? asObject(value) : object1_;
}

void Explainer::record() {
  const bool found = served_->record != nullptr;
  const std::string tried = quotedAll(served_->keys);
  const std::string text =
      found
          ? concat({"serves the device", served_->keys.size() == 1
                                             ? ""
                                             : concat({"; looked for ", tried, ", in this order"})})
          : concat({"looked for ", tried});
  add({"record", found ? Kel::textOf(served_->record->deviceName()) : served_->keys.front(),
       recordPath(), found, text},
      concat({"the monitor has no record for device \"", device_, "\" (looked for ", tried, ")"}),
      updateLine(recordPath(), "{}", path1To(way1_[kDevice])));
}

void Explainer::mapping() {
  if (served_->record == nullptr) {
    return;
  }
  const std::string vrf = keyOf(way1_[kVrf]);
  const std::string name = netVrfNameOf(vrf);
  const std::string path = recordPath(vrf);
  const std::string whose =
      concat({"the monitor's record \"", Kel::textOf(served_->record->deviceName()), "\""});
  if (name.empty()) {
    const bool there = served_->record->netVrfNameByVrf().find(Kel::String(vrf)) != nullptr;
    const std::string text = there ? "an empty network VRF name" : "no network VRF name";
    isProposal_ = explanation_.missing.empty();
    return add({"mapping", vrf, path, false, text},
               concat({whose, " has ", text, " for VRF \"", vrf, "\""}), proposal(vrf));
  }
  because_ = concat({whose, " calls VRF \"", vrf, "\" \"", name, "\""});
  const std::string asked = way2_.size() > kVrf ? keyOf(way2_[kVrf]) : name;
  std::vector<std::string> sharing = vrfsCalled(name);
  std::erase(sharing, vrf);
  if (asked != name) {
    add({"mapping", vrf, path, false, concat({"\"", name, "\" in the network now"})},
        concat({because_, " now; its state machine has not followed"}),
        notifyLine(path1To(way1_[kVrf])));
  } else if (sharing.empty()) {
    add({"mapping", vrf, path, true, concat({"\"", name, "\" in the network"})});
  } else {
    const std::string others = quotedAll(sharing);
    add({"mapping", vrf, path, false, concat({"\"", name, "\" in the network, as is ", others})},
        concat({because_, ", and ", others,
                " as well: one entry of version 2 cannot show more than one VRF"}));
  }
}

/// A change line that gives this VRF a name: as other records call it, else its own; one that the
/// record does not use yet. Empty: no name comes to mind.
std::string Explainer::proposal(const std::string& vrf) const {
  std::vector<std::string> names;
  for (const auto& [device, record] : trees_.status->devicePolicyList()) {
    names.push_back(Kel::textOf(record->netVrfNameByVrf(Kel::String(vrf))));
  }
  std::ranges::sort(names);
  names.push_back(vrf);
  std::set<std::string> taken{""};
  for (const auto& [other, name] : served_->record->netVrfNameByVrf()) {
    taken.insert(Kel::textOf(name));
  }
  const auto at =
      std::ranges::find_if(names, [&](const auto& name) { return !taken.contains(name); });
  if (at == names.end()) {
    return {};
  }
  std::string value = "{\"net-vrf-name\":";
  appendJsonText(value, *at);
  return updateLine(recordPath(vrf), value + "}");
}

void Explainer::owner() {
  const std::string name = keyOf(way2_[kVrf]);
  const std::string text = concat({"no VRF of device \"", device_, "\" has this name"});
  add({"owner", name, "", false, text},
      concat({"no VRF of device \"", device_, "\" is called \"", name, "\" in the network"}));
}

/// The path of the record that serves the device, or could; with a VRF, of its mapping there.
std::string Explainer::recordPath(const std::string& vrf) const {
  const Kel::String name = served_->record == nullptr ? Kel::String(served_->keys.front())
                                                      : served_->record->deviceName();
  const Kel::String vrfName(vrf);
  const Node& status = *Schema::instance().top("vela-policy-monitor:status");
  const Node& records = *status.children.front();
  const auto mapping = std::ranges::find(records.children, Node::Kind::mapping, &Node::kind);
  const std::array<Step, 3> steps{Step{&status}, Step{&records, &name}, Step{*mapping, &vrfName}};
  return pathOf(std::span(steps).first(vrf.empty() ? 2 : 3));
}

std::string Explainer::pathTo(const TreePath& way, const OwnedStep& step) {
  const std::vector<Step> steps = stepsOf(way);
  return pathOf(std::span(steps).first(static_cast<std::size_t>(&step - way.data()) + 1));
}

}  // namespace Host
