#include "model/reference/ModelSide.h"

#include "model/reference/Policy.h"
#include "model/reference/Service.h"

namespace Reference {

using Verb = Operation::Verb;

/// Does operations when an entity tells of something.
struct ModelSide::Observer : Subscriber {
  Observer(ModelSide& side_, NodePtr node_, const Operation& operation)
      : side(side_), node(std::move(node_)), what(operation), left(operation.times) {
    node->publisher.add(*this);
  }
  ~Observer() override { node->publisher.remove(*this); }

  void notify(int id, const Text& /*key*/) override {
    if (left == 0 || (what.id != 0 && what.id != id)) {
      return;
    }
    --left;
    ModelSide& to = side;
    to.world.line("# observed");
    // Copies: an observer may be deleted or replaced by what it does.
    const std::vector<Operation> nested = what.nested;
    for (const Operation& each : nested) {
      if (each.verb == Verb::raise) {
        to.world.refuse(each.value == "even if that ends the process");
      }
      to.apply(each);
    }
  }

  ModelSide& side;
  NodePtr node;
  Operation what;
  int left;
};

/// A notifiee of the old style.
struct ModelSide::Listener : Subscriber {
  Listener(World& world_, std::size_t slot_, MachinePtr machine_)
      : world(world_), slot(slot_), machine(std::move(machine_)) {
    machine->notifiees.add(*this);
  }
  ~Listener() override { machine->notifiees.remove(*this); }

  void notify(int id, const Text& /*key*/) override {
    world.line("~ " + std::to_string(slot) + " " + std::to_string(id));
    if (refusals != 0) {
      --refusals;
      world.refuse(false);
    }
  }

  World& world;
  std::size_t slot;
  MachinePtr machine;
  int refusals = 0;
};

ModelSide::ModelSide(bool journal)
    : tops{std::make_shared<Node>(world, kPolicySourceV1, ""),
           std::make_shared<Node>(world, kDeviceSourceV1, ""),
           std::make_shared<Node>(world, kStatus, ""),
           std::make_shared<Node>(world, kPolicySourceV2, ""),
           std::make_shared<Node>(world, kDeviceSourceV2, "")} {
  world.journal = journal;
}

ModelSide::~ModelSide() { close(); }

void ModelSide::close() {
  for (std::size_t slot = 0; slot != kSlots; ++slot) {
    observers_[slot].reset();
    listeners_[slot].reset();
    held[slot].reset();
    kept[slot].reset();
  }
  roots[0].reset();
  roots[1].reset();
}

void ModelSide::apply(const Operation& operation) {
  const int sealed = std::exchange(world.sealed, 0);  // nothing that is raised gets that far
  try {
    if (operation.verb >= Verb::start) {
      toRoot(operation);
    } else if (operation.verb >= Verb::call) {
      toMachine(operation);
    } else {
      toNode(operation);
    }
  } catch (const OutOfRange& error) {
    world.line(Text("? ") + error.what());
  } catch (const Reinstantiated&) {
    world.line("? re-instantiation");
  } catch (const Refused&) {
    world.line("? refused");
  } catch (const Ended&) {
  }
  world.sealed = sealed;
}

bool ModelSide::fits(const Operation& operation) {
  if (operation.verb >= Verb::call || (operation.create && operation.verb <= Verb::name)) {
    return true;
  }
  const NodePtr at = node(operation.at, false);
  if (!at || operation.verb != Verb::erase) {
    return at != nullptr;
  }
  const Kind kind = at->type.attribute(operation.id).kind;
  return kind == Kind::entries || kind == Kind::single
             ? at->entry(operation.id, operation.key) != nullptr
             : at->has(operation.id, operation.key);
}

NodePtr ModelSide::node(const Place& place, bool create) {
  NodePtr at =
      place.from == From::kept ? kept[place.slot] : tops[static_cast<std::size_t>(place.from)];
  if (place.from == From::kept && (!at || std::string_view(at->type.name) != place.type)) {
    return nullptr;
  }
  for (const auto& [id, key] : place.steps) {
    if (!at || !at->type.has(id)) {
      return nullptr;
    }
    if (create) {
      at->entryIs(id, key);
    }
    at = at->entry(id, key);  // gone again, if an observer has deleted it
  }
  return at;
}

MachinePtr ModelSide::machine(const Place& place) {
  MachinePtr at =
      place.from == From::held ? held[place.slot] : roots[place.from == From::policyRoot ? 0 : 1];
  for (const auto& [id, key] : place.steps) {
    if (!at) {
      return nullptr;
    }
    if (key == "match") {
      at = MachinePtr(at->matchSm);
      continue;
    }
    const MachinePtr* const child = at->children.find(key);
    at = child == nullptr ? nullptr : MachinePtr(*child);
  }
  return at;
}

void ModelSide::toNode(const Operation& operation) {
  if (operation.verb == Verb::forget) {
    const NodePtr gone = std::exchange(kept[operation.slot], nullptr);
    return;
  }
  if (operation.verb == Verb::unobserve) {
    const auto gone = std::exchange(observers_[operation.slot], nullptr);
    return;
  }
  if (operation.verb == Verb::lose) {
    world.losing = operation.times;
    return;
  }
  const NodePtr at = node(operation.at, operation.create);
  if (!at || (operation.id != 0 && !at->type.has(operation.id))) {
    return;
  }
  const Kind kind = operation.id == 0 ? Kind::value : at->type.attribute(operation.id).kind;
  const bool holdsNodes = kind == Kind::entries || kind == Kind::single;
  switch (operation.verb) {
    case Verb::put:
      holdsNodes ? static_cast<void>(at->entryIs(operation.id, operation.key))
                 : at->insert(operation.id, operation.key);
      break;
    case Verb::write:
      at->write(operation.id, operation.value);
      break;
    case Verb::name:
      at->nameIs(operation.id, operation.key, operation.value);
      break;
    case Verb::erase:
      holdsNodes ? at->entryDel(operation.id, operation.key)
                 : at->erase(operation.id, operation.key);
      break;
    case Verb::clear:
      at->clear(operation.id);
      break;
    case Verb::notify:
      at->publish(operation.id, operation.key);
      break;
    case Verb::keep:
      std::exchange(kept[operation.slot], at).reset();
      break;
    case Verb::observe: {
      const auto gone = std::exchange(observers_[operation.slot], nullptr);
      observers_[operation.slot] = std::make_shared<Observer>(*this, at, operation);
      break;
    }
    default:
      break;
  }
}

void ModelSide::toMachine(const Operation& operation) {
  if (operation.verb == Verb::release) {
    const MachinePtr gone = std::exchange(held[operation.slot], nullptr);
    return;
  }
  if (operation.verb == Verb::unlisten) {
    const auto gone = std::exchange(listeners_[operation.slot], nullptr);
    return;
  }
  const MachinePtr at = machine(operation.at);
  if (!at) {
    return;
  }
  auto* const policyVrf = dynamic_cast<PolicyVrf*>(at.get());
  auto* const serviceVrf = dynamic_cast<ServiceVrf*>(at.get());
  switch (operation.verb) {
    case Verb::call:
      at->call(operation.value, operation.key);
      break;
    case Verb::suspend:
      at->activeIs(false);
      break;
    case Verb::resume:
      at->activeIs(true);
      break;
    case Verb::mark:
      at->marked = true;
      break;
    case Verb::unmark:
      at->marked = false;
      break;
    case Verb::childDel:
      at->childDel(operation.key);
      break;
    case Verb::childDelAll:
      at->childDelAll();
      break;
    case Verb::cookieIs:
      policyVrf != nullptr    ? policyVrf->cookieIs(std::make_shared<Cookie>(world))
      : serviceVrf != nullptr ? serviceVrf->cookieIs(std::make_shared<Cookie>(world))
                              : static_cast<void>(0);
      break;
    case Verb::initializedIs:
      policyVrf != nullptr    ? policyVrf->initializedIs(operation.value == "true")
      : serviceVrf != nullptr ? serviceVrf->initializedIs(operation.value == "true")
                              : static_cast<void>(0);
      break;
    case Verb::initCompleteIs:
      policyVrf != nullptr    ? policyVrf->initCompleteIs(operation.value == "true")
      : serviceVrf != nullptr ? serviceVrf->initCompleteIs(operation.value == "true")
                              : static_cast<void>(0);
      break;
    case Verb::hold:
      std::exchange(held[operation.slot], at).reset();
      break;
    case Verb::listen:
      listen(operation);
      break;
    default:
      break;
  }
}

void ModelSide::listen(const Operation& operation) {
  const MachinePtr at = machine(operation.at);
  const bool policy = dynamic_cast<PolicyVrf*>(at.get()) != nullptr;
  if (!policy && dynamic_cast<ServiceVrf*>(at.get()) == nullptr) {
    return;
  }
  const auto gone = std::exchange(listeners_[operation.slot], nullptr);
  const auto made = std::make_shared<Listener>(world, operation.slot, at);
  listeners_[operation.slot] = made;
  if (operation.create) {
    for (std::size_t child = 0; policy && child != at->children.slots().size(); ++child) {
      made->notify(134, {});
    }
    for (const int id : policy ? std::array{135, 139, 140} : std::array{135, 136, 137}) {
      made->notify(id, {});
    }
  }
  made->refusals = operation.times;
}

void ModelSide::toRoot(const Operation& operation) {
  const bool policy = operation.at.from == From::policyRoot;
  MachinePtr& root = roots[policy ? 0 : 1];
  if (operation.verb == Verb::stop) {
    const MachinePtr gone = std::exchange(root, nullptr);
    return;
  }
  if (root) {
    return;
  }
  const Machine::Given given{
      .key = {},
      .v1 = operation.value == "version 1" ? nullptr : tops[policy ? 0 : 1],
      .v2 = operation.value == "version 2" ? nullptr : tops[policy ? 3 : 4],
      .record = operation.value == "status" || operation.value == "version 2" ? nullptr : tops[2],
      .netVrfName = {},
      .cookie = {}};
  MachinePtr made = policy ? MachinePtr(Machine::make<PolicyRoot>(world, given))
                           : MachinePtr(Machine::make<ServiceRoot>(world, given));
  if (!root) {
    root = std::move(made);
  }
}

}  // namespace Reference
