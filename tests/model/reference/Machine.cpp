#include "model/reference/Machine.h"

#include <exception>

namespace Reference {

Cookie::Cookie(World& world_) : world(world_) { ++world.live["VelaPolicyMonitor::UpdateCookie"]; }
Cookie::~Cookie() { --world.live["VelaPolicyMonitor::UpdateCookie"]; }

namespace {

// What may not raise, as that would end the process.
void sealed(World& world, const std::function<void()>& what) {
  ++world.sealed;
  try {
    what();
  } catch (...) {
    world.end("terminate");
  }
  --world.sealed;
}

}  // namespace

struct Machine::Reactor : Subscriber {
  Reactor(Machine& owner_, NodePtr node_, const Reactions& reactions_)
      : owner(owner_), node(std::move(node_)), reactions(reactions_) {}

  void notify(int id, const Text& entry) override {
    const auto found = reactions.find(id);
    if (found != reactions.end() && !owner.marked && !owner.ended_) {
      owner.deliver(found->second, entry);
    }
  }
  void registeredIs(bool on) { on ? node->publisher.add(*this) : node->publisher.remove(*this); }

  Machine& owner;
  NodePtr node;
  const Reactions& reactions;
};

Machine::Machine(World& world_, const char* name_, Given given)
    : world(world_),
      name(name_),
      key(std::move(given.key)),
      v1(std::move(given.v1)),
      v2(std::move(given.v2)),
      record(std::move(given.record)),
      netVrfName(std::move(given.netVrfName)),
      cookie(std::move(given.cookie)) {
  ++world.live[name];
}

Machine::~Machine() { --world.live[name]; }

void Machine::watch(const NodePtr& node, const Reactions& reactions) {
  if (node) {
    reactors_.push_back(std::make_unique<Reactor>(*this, node, reactions));
  }
}

void Machine::construct() {
  for (const auto& reactor : reactors_) {
    reactor->registeredIs(true);
  }
  try {
    work([this] { handleInitialized(); });
  } catch (...) {
    for (const auto& reactor : reactors_) {
      reactor->registeredIs(false);
    }
    for (Collection<MachinePtr>::Walk walk(children); walk.next();) {
      children.take(walk.key);
    }
    throw;
  }
  complete_ = true;
}

void Machine::ended(Machine* machine) {
  sealed(machine->world, [machine] {
    machine->end();
    machine->activeIs(false);  // one that was retired may have been switched on again
  });
  delete machine;
}

void Machine::end() {
  if (complete_) {
    complete_ = false;
    ended_ = true;
    marked = marked || endsMarked();
    if (endsSwitchedOff()) {
      activeIs(false);
    }
    cleanup();
    marked = true;
    for (const auto& reactor : reactors_) {
      reactor->registeredIs(false);
    }
    childDelAll();
  }
}

void Machine::activeIs(bool on) {
  if (active == on) {
    return;
  }
  active = on;
  for (const auto& reactor : reactors_) {
    reactor->registeredIs(on);
  }
  for (Collection<MachinePtr>::Walk walk(children); walk.next();) {
    (*walk.value)->activeIs(on);
  }
  if (matchSm) {
    matchSm->activeIs(on);
  }
}

void Machine::call(const Text& form, const Text& argument) {
  if (const auto found = forms().find(form); found != forms().end()) {
    work([&] { found->second(*this, argument); });
  }
}

// A machine that is at work already is told when it is done.
void Machine::deliver(const Handler& handler, const Text& argument) {
  if (working_ == 0) {
    work([&] { handle(handler, Text(argument)); });
  } else {
    branch("dispatch", "waits");
    waiting_.emplace_back([this, &handler, argument] { handle(handler, argument); });
  }
}

void Machine::handle(const Handler& handler, const Text& argument) {
  if (dispatchIsSealed()) {
    sealed(world, [&] { handler(*this, argument); });
  } else {
    handler(*this, argument);
  }
}

void Machine::work(const std::function<void()>& what) {
  const MachinePtr keep = weak_from_this().lock();
  std::exception_ptr first;
  const auto attempt = [&first](const std::function<void()>& one) {
    try {
      one();
    } catch (...) {
      first = first ? first : std::current_exception();
    }
  };
  ++working_;
  attempt(what);
  if (first && !complete_ && !ended_) {
    branch("constructor", "failed");
    waiting_.clear();  // it will not live to be told
  }
  // Nor will one be told that nobody wants any more; one that is marked ignores what it is told.
  while (working_ == 1 && !waiting_.empty() && !(keep && keep.use_count() == 1)) {
    const auto next = std::move(waiting_.front());
    waiting_.pop_front();
    if (!marked) {
      late_ = true;
      attempt(next);
      late_ = false;
    }
  }
  --working_;
  if (first) {
    std::rethrow_exception(first);
  }
}

void Machine::retire(const Text& childKey) {
  if (const auto child = children.take(childKey)) {
    sealed(world, [&child] {
      (*child)->end();
      (*child)->activeIs(false);
    });
  }
}

void Machine::childDel(const Text& childKey) { children.take(childKey); }

void Machine::childDelAll() {
  for (Collection<MachinePtr>::Walk walk(children); walk.next();) {
    childDel(walk.key);
  }
}

void Machine::trace(int level, const char* form, std::initializer_list<std::string_view> pieces) {
  if (world.ended) {
    return;
  }
  ++world.hits[{name, form, level, pieces.size() == 0 ? "" : pieces.begin()->data()}];
  if (world.losing != 0) {
    --world.losing;
    ++world.lost;
    return;
  }
  world.log.append(std::to_string(level)).append(" void ").append(name).append("::").append(form);
  for (const std::string_view piece : pieces) {
    world.log.append(piece);
  }
  world.log.append("\n");
}

void Machine::mark() const {
  if (cookie) {
    cookie->updated = true;
    ++cookie->marks;
  }
}

}  // namespace Reference
