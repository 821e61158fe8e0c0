#pragma once

#include <deque>
#include <functional>
#include <initializer_list>
#include <set>
#include <stdexcept>

#include "model/reference/Types.h"

namespace Reference {

/// A value outside the bounds of its type.
struct OutOfRange : std::runtime_error {
  using std::runtime_error::runtime_error;
};
/// A child is there that was built from other objects.
struct Reinstantiated : std::exception {};

/// The process has ended, see World.
struct Ended {};

struct Cookie {
  explicit Cookie(World& world_);
  Cookie(const Cookie&) = delete;
  Cookie& operator=(const Cookie&) = delete;
  ~Cookie();

  World& world;
  bool updated = false;
  long marks = 0;  ///< how often it was marked
};
using CookiePtr = std::shared_ptr<Cookie>;

class Machine;
using MachinePtr = std::shared_ptr<Machine>;

/// What all ten machines have in common; each leaves empty what it has no use for.
class Machine : public std::enable_shared_from_this<Machine> {
 public:
  struct Given {
    Text key;
    NodePtr v1;
    NodePtr v2;
    NodePtr record;  ///< at a root, the status
    Text netVrfName;
    CookiePtr cookie;
  };

  Machine(World& world, const char* name, Given given);
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;
  virtual ~Machine();

  /// Builds a machine: it watches, walks, and is switched on.
  template <class T>
  static std::shared_ptr<T> make(World& world, Given given) {
    const std::shared_ptr<T> made(new T(world, std::move(given)), &Machine::ended);
    made->construct();
    made->activeIs(true);
    return made;
  }

  using Handler = std::function<void(Machine& machine, const Text& key)>;
  using Reactions = std::map<int, Handler>;  ///< by attribute
  using Forms = std::map<Text, Handler>;     ///< operations by their form

  /// What call() knows. The table lives on.
  virtual const Forms& forms() const = 0;
  /// Calls an operation by its form, such as "handleVrf(const String&)", as the agent does.
  void call(const Text& form, const Text& argument);
  void activeIs(bool on);

  World& world;
  const char* const name;
  const Text key;
  const NodePtr v1, v2, record;
  const Text netVrfName;
  CookiePtr cookie;
  Collection<MachinePtr> children;
  MachinePtr matchSm;
  Publisher notifiees;
  bool initialized = false;
  bool initComplete = false;
  bool active = false;
  bool marked = false;

  /// Whether the machine switches itself and its children off when it ends.
  virtual bool endsSwitchedOff() const { return true; }
  /// Whether it is marked before it cleans up, and not after.
  virtual bool endsMarked() const { return false; }
  /// Whether what a notification has it do may not raise.
  virtual bool dispatchIsSealed() const { return false; }
  virtual void cleanup() = 0;
  virtual void handleInitialized() = 0;
  virtual void childDel(const Text& childKey);
  virtual void childDelAll();
  /// Ends a child that makes room for another one: what it wrote goes now, although somebody may
  /// still hold it, because the other one writes to the same place. Whoever sees that may have
  /// another child made under the key meanwhile.
  void retire(const Text& childKey);

 protected:
  template <class T>
  static Handler keyed(void (T::*handle)(const Text&)) {
    return [handle](Machine& machine, const Text& entry) {
      (static_cast<T&>(machine).*handle)(entry);
    };
  }
  template <class T>
  static Handler whole(void (T::*handle)()) {
    return
        [handle](Machine& machine, const Text& /*key*/) { (static_cast<T&>(machine).*handle)(); };
  }

  /// Reacts to attributes of `node`, if there is one. The table lives on.
  void watch(const NodePtr& node, const Reactions& reactions);

  void enter(const char* form, std::initializer_list<std::string_view> pieces = {}) {
    trace(8, form, pieces);
  }
  void act(const char* form, std::initializer_list<std::string_view> pieces) {
    trace(6, form, pieces);
  }
  void leave(const char* form, const char* how = "return") { trace(7, form, {how}); }
  void trace(int level, const char* form, std::initializer_list<std::string_view> pieces);
  void branch(const char* form, const char* which) { ++world.hits[{name, form, 0, which}]; }

  /// Builds a child and takes it in. A call from within, while it is being built, finds it there.
  template <class T>
  void bring(const Text& childKey, Given given) {
    building_.insert(childKey);
    try {
      MachinePtr made = make<T>(world, std::move(given));
      building_.erase(childKey);
      children.insert(childKey, std::move(made));
    } catch (...) {
      building_.erase(childKey);
      throw;
    }
  }
  /// Whether no child may be brought now: it is being built already, or the machine has ended.
  bool mayNotBring(const Text& childKey) const { return ended_ || building_.contains(childKey); }

  /// Whether the handler at work was kept waiting: what it is told of may be long past, an entity
  /// that has gone and come back among it.
  bool isLate() const { return late_; }

  /// Notes that version 2 was changed.
  void mark() const;
  CookiePtr freshCookie() { return std::make_shared<Cookie>(world); }

 private:
  struct Reactor;

  static void ended(Machine* machine);
  void construct();
  void end();
  void deliver(const Handler& handler, const Text& argument);
  void handle(const Handler& handler, const Text& argument);
  void work(const std::function<void()>& what);

  std::vector<std::unique_ptr<Reactor>> reactors_;
  std::deque<std::function<void()>> waiting_;
  std::set<Text> building_;
  int working_ = 0;
  bool complete_ = false;
  bool ended_ = false;
  bool late_ = false;
};

}  // namespace Reference
