#include "model/reference/Generator.h"

namespace Reference {
namespace {

// The type of the entities that stand so many steps below the beginning.
const char* typeAt(From from, std::size_t depth) {
  static constexpr const char* kTypes[][6] = {
      {"VelaL3::VelaPolicySourceConfig", "VelaL3::VelaPolicySetConfig", "VelaL3::VelaPolicyConfig",
       "VelaL3::VelaRuleConfig", "VelaL3::VelaRuleOriginConfig", "VelaL3::VelaMatchConfig"},
      {"VelaL3::ServiceDeviceSourceConfig", "VelaL3::ServiceDeviceConfig", "VelaL3::VrfConfig",
       "VelaL3::L3IntfConfig"},
      {"VelaPolicyMonitor::Status", "VelaPolicyMonitor::DevicePolicyList"}};
  return kTypes[static_cast<std::size_t>(from)][depth];
}

}  // namespace

Operation Generator::machineChange() {
  const bool policy = oneIn(2);
  const std::size_t level = below(policy ? 6 : 4);
  Operation operation;
  operation.at = machinePlace(policy, level);
  const std::size_t draw = below(20);
  if (silences_ && draw < 4) {
    operation.verb = draw < 2 ? Verb::resume : oneIn(2) ? Verb::suspend : Verb::resume;
    return operation;
  }
  if (silences_ && draw < 5) {
    operation.verb = oneIn(3) ? Verb::mark : Verb::unmark;
    return operation;
  }
  if (draw == 5) {
    operation.verb = oneIn(5) ? Verb::childDelAll : Verb::childDel;
    if (operation.at.from == From::held) {
      operation.at = Place{.from = policy ? From::policyRoot : From::serviceRoot,
                           .slot = 0,
                           .steps = {},
                           .type = ""};
      operation.verb = Verb::childDelAll;
    }
    const Text keys[] = {device(), vrf(), policy ? priority() : address(), origin(), "match"};
    operation.key = level < (policy ? 5U : 3U) ? keys[level] : "";
    return operation;
  }
  if (draw == 6) {
    operation.at = machinePlace(policy, 2);
    operation.verb = one({"a", "b", "c"}) == "a" ? Verb::cookieIs
                     : oneIn(2)                  ? Verb::initializedIs
                                                 : Verb::initCompleteIs;
    operation.value = one({"true", "true", "false"});
    return operation;
  }
  if (draw < 10) {
    operation.at = machinePlace(policy, 2);
    operation.verb = oneIn(3) ? Verb::unlisten : Verb::listen;
    operation.slot = below(kSlots);
    operation.create = oneIn(2);
    operation.times = raises_ ? static_cast<int>(below(3)) : 0;
    return operation;
  }
  operation.verb = Verb::call;
  return machineCall(std::move(operation), level + (policy ? 0 : 6));
}

Operation Generator::machineCall(Operation operation, std::size_t level) {
  const bool leaf = level == 5 || level == 9;
  const std::size_t draw = below(10);
  if (draw < 2) {
    operation.value = "handleInitialized()";
    return operation;
  }
  if (draw < 3 && !leaf) {
    operation.value = "cleanup()";
    return operation;
  }
  return handlerCall(std::move(operation), level);
}

// Levels of the service-device tree count from 6.
Operation Generator::handlerCall(Operation operation, std::size_t level) {
  static constexpr const char* kSets[] = {
      "handleSrcIp", "handleSrcIpRange", "handleDstIp",        "handleDstIpRange",
      "handleL3App", "handleDstL4App",   "handleDstL4AppRange"};
  static constexpr const char* kSetKeys[] = {"const Norv::IpGenPrefix&",
                                             "const VelaL3::VelaIpRange&",
                                             "const Norv::IpGenPrefix&",
                                             "const VelaL3::VelaIpRange&",
                                             "Norv::IpProto",
                                             "VelaL3::VelaL4App",
                                             "const VelaL3::VelaL4AppRange&"};
  static constexpr int kSetIds[] = {258, 259, 260, 261, 262, 265, 266};
  const bool whole = oneIn(2);
  const auto choose = [&](const char* handler, const char* argument, Text key) {
    operation.value = Text(handler) + "(" + (whole ? "" : argument) + ")";
    operation.key = whole ? "" : std::move(key);
  };
  const std::size_t set = below(7);
  switch (level) {
    case 0:
      choose("handlePolicySet", "const String&", device());
      break;
    case 1:
    case 7:
      if (level == 7 && oneIn(3)) {
        operation.value = "handleTrafficInspection()";
      } else {
        choose("handleVrf", "const String&", oneIn(30) ? Text(101, 'w') : vrf());
      }
      break;
    case 2:
    case 8:
      if (oneIn(3)) {
        operation.value = "doUpdate()";
      } else if (level == 2) {
        choose("handleRule", "VelaL3::VelaPriority", priority());
      } else {
        choose("handleL3Intf", "const Norv::IpGenAddr&", address());
      }
      break;
    case 3:
      choose("handleOrigin", "const String&", origin());
      break;
    case 4:
      if (oneIn(2)) {
        choose("handleModifier", "VelaL3::VelaPolicyModifier", modifier());
      } else {
        operation.value = one({"handleTags()", "handleLog()", "handleAction()", "handleMatch()"});
      }
      break;
    case 5:
      choose(kSets[set], kSetKeys[set], criterion(kSetIds[set]));
      break;
    case 6:
      choose("handleDevice", "const String&", device());
      break;
    default:
      choose("handleSubnet", "const Norv::IpGenPrefix&", prefix());
      break;
  }
  return operation;
}

// A root is stopped, and started again after a while.
Operation Generator::rootChange() {
  Operation stop;
  stop.at.from = policyOnly_ || oneIn(2) ? From::policyRoot : From::serviceRoot;
  stop.verb = Verb::stop;
  Operation start = stop;
  start.verb = Verb::start;
  const auto meanwhile = [this] {
    for (std::size_t count = below(4); count != 0; --count) {
      pending_.push_back(plain());
    }
  };
  meanwhile();
  if (oneIn(4)) {
    start.value = one({"version 1", "status", "version 2"});
    pending_.push_back(start);
    meanwhile();
    pending_.push_back(stop);
    start.value.clear();
  }
  pending_.push_back(start);
  return stop;
}

// Somebody holds on to an entity or a machine, or lets it go.
Operation Generator::keeping() {
  Operation operation;
  operation.slot = below(kSlots);
  switch (below(4)) {
    case 0:
      operation.verb = oneIn(2) ? Verb::forget : Verb::release;
      break;
    case 1:
      operation.verb = Verb::hold;
      operation.at = oneIn(2) ? machinePlace(true, below(6)) : machinePlace(false, below(4));
      break;
    default: {
      // What is kept is changed like anything else.
      Operation change = plain();
      if (oneIn(2) || change.at.steps.empty()) {
        operation.verb = Verb::keep;
        operation.at = change.at;
        return operation;
      }
      const auto keep = static_cast<std::ptrdiff_t>(below(change.at.steps.size()));
      const std::size_t cut = change.at.steps.size() - static_cast<std::size_t>(keep);
      change.at.type = typeAt(change.at.from, cut);
      change.at.steps.erase(change.at.steps.begin(), change.at.steps.end() - keep);
      change.at.from = From::kept;
      change.at.slot = operation.slot;
      return change;
    }
  }
  return operation;
}

Operation Generator::observing(int depth) {
  Operation operation;
  operation.slot = below(kSlots);
  if (oneIn(4)) {
    operation.verb = Verb::unobserve;
    return operation;
  }
  operation.verb = Verb::observe;
  operation.times = 1 + static_cast<int>(below(3));
  switch (below(12)) {
    case 0:
    case 1:
      operation.at.from = From::status;
      operation.at.steps.emplace_back(257, recordName());
      break;
    case 2:
      operation.at = oneIn(2) ? servicePlace(From::serviceV1, below(4))
                              : policyPlace(From::policyV1, below(6));
      break;
    case 3:
    case 4:
    case 5:
      operation.at = servicePlace(From::serviceV2, below(4));
      break;
    default:
      operation.at = policyPlace(From::policyV2, below(6));
      break;
  }
  const From from = operation.at.from;
  const std::size_t level = operation.at.steps.size();
  for (std::size_t count = 1 + below(3); count != 0; --count) {
    if (oneIn(4)) {
      operation.nested.push_back(deletion(operation));
      continue;
    }
    if (from < From::policyV2 || oneIn(3)) {
      operation.nested.push_back(anything(depth + 1));
      continue;
    }
    // What makes the machine wait that has just written here.
    const bool policy = from == From::policyV2;
    operation.nested.push_back(changeAt(
        policy, policy ? policyPlace(From::policyV1, level) : servicePlace(From::serviceV1, level),
        level));
  }
  if (raises_ && oneIn(2)) {
    Operation raise;
    raise.verb = Verb::raise;
    operation.nested.push_back(raise);
  }
  return operation;
}

// An observer deletes itself, the machine that is at work, what stands round that, or the root.
Operation Generator::deletion(const Operation& observer) {
  const From from = observer.at.from;
  const bool service = from == From::serviceV1 || from == From::serviceV2;
  const std::size_t level = observer.at.steps.size();
  Operation operation;
  operation.at.from = service ? From::serviceRoot : From::policyRoot;
  switch (below(6)) {
    case 0:
      operation.verb = Verb::unobserve;
      operation.slot = observer.slot;
      break;
    case 1:
      operation.verb = Verb::stop;
      break;
    case 2: {
      // The entity that the machine follows, or one above.
      const std::size_t above = below(std::min<std::size_t>(level, service ? 3 : 4) + 1);
      operation = service ? entryAt(false, servicePlace(From::serviceV1, above), above)
                          : entryAt(true, policyPlace(From::policyV1, above), above);
      operation.verb = Verb::erase;
      break;
    }
    default: {
      // A child of the machine, of its parent, or of any above.
      const std::size_t owner = below(std::min<std::size_t>(level, service ? 2 : 4) + 1);
      const Operation entry = service ? entryAt(false, servicePlace(From::serviceV1, owner), owner)
                                      : entryAt(true, policyPlace(From::policyV1, owner), owner);
      operation.at.steps = entry.at.steps;
      operation.verb = oneIn(6) ? Verb::childDelAll : Verb::childDel;
      operation.key = !service && owner == 4 ? "match" : entry.key;
      break;
    }
  }
  return operation;
}

}  // namespace Reference
