#include "model/reference/Policy.h"

namespace Reference {
namespace {

constexpr int kOrigin = 261;

}  // namespace

PolicyRule::PolicyRule(World& world_, Given given)
    : Machine(world_, "VelaPolicyMonitor::PolicyTranslatePerRuleSm", std::move(given)) {
  static const Reactions kReactions = {
      {kOrigin, keyed<PolicyRule>(&PolicyRule::handleOrigin)},
  };
  watch(v1, kReactions);
}

const Machine::Forms& PolicyRule::forms() const {
  static const Forms kForms = {
      {"handleInitialized()", whole<PolicyRule>(&PolicyRule::handleInitialized)},
      {"cleanup()", whole<PolicyRule>(&PolicyRule::cleanup)},
      {"handleOrigin()", whole<PolicyRule>(&PolicyRule::handleOrigin)},
      {"handleOrigin(const String&)", keyed<PolicyRule>(&PolicyRule::handleOrigin)},
  };
  return kForms;
}

void PolicyRule::handleInitialized() {
  enter("handleInitialized()", {" Rule priority: ", key});
  initialized = true;
  handleOrigin();
  leave("handleInitialized()");
}

void PolicyRule::handleOrigin(const Text& origin) {
  const auto* const form = "handleOrigin(const String&)";
  enter(form, {" Rule priority: ", key, " policy: ", origin});
  if (const NodePtr originV1 = v1->entry(kOrigin, origin)) {
    trace(6, form, {" priority: ", key, " add policy ", origin});
    const NodePtr originV2 = v2->entryIs(kOrigin, origin);
    childIs(origin, originV1, originV2);
  } else {
    trace(6, form, {" priority: ", key, " remove policy ", origin});
    childDel(origin);
    v2->entryDel(kOrigin, origin);
  }
  mark();
  leave(form);
}

void PolicyRule::handleOrigin() {
  const auto* const form = "handleOrigin()";
  enter(form, {" Rule priority: ", key});
  bool deleted = false;
  for (Collection<NodePtr>::Walk walk(v2->entries(kOrigin)); walk.next();) {
    if (!v1->entry(kOrigin, walk.key)) {
      trace(6, form, {" priority: ", key, " remove policy ", walk.key});
      v2->entryDel(kOrigin, walk.key);
      deleted = true;
    }
  }
  for (Collection<NodePtr>::Walk walk(v1->entries(kOrigin)); walk.next();) {
    handleOrigin(walk.key);
  }
  if (deleted) {
    mark();
  }
  leave(form);
}

void PolicyRule::childIs(const Text& origin, const NodePtr& originV1, const NodePtr& originV2) {
  while (const MachinePtr* const there = children.find(origin)) {
    if ((*there)->v1 == originV1 && (*there)->v2 == originV2 && (*there)->cookie == cookie) {
      branch("perOriginSmIs", "kept");
      return;
    }
    if (!isLate()) {
      branch("perOriginSmIs", "re-instantiated");
      throw Reinstantiated();
    }
    branch("perOriginSmIs", "replaced late");
    retire(origin);
  }
  if (mayNotBring(origin)) {
    branch("childIs", "under way");
    return;
  }
  bring<PolicyOrigin>(origin, {.key = origin,
                               .v1 = originV1,
                               .v2 = originV2,
                               .record = {},
                               .netVrfName = {},
                               .cookie = cookie});
}

void PolicyRule::cleanup() {
  enter("cleanup()", {" Rule priority: ", key});
  initialized = false;
  childDelAll();
  v2->entryDelAll(kOrigin);
  leave("cleanup()");
}

}  // namespace Reference
