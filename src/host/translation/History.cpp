#include "translation/History.h"

namespace Host {

History::History(const Trees& trees) {
  for (const auto& [device, record] : trees.status->devicePolicyList()) {
    for (const auto& [vrf, netVrfName] : record->netVrfNameByVrf()) {
      mapped(Kel::textOf(device), Kel::textOf(vrf), Kel::textOf(netVrfName));
    }
  }
}

void History::mapped(const std::string& record, const std::string& vrf,
                     const std::string& netVrfName) {
  if (!netVrfName.empty()) {
    vrfs_[{record, netVrfName}].insert(vrf);
  }
}

void History::changed(const Touched& touched, const Change& change, const Translation& translation,
                      bool raised) {
  for (const Touched::Pair& pair : touched.pairs()) {
    mapped(pair.record, pair.key, pair.value);
  }
  records_.insert(touched.records().begin(), touched.records().end());
  for (const TreePath& entry : touched) {
    if (change.signal || touched.isSignalled(entry)) {
      unsignalled_.erase(entry);
    } else {
      unsignalled_.insert(entry);
    }
  }
  const bool anything =
      !change.deletes.empty() || !change.replaces.empty() || !change.updates.empty();
  const auto follow = [&](Tree& tree, const Translation::State& state) {
    tree.missed = tree.missed || (anything && state.running && !state.listening);
    tree.raised = tree.raised || (raised && state.running);
  };
  follow(policies_, translation.policies());
  follow(serviceDevices_, translation.serviceDevices());
}

void History::controlled(Tree& tree, Verb verb) {
  const bool fromScratch = verb == Verb::start || (verb == Verb::initialize && tree.cleaned);
  if (fromScratch || verb == Verb::stop) {
    tree = Tree{};
  }
  tree.cleaned = tree.cleaned || verb == Verb::cleanup;
}

bool History::wasShared(const std::string& record, const std::string& netVrfName) const {
  const auto at = vrfs_.find({record, netVrfName});
  return at != vrfs_.end() && at->second.size() > 1;
}

}  // namespace Host
