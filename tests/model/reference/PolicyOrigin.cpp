#include "model/reference/Policy.h"

namespace Reference {
namespace {

constexpr int kTags = 259;
constexpr int kModifiers = 261;
constexpr int kMatch = 263;
constexpr int kAction = 264;
constexpr int kLog = 265;

}  // namespace

PolicyOrigin::PolicyOrigin(World& world_, Given given)
    : Machine(world_, "VelaPolicyMonitor::PolicyTranslatePerOriginSm", std::move(given)) {
  static const Reactions kReactions = {
      {kTags, whole<PolicyOrigin>(&PolicyOrigin::handleTags)},
      {kModifiers, keyed<PolicyOrigin>(&PolicyOrigin::handleModifier)},
      {kMatch, whole<PolicyOrigin>(&PolicyOrigin::handleMatch)},
      {kAction, whole<PolicyOrigin>(&PolicyOrigin::handleAction)},
      {kLog, whole<PolicyOrigin>(&PolicyOrigin::handleLog)},
  };
  watch(v1, kReactions);
}

const Machine::Forms& PolicyOrigin::forms() const {
  static const Forms kForms = {
      {"handleInitialized()", whole<PolicyOrigin>(&PolicyOrigin::handleInitialized)},
      {"cleanup()", whole<PolicyOrigin>(&PolicyOrigin::cleanup)},
      {"handleModifier()", whole<PolicyOrigin>(&PolicyOrigin::handleModifier)},
      {"handleModifier(VelaL3::VelaPolicyModifier)",
       keyed<PolicyOrigin>(&PolicyOrigin::handleModifier)},
      {"handleTags()", whole<PolicyOrigin>(&PolicyOrigin::handleTags)},
      {"handleLog()", whole<PolicyOrigin>(&PolicyOrigin::handleLog)},
      {"handleAction()", whole<PolicyOrigin>(&PolicyOrigin::handleAction)},
      {"handleMatch()", whole<PolicyOrigin>(&PolicyOrigin::handleMatch)},
  };
  return kForms;
}

void PolicyOrigin::handleInitialized() {
  enter("handleInitialized()", {" policy: ", key});
  initialized = true;
  handleModifier();
  handleMatch();
  handleTags();
  handleAction();
  handleLog();
  leave("handleInitialized()", " return");
}

// A value without a counterpart in version 2 ends the process.
void PolicyOrigin::checkOrdinal(const Text& value, std::initializer_list<const char*> known) {
  if (std::find(known.begin(), known.end(), value) == known.end()) {
    world.end("Should not be here");
    throw Ended();
  }
}

void PolicyOrigin::handleTags() {
  const auto* const form = "handleTags()";
  if (!initialized) {
    branch(form, "not initialized");
    return;
  }
  enter(form, {" policy: ", key});
  v2->write(kTags, v1->value(kTags));
  mark();
  leave(form, " return");
}

void PolicyOrigin::handleLog() {
  const auto* const form = "handleLog()";
  if (!initialized) {
    branch(form, "not initialized");
    return;
  }
  enter(form, {" policy: ", key, " policyV1Log: ", v1->value(kLog)});
  v2->write(kLog, v1->value(kLog));
  mark();
  leave(form, " return");
}

void PolicyOrigin::handleAction() {
  const auto* const form = "handleAction()";
  if (!initialized) {
    branch(form, "not initialized");
    return;
  }
  enter(form, {" policy: ", key, " action: ", v1->value(kAction)});
  checkOrdinal(v1->value(kAction), {"forward", "drop", "redirect"});
  v2->write(kAction, v1->value(kAction));
  mark();
  leave(form, " return");
}

void PolicyOrigin::handleMatch() {
  const auto* const form = "handleMatch()";
  if (!initialized) {
    branch(form, "not initialized");
    return;
  }
  enter(form, {" policy: ", key});
  if (const NodePtr matchV1 = v1->entry(kMatch, "")) {
    const NodePtr matchV2 = v2->entryIs(kMatch, "");
    if (matchSm && matchSm->v1 == matchV1 && matchSm->v2 == matchV2 && matchSm->cookie == cookie) {
      branch("matchSmIs", "kept");
    } else {
      branch("matchSmIs", matchSm ? "replaced" : "made");
      MachinePtr made = make<PolicyMatch>(world, {.key = {},
                                                  .v1 = matchV1,
                                                  .v2 = matchV2,
                                                  .record = {},
                                                  .netVrfName = {},
                                                  .cookie = cookie});
      matchSm.swap(made);
    }
  } else {
    branch(form, matchSm ? "match gone" : "no match");
  }
  leave(form, " return");
}

void PolicyOrigin::handleModifier(const Text& modifier) {
  const auto* const form = "handleModifier(VelaL3::VelaPolicyModifier)";
  if (!initialized) {
    branch(form, "not initialized");
    return;
  }
  enter(form, {" policy: ", key, " modifier: ", modifier});
  if (v1->has(kModifiers, modifier)) {
    act(form, {" policy: ", key, " add modifier ", modifier});
    branch(form, "add");
    checkOrdinal(modifier, {"symmetric", "stateless"});
    v2->insert(kModifiers, modifier);
  } else {
    act(form, {" policy: ", key, " remove modifier ", modifier});
    branch(form, "remove");
    checkOrdinal(modifier, {"symmetric", "stateless"});
    v2->erase(kModifiers, modifier);
  }
  mark();
  leave(form, " return");
}

void PolicyOrigin::handleModifier() {
  const auto* const form = "handleModifier()";
  if (!initialized) {
    branch(form, "not initialized");
    return;
  }
  enter(form, {" policy: ", key});
  bool removed = false;
  for (Collection<bool>::Walk walk(v2->members(kModifiers)); walk.next();) {
    if (!v1->has(kModifiers, walk.key)) {
      act(form, {" policy: ", key, " remove modifier ", walk.key});
      v2->erase(kModifiers, walk.key);
      removed = true;
    }
  }
  for (Collection<bool>::Walk walk(v1->members(kModifiers)); walk.next();) {
    checkOrdinal(walk.key, {"symmetric", "stateless"});
    v2->insert(kModifiers, walk.key);
  }
  if (removed) {
    mark();
  }
  leave(form, " return");
}

void PolicyOrigin::childDel(const Text& /*which*/) {
  if (MachinePtr match = std::exchange(matchSm, nullptr)) {
    match->activeIs(false);
    match.reset();
  }
}

void PolicyOrigin::childDelAll() { childDel("match"); }

void PolicyOrigin::cleanup() {
  enter("cleanup()", {" policy: ", key});
  initialized = false;
  childDel("match");
  v2->entryDel(kMatch, "");
  leave("cleanup()", " return");
}

}  // namespace Reference
