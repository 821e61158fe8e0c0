#include <set>

#include "model/reference/Policy.h"

namespace Reference {
namespace {

constexpr int kPolicy = 259;

}  // namespace

PolicyDevice::PolicyDevice(World& world_, Given given)
    : Machine(world_, "VelaPolicyMonitor::PolicyTranslatePerDeviceSm", std::move(given)) {
  static const Reactions kReactions = {
      {kPolicy, keyed<PolicyDevice>(&PolicyDevice::handleVrf)},
  };
  watch(v1, kReactions);
  static const Reactions kRecordReactions = {
      {259, keyed<PolicyDevice>(&PolicyDevice::handleVrf)},
  };
  watch(record, kRecordReactions);
}

const Machine::Forms& PolicyDevice::forms() const {
  static const Forms kForms = {
      {"handleInitialized()", whole<PolicyDevice>(&PolicyDevice::handleInitialized)},
      {"cleanup()", whole<PolicyDevice>(&PolicyDevice::cleanup)},
      {"handleVrf()", whole<PolicyDevice>(&PolicyDevice::handleVrf)},
      {"handleVrf(const String&)", keyed<PolicyDevice>(&PolicyDevice::handleVrf)},
  };
  return kForms;
}

void PolicyDevice::handleInitialized() {
  enter("handleInitialized()");
  initialized = true;
  handleVrf();
  record->write(257, "true");
  leave("handleInitialized()");
}

void PolicyDevice::handleVrf(const Text& vrfName) {
  const auto* const form = "handleVrf(const String&)";
  enter(form, {" Device: ", key, " VRF name: ", vrfName});
  if (vrfName.size() > 100) {
    throw OutOfRange("Kel::String::bytes > maxLength() not allowed");
  }
  const NodePtr policyV1 = v1->entry(kPolicy, vrfName);
  const Text net = record->name(vrfName);
  if (policyV1 && !net.empty()) {
    act(form, {" Device: ", key, " add VRF ", vrfName, "/", net});
    const NodePtr policyV2 = v2->entryIs(kPolicy, net);
    const MachinePtr* const child = children.find(vrfName);
    if (child != nullptr && (*child)->netVrfName != net) {
      branch(form, "renamed");
      const Text old = (*child)->netVrfName;
      childDel(vrfName);
      v2->entryDel(kPolicy, old);
    }
    childIs(vrfName, net, policyV1, policyV2);
  } else {
    act(form, {" Device: ", key, " remove VRF ", vrfName});
    if (const MachinePtr* const child = children.find(vrfName)) {
      branch(form, policyV1 ? "name gone" : "policy gone");
      const Text old = (*child)->netVrfName;
      childDel(vrfName);
      v2->entryDel(kPolicy, old);
    } else {
      branch(form, "no child");
    }
  }
  leave(form);
}

void PolicyDevice::handleVrf() {
  const auto* const form = "handleVrf()";
  enter(form);
  std::set<Text> wanted;
  for (Collection<NodePtr>::Walk walk(v1->entries(kPolicy)); walk.next();) {
    wanted.insert(record->name(walk.key));
  }
  wanted.erase("");
  for (Collection<NodePtr>::Walk walk(v2->entries(kPolicy)); walk.next();) {
    if (!wanted.contains(walk.key)) {
      act(form, {" remove network VRF ", walk.key});
      v2->entryDel(kPolicy, walk.key);
    }
  }
  for (Collection<NodePtr>::Walk walk(v1->entries(kPolicy)); walk.next();) {
    handleVrf(walk.key);
  }
  leave(form);
}

void PolicyDevice::childIs(const Text& vrfName, const Text& net, const NodePtr& policyV1,
                           const NodePtr& policyV2) {
  while (const MachinePtr* const there = children.find(vrfName)) {
    if ((*there)->v1 == policyV1 && (*there)->v2 == policyV2 && (*there)->netVrfName == net) {
      branch("perVrfSmIs", "kept");
      return;
    }
    branch("perVrfSmIs", "replaced");
    retire(vrfName);
  }
  if (mayNotBring(vrfName)) {
    branch("childIs", "under way");
    return;
  }
  bring<PolicyVrf>(vrfName, {.key = vrfName,
                             .v1 = policyV1,
                             .v2 = policyV2,
                             .record = {},
                             .netVrfName = net,
                             .cookie = {}});
}

void PolicyDevice::cleanup() {
  enter("cleanup()");
  initialized = false;
  childDelAll();
  v2->entryDelAll(kPolicy);
}

}  // namespace Reference
