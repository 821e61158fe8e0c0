#include "model/reference/Policy.h"
#include "model/reference/Service.h"

namespace Reference {
namespace {

constexpr int kDevice = 258;

}  // namespace

ServiceRoot::ServiceRoot(World& world_, Given given)
    : Machine(world_, "VelaPolicyMonitor::ServiceDeviceTranslateRootSm", std::move(given)) {
  static const Reactions kReactions = {
      {kDevice, keyed<ServiceRoot>(&ServiceRoot::handleDevice)},
  };
  watch(v1, kReactions);
}

const Machine::Forms& ServiceRoot::forms() const {
  static const Forms kForms = {
      {"handleInitialized()", whole<ServiceRoot>(&ServiceRoot::handleInitialized)},
      {"cleanup()", whole<ServiceRoot>(&ServiceRoot::cleanup)},
      {"handleDevice()", whole<ServiceRoot>(&ServiceRoot::handleDevice)},
      {"handleDevice(const String&)", keyed<ServiceRoot>(&ServiceRoot::handleDevice)},
  };
  return kForms;
}

void ServiceRoot::handleInitialized() {
  enter("handleInitialized()");
  initialized = true;
  handleDevice();
  leave("handleInitialized()");
}

void ServiceRoot::handleDevice(const Text& deviceName) {
  const auto* const form = "handleDevice(const String&)";
  if (!initialized) {
    branch(form, "not initialized");
    return;
  }
  enter(form, {" Device name: ", deviceName});
  const NodePtr deviceV1 = v1 ? v1->entry(kDevice, deviceName) : nullptr;
  const NodePtr list = policyList(record, deviceName);
  if (deviceV1 && list) {
    act(form, {" add device ", deviceName});
    const NodePtr deviceV2 = v2->entryIs(kDevice, deviceName);
    childIs(deviceName, deviceV1, deviceV2, list);
  } else {
    branch(form, deviceV1 ? "no record" : "no entry");
    act(form, {" remove device ", deviceName});
    childDel(deviceName);
    if (v2) {
      v2->entryDel(kDevice, deviceName);
    }
  }
  leave(form);
}

void ServiceRoot::handleDevice() {
  const auto* const form = "handleDevice()";
  if (!initialized) {
    branch(form, "not initialized");
    return;
  }
  enter(form);
  if (v2) {
    for (Collection<NodePtr>::Walk walk(v2->entries(kDevice)); walk.next();) {
      if (!v1 || !v1->entry(kDevice, walk.key)) {
        act(form, {" remove device ", walk.key});
        v2->entryDel(kDevice, walk.key);
      }
    }
  }
  if (v1) {
    for (Collection<NodePtr>::Walk walk(v1->entries(kDevice)); walk.next();) {
      handleDevice(walk.key);
    }
  }
  leave(form);
}

void ServiceRoot::childIs(const Text& deviceName, const NodePtr& deviceV1, const NodePtr& deviceV2,
                          const NodePtr& list) {
  while (const MachinePtr* const there = children.find(deviceName)) {
    if ((*there)->v1 == deviceV1 && (*there)->v2 == deviceV2 && (*there)->record == list) {
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
  bring<ServiceDevice>(deviceName, {.key = deviceName,
                                    .v1 = deviceV1,
                                    .v2 = deviceV2,
                                    .record = list,
                                    .netVrfName = {},
                                    .cookie = {}});
}

void ServiceRoot::cleanup() {
  enter("cleanup()");
  initialized = false;
  childDelAll();
  if (v2) {
    v2->entryDelAll(kDevice);
  }
  leave("cleanup()");
}

}  // namespace Reference
