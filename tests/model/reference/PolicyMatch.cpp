#include <array>

#include "model/reference/Policy.h"

namespace Reference {
namespace {

constexpr std::array<PolicyMatch::Criterion, 7> kCriteria{{
    {258, "handleSrcIp(const Norv::IpGenPrefix&)", "handleSrcIp()",
     " add src ip: ", " remove src ip: ", 8},
    {259, "handleSrcIpRange(const VelaL3::VelaIpRange&)", "handleSrcIpRange()",
     " add src ip range: ", " remove src ip range: ", 8},
    {260, "handleDstIp(const Norv::IpGenPrefix&)", "handleDstIp()",
     " add dst ip: ", " remove dst ip: ", 8},
    {261, "handleDstIpRange(const VelaL3::VelaIpRange&)", "handleDstIpRange()",
     " add dst ip range: ", " remove dst ip range: ", 8},
    {262, "handleL3App(Norv::IpProto)", "handleL3App()",
     " add ip proto: ", " remove ip proto: ", 6},
    {265, "handleDstL4App(VelaL3::VelaL4App)", "handleDstL4App()", nullptr, nullptr, 0},
    {266, "handleDstL4AppRange(const VelaL3::VelaL4AppRange&)", "handleDstL4AppRange()", nullptr,
     nullptr, 0},
}};

}  // namespace

PolicyMatch::PolicyMatch(World& world_, Given given)
    : Machine(world_, "VelaPolicyMonitor::PolicyTranslateMatchSm", std::move(given)) {
  static const Reactions kReactions = [] {
    Reactions reactions;
    for (const Criterion& criterion : kCriteria) {
      reactions[criterion.id] = [&criterion](Machine& machine, const Text& entry) {
        static_cast<PolicyMatch&>(machine).handle(criterion, entry);
      };
    }
    return reactions;
  }();
  watch(v1, kReactions);
}

const Machine::Forms& PolicyMatch::forms() const {
  static const Forms kForms = [] {
    Forms forms = {{"handleInitialized()", whole<PolicyMatch>(&PolicyMatch::handleInitialized)}};
    for (const Criterion& criterion : kCriteria) {
      forms[criterion.keyed] = [&criterion](Machine& machine, const Text& entry) {
        static_cast<PolicyMatch&>(machine).handle(criterion, entry);
      };
      forms[criterion.whole] = [&criterion](Machine& machine, const Text& /*none*/) {
        static_cast<PolicyMatch&>(machine).handle(criterion);
      };
    }
    return forms;
  }();
  return kForms;
}

void PolicyMatch::handleInitialized() {
  enter("handleInitialized()");
  initialized = true;
  for (const Criterion& criterion : kCriteria) {
    handle(criterion);
  }
  leave("handleInitialized()", " return");
}

void PolicyMatch::handle(const Criterion& criterion, const Text& entry) {
  const auto* const form = criterion.keyed;
  if (!initialized) {
    branch(form, "not initialized");
    return;
  }
  if (criterion.add == nullptr) {
    enter(form);
  }
  const bool add = v1->has(criterion.id, entry);
  if (criterion.add != nullptr) {
    act(form, {add ? criterion.add : criterion.remove, entry});
  } else {
    branch(form, add ? "add" : "remove");
  }
  add ? v2->insert(criterion.id, entry) : v2->erase(criterion.id, entry);
  mark();
  leave(form, " return");
}

void PolicyMatch::handle(const Criterion& criterion) {
  const auto* const form = criterion.whole;
  if (!initialized) {
    branch(form, "not initialized");
    return;
  }
  enter(form);
  bool changed = false;
  const auto say = [&](const char* what, const Text& entry) {
    if (what != nullptr) {
      trace(criterion.walkLevel, form, {what, entry});
    }
    changed = true;
  };
  for (Collection<bool>::Walk walk(v2->members(criterion.id)); walk.next();) {
    if (!v1->has(criterion.id, walk.key)) {
      say(criterion.remove, walk.key);
      v2->erase(criterion.id, walk.key);
    }
  }
  for (Collection<bool>::Walk walk(v1->members(criterion.id)); walk.next();) {
    if (!v2->has(criterion.id, walk.key)) {
      say(criterion.add, walk.key);
      v2->insert(criterion.id, walk.key);
    }
  }
  if (changed) {
    branch(form, "changed");
    mark();
  }
  leave(form, " return");
}

// It has none: whoever owns it deletes the match in version 2.
void PolicyMatch::cleanup() {}

}  // namespace Reference
