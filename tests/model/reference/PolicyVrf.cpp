#include "model/reference/Policy.h"

namespace Reference {
namespace {

constexpr int kRule = 259;

void checkPriority(const Text& priority, const char* type) {
  const unsigned long value = std::stoul(priority);
  if (value < 10000 || value > 30000) {
    throw OutOfRange(Text(type) + "::value < " + type + "::min or > " + type + "::max not allowed");
  }
}

}  // namespace

PolicyVrf::PolicyVrf(World& world_, Given given)
    : Machine(world_, "VelaPolicyMonitor::PolicyTranslatePerVrfSm", std::move(given)) {
  static const Reactions kReactions = {
      {kRule, keyed<PolicyVrf>(&PolicyVrf::handleRule)},
      {261, whole<PolicyVrf>(&PolicyVrf::doUpdate)},
  };
  watch(v1, kReactions);
}

const Machine::Forms& PolicyVrf::forms() const {
  static const Forms kForms = {
      {"handleInitialized()", whole<PolicyVrf>(&PolicyVrf::handleInitialized)},
      {"cleanup()", whole<PolicyVrf>(&PolicyVrf::cleanup)},
      {"handleRule()", whole<PolicyVrf>(&PolicyVrf::handleRule)},
      {"handleRule(VelaL3::VelaPriority)", keyed<PolicyVrf>(&PolicyVrf::handleRule)},
      {"doUpdate()", whole<PolicyVrf>(&PolicyVrf::doUpdate)},
  };
  return kForms;
}

void PolicyVrf::cookieIs(const CookiePtr& value) {
  if (cookie != value) {
    cookie = value;
    notifiees.publish(135, {});
  }
}

void PolicyVrf::initializedIs(bool value) {
  if (initialized != value) {
    initialized = value;
    notifiees.publish(139, {});
  }
}

void PolicyVrf::initCompleteIs(bool value) {
  if (initComplete != value) {
    initComplete = value;
    notifiees.publish(140, {});
  }
}

void PolicyVrf::handleInitialized() {
  const auto* const form = "handleInitialized()";
  enter(form, {" VRF name: ", key});
  // Run again without a cleanup between: the children hold the cookie that was there.
  const CookiePtr before = initialized ? cookie : nullptr;
  cookieIs(freshCookie());
  initializedIs(true);
  try {
    handleRule();
  } catch (...) {
    if (before) {
      branch(form, "cookie put back");
      cookieIs(before);
    }
    throw;
  }
  doUpdate();
  initCompleteIs(true);
  leave(form);
}

void PolicyVrf::handleRule(const Text& priority) {
  const auto* const form = "handleRule(VelaL3::VelaPriority)";
  enter(form, {" Rule: ", key, " priority: ", priority});
  checkPriority(priority, "VelaL3V2::VelaPriority");
  if (const NodePtr ruleV1 = v1->entry(kRule, priority)) {
    act(form, {" VRF name: ", key, " add priority ", priority});
    const NodePtr ruleV2 = v2->entryIs(kRule, priority);
    childIs(priority, ruleV1, ruleV2, priority == "10000" ? nullptr : cookie);
  } else {
    act(form, {" VRF name: ", key, " remove priority ", priority});
    childDel(priority);
    v2->entryDel(kRule, priority);
  }
  mark();
  leave(form);
}

void PolicyVrf::handleRule() {
  const auto* const form = "handleRule()";
  enter(form, {" VRF name: ", key});
  bool deleted = false;
  for (Collection<NodePtr>::Walk walk(v2->entries(kRule)); walk.next();) {
    checkPriority(walk.key, "VelaL3::VelaPriority");
    if (!v1->entry(kRule, walk.key)) {
      act(form, {" VRF name: ", key, " remove priority ", walk.key});
      v2->entryDel(kRule, walk.key);
      deleted = true;
    }
  }
  for (Collection<NodePtr>::Walk walk(v1->entries(kRule)); walk.next();) {
    handleRule(walk.key);
  }
  if (deleted) {
    mark();
  }
  leave(form);
}

void PolicyVrf::childIs(const Text& priority, const NodePtr& ruleV1, const NodePtr& ruleV2,
                        const CookiePtr& chosen) {
  bool replaced = false;
  while (const MachinePtr* const there = children.find(priority)) {
    if ((*there)->v1 == ruleV1 && (*there)->v2 == ruleV2 && (*there)->cookie == chosen) {
      branch("perRuleSmIs", "kept");
      if (replaced) {
        notifiees.publish(134, priority);
      }
      return;
    }
    if (!isLate()) {
      branch("perRuleSmIs", "re-instantiated");
      throw Reinstantiated();
    }
    branch("perRuleSmIs", "replaced late");
    retire(priority);
    replaced = true;
  }
  if (mayNotBring(priority)) {
    branch("childIs", "under way");
    return;
  }
  bring<PolicyRule>(priority, {.key = priority,
                               .v1 = ruleV1,
                               .v2 = ruleV2,
                               .record = {},
                               .netVrfName = {},
                               .cookie = chosen});
  notifiees.publish(134, priority);
}

void PolicyVrf::childDel(const Text& priority) {
  const Text gone = priority;
  // Its notifiees are told before it ends.
  if (const auto child = children.take(gone)) {
    notifiees.publish(134, gone);
  }
}

void PolicyVrf::doUpdate() {
  const auto* const form = "doUpdate()";
  if (!initialized || !cookie || !cookie->updated) {
    branch(form, initialized ? "nothing changed" : "not initialized");
    return;
  }
  enter(form, {" VRF name: ", key});
  const CookiePtr stamped = cookie;
  const long marks = stamped->marks;
  v2->write(261, world.time);
  // What was changed by an observer of the time is stamped at the next signal.
  stamped->updated = stamped->marks != marks;
}

void PolicyVrf::cleanup() {
  enter("cleanup()", {" VRF name: ", key});
  initializedIs(false);
  childDelAll();
  v2->entryDelAll(kRule);
  leave("cleanup()");
}

}  // namespace Reference
