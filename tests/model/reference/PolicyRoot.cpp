#include "model/reference/Policy.h"

namespace Reference {
namespace {

constexpr int kPolicySet = 258;

}  // namespace

PolicyRoot::PolicyRoot(World& world_, Given given)
    : Machine(world_, "VelaPolicyMonitor::PolicyTranslateRootSm", std::move(given)) {
  static const Reactions kReactions = {
      {kPolicySet, keyed<PolicyRoot>(&PolicyRoot::handlePolicySet)},
  };
  watch(v1, kReactions);
}

const Machine::Forms& PolicyRoot::forms() const {
  static const Forms kForms = {
      {"handleInitialized()", whole<PolicyRoot>(&PolicyRoot::handleInitialized)},
      {"cleanup()", whole<PolicyRoot>(&PolicyRoot::cleanup)},
      {"handlePolicySet()", whole<PolicyRoot>(&PolicyRoot::handlePolicySet)},
      {"handlePolicySet(const String&)", keyed<PolicyRoot>(&PolicyRoot::handlePolicySet)},
  };
  return kForms;
}

void PolicyRoot::handleInitialized() {
  enter("handleInitialized()");
  initialized = true;
  handlePolicySet();
  leave("handleInitialized()");
}

void PolicyRoot::handlePolicySet() {
  const auto* const form = "handlePolicySet()";
  if (!initialized) {
    branch(form, "not initialized");
    return;
  }
  enter(form);
  if (v2) {
    for (Collection<NodePtr>::Walk walk(v2->entries(kPolicySet)); walk.next();) {
      if (!v1 || !v1->entry(kPolicySet, walk.key)) {
        act(form, {" remove device ", walk.key});
        v2->entryDel(kPolicySet, walk.key);
      }
    }
  }
  if (v1) {
    for (Collection<NodePtr>::Walk walk(v1->entries(kPolicySet)); walk.next();) {
      handlePolicySet(walk.key);
    }
  }
  leave(form);
}

void PolicyRoot::handlePolicySet(const Text& deviceName) {
  const auto* const form = "handlePolicySet(const String&)";
  if (!initialized) {
    branch(form, "not initialized");
    return;
  }
  enter(form, {" Device name: ", deviceName});
  const NodePtr setV1 = v1 ? v1->entry(kPolicySet, deviceName) : nullptr;
  const NodePtr list = policyList(record, deviceName);
  if (setV1 && list) {
    act(form, {" add device ", deviceName});
    const NodePtr setV2 = v2->entryIs(kPolicySet, deviceName);
    childIs(deviceName, setV1, setV2, list);
  } else {
    branch(form, setV1 ? "no record" : "no entry");
    act(form, {" remove device ", deviceName});
    childDel(deviceName);
    if (v2) {
      v2->entryDel(kPolicySet, deviceName);
    }
  }
  leave(form);
}

void PolicyRoot::childIs(const Text& deviceName, const NodePtr& setV1, const NodePtr& setV2,
                         const NodePtr& list) {
  while (const MachinePtr* const there = children.find(deviceName)) {
    if ((*there)->v1 == setV1 && (*there)->v2 == setV2 && (*there)->record == list) {
      branch("perDeviceSmIs", "kept");
      return;
    }
    branch("perDeviceSmIs", "replaced");
    retire(deviceName);
  }
  if (mayNotBring(deviceName)) {
    branch("childIs", "under way");
    return;
  }
  bring<PolicyDevice>(deviceName, {.key = deviceName,
                                   .v1 = setV1,
                                   .v2 = setV2,
                                   .record = list,
                                   .netVrfName = {},
                                   .cookie = {}});
}

void PolicyRoot::cleanup() {
  enter("cleanup()");
  initialized = false;
  childDelAll();
  if (v2) {
    v2->entryDelAll(kPolicySet);
  }
}

}  // namespace Reference
