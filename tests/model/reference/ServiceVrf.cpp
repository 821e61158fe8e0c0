#include "model/reference/Service.h"

namespace Reference {
namespace {

constexpr int kVrfName = 258;
constexpr int kIntf = 259;

}  // namespace

ServiceVrf::ServiceVrf(World& world_, Given given)
    : Machine(world_, "VelaPolicyMonitor::PerVrfServiceDeviceTranslateSm", std::move(given)) {
  static const Reactions kReactions = {
      {kIntf, keyed<ServiceVrf>(&ServiceVrf::handleL3Intf)},
      {260, whole<ServiceVrf>(&ServiceVrf::doUpdate)},
  };
  watch(v1, kReactions);
}

const Machine::Forms& ServiceVrf::forms() const {
  static const Forms kForms = {
      {"handleInitialized()", whole<ServiceVrf>(&ServiceVrf::handleInitialized)},
      {"cleanup()", whole<ServiceVrf>(&ServiceVrf::cleanup)},
      {"handleL3Intf()", whole<ServiceVrf>(&ServiceVrf::handleL3Intf)},
      {"handleL3Intf(const Norv::IpGenAddr&)", keyed<ServiceVrf>(&ServiceVrf::handleL3Intf)},
      {"doUpdate()", whole<ServiceVrf>(&ServiceVrf::doUpdate)},
  };
  return kForms;
}

void ServiceVrf::cookieIs(const CookiePtr& value) {
  if (cookie != value) {
    cookie = value;
    notifiees.publish(135, {});
  }
}

void ServiceVrf::initializedIs(bool value) {
  if (initialized != value) {
    initialized = value;
    notifiees.publish(136, {});
  }
}

void ServiceVrf::initCompleteIs(bool value) {
  if (initComplete != value) {
    initComplete = value;
    notifiees.publish(137, {});
  }
}

void ServiceVrf::handleInitialized() {
  const auto* const form = "handleInitialized()";
  enter(form, {" VRF name: ", key});
  cookieIs(freshCookie());
  initializedIs(true);
  v2->write(kVrfName, key);
  handleL3Intf();
  doUpdate();
  initCompleteIs(true);
  leave(form);
}

void ServiceVrf::handleL3Intf(const Text& address) {
  const auto* const form = "handleL3Intf(const Norv::IpGenAddr&)";
  enter(form, {" VRF: ", key, " l3 intf: ", address});
  if (const NodePtr intfV1 = v1->entry(kIntf, address)) {
    act(form, {" VRF: ", key, " add l3 intf ", address});
    const NodePtr intfV2 = v2->entryIs(kIntf, address);
    childIs(address, intfV1, intfV2);
  } else {
    act(form, {" VRF: ", key, " remove l3 intf ", address});
    childDel(address);
    v2->entryDel(kIntf, address);
  }
  mark();
  leave(form);
}

void ServiceVrf::handleL3Intf() {
  const auto* const form = "handleL3Intf()";
  enter(form);
  bool deleted = false;
  for (Collection<NodePtr>::Walk walk(v2->entries(kIntf)); walk.next();) {
    if (!v1->entry(kIntf, walk.key)) {
      act(form, {" remove l3 intf ", walk.key});
      v2->entryDel(kIntf, walk.key);
      deleted = true;
    }
  }
  for (Collection<NodePtr>::Walk walk(v1->entries(kIntf)); walk.next();) {
    handleL3Intf(walk.key);
  }
  if (deleted) {
    mark();
  }
  leave(form);
}

void ServiceVrf::childIs(const Text& address, const NodePtr& intfV1, const NodePtr& intfV2) {
  while (const MachinePtr* const there = children.find(address)) {
    if ((*there)->v1 == intfV1 && (*there)->v2 == intfV2 && (*there)->cookie == cookie) {
      branch("perL3IntfSmIs", "kept");
      return;
    }
    branch("perL3IntfSmIs", "replaced");
    retire(address);
  }
  if (mayNotBring(address)) {
    branch("childIs", "under way");
    return;
  }
  bring<ServiceIntf>(address, {.key = address,
                               .v1 = intfV1,
                               .v2 = intfV2,
                               .record = {},
                               .netVrfName = {},
                               .cookie = cookie});
}

void ServiceVrf::doUpdate() {
  const auto* const form = "doUpdate()";
  if (!initialized || !cookie || !cookie->updated) {
    branch(form, initialized ? "nothing changed" : "not initialized");
    return;
  }
  enter(form, {" VRF name: ", key});
  const CookiePtr stamped = cookie;
  const long marks = stamped->marks;
  v2->write(260, world.time);
  // What was changed by an observer of the time is stamped at the next signal.
  stamped->updated = stamped->marks != marks;
}

void ServiceVrf::cleanup() {
  enter("cleanup()", {" VRF name: ", key});
  initializedIs(false);
  childDelAll();
  v2->entryDelAll(kIntf);
  leave("cleanup()");
}

}  // namespace Reference
