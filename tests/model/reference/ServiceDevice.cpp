#include "model/reference/Service.h"

namespace Reference {
namespace {

constexpr int kVrf = 259;
constexpr int kNetVrf = 259;
constexpr int kVrfName = 258;
constexpr int kInspection = 260;

}  // namespace

ServiceDevice::ServiceDevice(World& world_, Given given)
    : Machine(world_, "VelaPolicyMonitor::PerServiceDeviceTranslateSm", std::move(given)) {
  static const Reactions kReactions = {
      {kVrf, keyed<ServiceDevice>(&ServiceDevice::handleVrf)},
  };
  watch(v1, kReactions);
  static const Reactions kRecordReactions = {
      {259, keyed<ServiceDevice>(&ServiceDevice::handleVrf)},
      {kInspection, whole<ServiceDevice>(&ServiceDevice::handleTrafficInspection)},
  };
  watch(record, kRecordReactions);
}

const Machine::Forms& ServiceDevice::forms() const {
  static const Forms kForms = {
      {"handleInitialized()", whole<ServiceDevice>(&ServiceDevice::handleInitialized)},
      {"cleanup()", whole<ServiceDevice>(&ServiceDevice::cleanup)},
      {"handleVrf()", whole<ServiceDevice>(&ServiceDevice::handleVrf)},
      {"handleVrf(const String&)", keyed<ServiceDevice>(&ServiceDevice::handleVrf)},
      {"handleTrafficInspection()", whole<ServiceDevice>(&ServiceDevice::handleTrafficInspection)},
  };
  return kForms;
}

void ServiceDevice::handleInitialized() {
  enter("handleInitialized()");
  initialized = true;
  handleVrf();
  handleTrafficInspection();
  record->write(258, "true");
  leave("handleInitialized()");
}

void ServiceDevice::handleVrf(const Text& vrfName) {
  const auto* const form = "handleVrf(const String&)";
  enter(form, {" Device: ", key, "VRF name: ", vrfName});
  if (vrfName.size() > 100) {
    throw OutOfRange("Kel::String::bytes > maxLength() not allowed");
  }
  const NodePtr vrfV1 = v1->entry(kVrf, vrfName);
  const Text net = record->name(vrfName);
  if (vrfV1 && !net.empty()) {
    act(form, {" Device: ", key, " add VRF ", vrfName, "/", net});
    const NodePtr vrfV2 = v2->entryIs(kNetVrf, net);
    const MachinePtr* const child = children.find(vrfName);
    if (child != nullptr && (*child)->netVrfName != net) {
      branch(form, "renamed");
      const Text old = (*child)->netVrfName;
      childDel(vrfName);
      v2->entryDel(kNetVrf, old);
    }
    childIs(vrfName, net, vrfV1, vrfV2);
  } else {
    act(form, {" Device: ", key, " remove VRF ", vrfName});
    if (const MachinePtr* const child = children.find(vrfName)) {
      branch(form, vrfV1 ? "name gone" : "VRF gone");
      const Text old = (*child)->netVrfName;
      childDel(vrfName);
      v2->entryDel(kNetVrf, old);
    } else {
      branch(form, "no child");
    }
  }
  leave(form);
}

void ServiceDevice::handleVrf() {
  const auto* const form = "handleVrf()";
  enter(form, {"Device name: ", key});
  for (Collection<NodePtr>::Walk walk(v2->entries(kNetVrf)); walk.next();) {
    const Text vrfName = (*walk.value)->value(kVrfName);
    if (!v1->entry(kVrf, vrfName) || record->name(vrfName) != walk.key) {
      branch(form, v1->entry(kVrf, vrfName) ? "other name" : "VRF gone");
      act(form, {" Device: ", key, " remove network VRF ", walk.key});
      v2->entryDel(kNetVrf, walk.key);
    }
  }
  for (Collection<NodePtr>::Walk walk(v1->entries(kVrf)); walk.next();) {
    handleVrf(walk.key);
  }
  leave(form);
}

void ServiceDevice::childIs(const Text& vrfName, const Text& net, const NodePtr& vrfV1,
                            const NodePtr& vrfV2) {
  while (const MachinePtr* const there = children.find(vrfName)) {
    if ((*there)->v1 == vrfV1 && (*there)->v2 == vrfV2 && (*there)->netVrfName == net) {
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
  bring<ServiceVrf>(
      vrfName,
      {.key = vrfName, .v1 = vrfV1, .v2 = vrfV2, .record = {}, .netVrfName = net, .cookie = {}});
}

void ServiceDevice::handleTrafficInspection() {
  const auto* const form = "handleTrafficInspection()";
  const Text inspection = record->value(kInspection);
  const bool unified = inspection.find("unified") != Text::npos;
  enter(form, {"Device name: ", key, " unified: ", unified ? "true" : "false"});
  v2->write(258, inspection);
  leave(form);
}

void ServiceDevice::cleanup() {
  enter("cleanup()", {" Device name: ", key});
  initialized = false;
  childDelAll();
  v2->entryDelAll(kNetVrf);
  leave("cleanup()");
}

}  // namespace Reference
