#include "model/reference/Service.h"

namespace Reference {
namespace {

constexpr int kSubnet = 259;

}  // namespace

ServiceIntf::ServiceIntf(World& world_, Given given)
    : Machine(world_, "VelaPolicyMonitor::PerL3IntfServiceDeviceTranslateSm", std::move(given)) {
  static const Reactions kReactions = {
      {kSubnet, keyed<ServiceIntf>(&ServiceIntf::handleSubnet)},
  };
  watch(v1, kReactions);
}

const Machine::Forms& ServiceIntf::forms() const {
  static const Forms kForms = {
      {"handleInitialized()", whole<ServiceIntf>(&ServiceIntf::handleInitialized)},
      {"handleSubnet()", whole<ServiceIntf>(&ServiceIntf::handleSubnet)},
      {"handleSubnet(const Norv::IpGenPrefix&)", keyed<ServiceIntf>(&ServiceIntf::handleSubnet)},
  };
  return kForms;
}

void ServiceIntf::handleInitialized() {
  enter("handleInitialized()", {" l3 intf: ", key});
  initialized = true;
  handleSubnet();
  leave("handleInitialized()");
}

void ServiceIntf::handleSubnet(const Text& subnet) {
  const auto* const form = "handleSubnet(const Norv::IpGenPrefix&)";
  enter(form, {" l3 intf: ", key, " subnet: ", subnet});
  if (v1->has(kSubnet, subnet)) {
    branch(form, "add");
    act(form, {" l3 intf: ", key, " add subnet ", subnet});
    v2->insert(kSubnet, subnet);
  } else {
    branch(form, "remove");
    act(form, {" l3 intf: ", key, " remove subnet ", subnet});
    v2->erase(kSubnet, subnet);
  }
  mark();
  leave(form);
}

void ServiceIntf::handleSubnet() {
  const auto* const form = "handleSubnet()";
  enter(form, {" l3 intf: ", key});
  bool deleted = false;
  for (Collection<bool>::Walk walk(v2->members(kSubnet)); walk.next();) {
    if (!v1->has(kSubnet, walk.key)) {
      branch(form, "remove");
      act(form, {" l3 intf: ", key, " remove subnet ", walk.key});
      v2->erase(kSubnet, walk.key);
      deleted = true;
    }
  }
  for (Collection<bool>::Walk walk(v1->members(kSubnet)); walk.next();) {
    handleSubnet(walk.key);
  }
  if (deleted) {
    mark();
  }
  leave(form);
}

// It has none: whoever owns it deletes the interface in version 2.
void ServiceIntf::cleanup() {}

}  // namespace Reference
