#include "model/reference/Generator.h"

namespace Reference {

// Several operations in one place, that only together come to what is rare otherwise.
void Generator::episode() {
  const bool policy = policyOnly_ || below(5) < 3;
  const std::size_t level =
      policy ? std::initializer_list<std::size_t>{0, 1, 2, 2, 3, 3, 4, 4, 5, 5}.begin()[below(10)]
             : below(4);
  const Place entity =
      policy ? policyPlace(From::policyV1, level) : servicePlace(From::serviceV1, level);
  Operation toMachine;
  toMachine.at = entity;
  toMachine.at.from = policy ? From::policyRoot : From::serviceRoot;
  if (policy && level == 5) {
    toMachine.at.steps.back().second = "match";
  }
  toMachine.verb = Verb::call;
  pending_.push_back(changeAt(policy, entity, level));
  switch (below(12)) {
    case 0:
      missedChanges(policy, entity, toMachine.at);
      break;
    case 1:
      replacement(policy, entity);
      break;
    case 2:
      toMachine.value = "handleInitialized()";
      pending_.push_back(toMachine);
      break;
    case 3:
      toMachine.value = "cleanup()";
      pending_.push_back(toMachine);
      for (std::size_t count = 1 + below(4); count != 0; --count) {
        pending_.push_back(oneIn(2) ? changeAt(policy, entity, level)
                                    : machineCall(toMachine, level + (policy ? 0 : 6)));
      }
      toMachine.value = "handleInitialized()";
      pending_.push_back(toMachine);
      break;
    case 4:
    case 5:
      removal(policy, entity, toMachine.at);
      break;
    case 6:
      renaming(policy);
      break;
    case 7:
      uninitialized(policy);
      break;
    default:
      observes_ ? interplay(policy, level) : removal(policy, entity, toMachine.at);
      break;
  }
}

// A machine is switched off or marked, misses changes, and walks.
void Generator::missedChanges(bool policy, const Place& entity, const Place& machine) {
  const std::size_t level = entity.steps.size();
  Operation toMachine;
  toMachine.at = machine;
  const bool marked = oneIn(3);
  toMachine.verb = marked ? Verb::mark : Verb::suspend;
  pending_.push_back(toMachine);
  for (std::size_t count = 1 + below(4); count != 0; --count) {
    pending_.push_back(changeAt(policy, entity, level));
  }
  toMachine.verb = marked ? Verb::unmark : Verb::resume;
  pending_.push_back(toMachine);
  toMachine.verb = Verb::call;
  for (std::size_t count = 1 + below(2); count != 0; --count) {
    pending_.push_back(machineCall(toMachine, level + (policy ? 0 : 6)));
  }
}

// An entity gives way to another one under the same key, unseen; then its owner is told.
void Generator::replacement(bool policy, Place entity) {
  if (entity.steps.empty()) {
    return;
  }
  const std::size_t level = entity.steps.size() - 1;
  const auto [id, key] = entity.steps.back();
  entity.steps.pop_back();
  Operation toMachine;
  toMachine.at = entity;
  toMachine.at.from = policy ? From::policyRoot : From::serviceRoot;
  toMachine.verb = Verb::suspend;
  pending_.push_back(toMachine);
  Operation change;
  change.at = entity;
  change.id = id;
  change.key = key;
  for (const Verb verb : {Verb::erase, Verb::put}) {
    change.verb = verb;
    pending_.push_back(change);
  }
  Place below = entity;
  below.steps.emplace_back(id, key);
  pending_.push_back(changeAt(policy, below, level + 1));
  toMachine.verb = Verb::resume;
  pending_.push_back(toMachine);
  change.verb = Verb::notify;
  pending_.push_back(change);
}

// What the first VRF of the device that most things happen to is called.
Operation Generator::homeName() {
  Operation name;
  name.verb = Verb::name;
  name.at.from = From::status;
  name.at.steps.emplace_back(257, home().second);
  name.id = 259;
  name.key = "red";
  name.value = one({"net-1", "net-2", "net-3"});
  name.create = true;
  return name;
}

// An entry goes, or some members, mostly unheard; then their machine walks.
void Generator::removal(bool policy, const Place& entity, const Place& machine) {
  const std::size_t level = entity.steps.size();
  std::vector<Operation> entries;
  for (std::size_t count = level == 5 ? 4 : 1; count != 0; --count) {
    entries.push_back(entryAt(policy, entity, level));
  }
  pending_.insert(pending_.end(), entries.begin(), entries.end());
  pending_.push_back(homeName());
  Operation toMachine;
  toMachine.at = machine;
  const bool heard = oneIn(3);
  if (!heard) {
    toMachine.verb = Verb::suspend;
    pending_.push_back(toMachine);
  }
  for (Operation& entry : entries) {
    entry.verb = Verb::erase;
    entry.create = false;
    pending_.push_back(entry);
  }
  if (!heard) {
    toMachine.verb = Verb::resume;
    pending_.push_back(toMachine);
    toMachine.verb = Verb::call;
    toMachine.value = "handleInitialized()";
    pending_.push_back(toMachine);
  }
}

// A VRF is renamed unheard; then the device's machine walks.
void Generator::renaming(bool policy) {
  Operation operation = policy ? entryAt(true, policyPlace(From::policyV1, 1), 1)
                               : entryAt(false, servicePlace(From::serviceV1, 1), 1);
  operation.at.steps.front().second = home().first;
  operation.key = "red";
  pending_.push_back(operation);
  pending_.push_back(homeName());
  Operation toMachine;
  toMachine.at = operation.at;
  toMachine.at.from = policy ? From::policyRoot : From::serviceRoot;
  toMachine.verb = Verb::suspend;
  pending_.push_back(toMachine);
  pending_.push_back(homeName());
  toMachine.verb = Verb::resume;
  pending_.push_back(toMachine);
  toMachine.verb = Verb::call;
  toMachine.value = one({"handleVrf()", "handleInitialized()"});
  pending_.push_back(toMachine);
}

// A machine that looks whether it is initialized is not, and is told of this and that.
void Generator::uninitialized(bool policy) {
  const std::size_t level = 2 * (policy ? below(3) : below(2));
  const Place entity =
      policy ? policyPlace(From::policyV1, level) : servicePlace(From::serviceV1, level);
  Operation toMachine;
  toMachine.at = entity;
  toMachine.at.from = policy ? From::policyRoot : From::serviceRoot;
  toMachine.verb = Verb::call;
  toMachine.value = "cleanup()";
  pending_.push_back(entryAt(policy, entity, level));
  pending_.push_back(homeName());
  pending_.push_back(toMachine);
  for (std::size_t count = 3 + below(level == 4 ? 11 : 5); count != 0; --count) {
    if (!oneIn(3)) {
      pending_.push_back(handlerCall(toMachine, level + (policy ? 0 : 6)));
    } else if (level == 2) {
      Operation signal;
      signal.at = entity;
      signal.verb = Verb::write;
      signal.id = policy ? 261 : 260;
      signal.value = seconds();
      pending_.push_back(signal);
    } else {
      pending_.push_back(changeAt(policy, entity, level));
    }
  }
  toMachine.value = "handleInitialized()";
  pending_.push_back(toMachine);
}

// Whoever sees a machine write changes what that machine follows, so that it has to wait; or has an
// entry of its give way to another one.
void Generator::interplay(bool policy, std::size_t level) {
  const Place entity =
      policy ? policyPlace(From::policyV1, level) : servicePlace(From::serviceV1, level);
  Operation entry = entryAt(policy, entity, level);
  pending_.push_back(entry);
  pending_.push_back(homeName());
  Operation observe;
  observe.verb = Verb::observe;
  observe.times = 1 + static_cast<int>(below(2));
  if (oneIn(3)) {
    observe.nested.push_back(changeAt(policy, entity, level));
  } else {
    for (const Verb verb : {Verb::erase, Verb::put}) {
      observe.nested.push_back(entry);
      observe.nested.back().verb = verb;
    }
  }
  if (raises_ && oneIn(2)) {
    Operation raise;
    raise.verb = Verb::raise;
    observe.nested.push_back(raise);
  }
  observe.at = entity;
  observe.at.from = policy ? From::policyV2 : From::serviceV2;
  // Where version 2 has it depends on the network VRF's name.
  for (const char* const name : {"net-1", "net-2", "net-3"}) {
    if (level > 1) {
      observe.at.steps[1].second = name;
    }
    pending_.push_back(observe);
    ++observe.slot;
    if (level < 2) {
      break;
    }
  }
  const Operation first = entry;
  while (entry.id == first.id && entry.key == first.key) {
    entry = entryAt(policy, entity, level);
  }
  entry.verb = oneIn(2) ? Verb::put : Verb::erase;
  pending_.push_back(entry);
  entry.verb = entry.verb == Verb::put ? Verb::erase : Verb::put;
  pending_.push_back(entry);
}

std::vector<Operation> Generator::ending() {
  if (!ends_) {
    return {};
  }
  // Something is there.
  std::vector<Operation> operations;
  for (const From root : {From::policyRoot, From::serviceRoot}) {
    Operation start;
    start.verb = Verb::start;
    start.at.from = root;
    operations.push_back(start);
  }
  operations.push_back(homeName());
  Operation origin = entryAt(true, policyPlace(From::policyV1, 4), 4);
  origin.at.steps = {{258, home().first}, {259, "red"}, {259, "20000"}, {261, "web"}};
  origin.id = 261;
  origin.key = modifier();
  operations.push_back(origin);
  Operation vrfEntry = entryAt(false, servicePlace(From::serviceV1, 1), 1);
  vrfEntry.at.steps = {{258, home().first}};
  vrfEntry.key = "red";
  operations.push_back(vrfEntry);
  for (Operation& end : deadly(origin, vrfEntry)) {
    operations.push_back(std::move(end));
  }
  return operations;
}

// An ordinal out of range, a name that is too long, or an observer that raises where nothing may.
std::vector<Operation> Generator::deadly(const Operation& origin, const Operation& vrfEntry) {
  Operation last = origin;
  switch (below(6)) {
    case 0:
      last.verb = Verb::write;
      last.id = 264;
      last.key = "";
      last.value = "7";
      return {last};
    case 1:
      last.key = "5";
      return {last};
    case 2:
      last.at.from = From::policyRoot;
      last.verb = Verb::call;
      last.key = "5";
      last.value = "handleModifier(VelaL3::VelaPolicyModifier)";
      return {last};
    case 3:
      last = homeName();
      last.key = Text(101, 'v');
      return {last};
    default: {
      const bool policy = oneIn(2);
      Operation observe;
      observe.verb = Verb::observe;
      observe.times = 1;
      observe.at.from = policy ? From::policyV2 : From::serviceV2;
      observe.at.steps = {{258, home().first}};
      Operation raise;
      raise.verb = Verb::raise;
      raise.value = "even if that ends the process";
      observe.nested.push_back(raise);
      last = policy ? origin : vrfEntry;
      last.at.steps.clear();
      last.id = 258;
      last.key = home().first;
      last.verb = Verb::erase;
      return {observe, last};
    }
  }
}

}  // namespace Reference
