#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <tuple>

#include "Kel/PtrInterface.h"
#include "Kel/Text.h"

namespace [[using gnu: visibility("default")]] VelaPolicyMonitor {

using Kel::String;

/// The base of the ten translate state machines: their life, and what keeps them whole while the
/// world calls back into them. It owns no step of what a machine does.
///
/// The life of a state machine:
///
/// - *Construction.* The constructor stores its arguments and calls `start(*this)` as its last
///   statement: the inputs register, then `handleInitialized()` walks what is there. The machine is
///   `final` and all its members stand before the first registration, so nothing can meet it half
///   built. If the first walk throws, the inputs are unregistered first, then the children go, and
///   the exception leaves; what was written to version 2 until then stays. The creator then calls
///   `hasNotificationActiveIs(true)`, which finds the inputs registered already.
///
/// - *Busy.* From its construction on, and whenever one of its handlers is on the stack (each opens
///   a `Handling`), a machine is busy. A notification that reaches a busy machine, because an
///   observer of version 2 has written version 1 from inside a handler, is postponed with a copy of
///   its key and served when the machine is done, in the order of arrival. Handlers decide by
///   looking things up, so a late delivery does what a timely one would have done; and a second
///   child for a key whose first child is still being built cannot come about. One thing a look-up
///   cannot tell: an entry that was deleted and created anew meanwhile is just another object under
///   its key. So while a machine is catching up, a child that was built from other objects gives
///   way where it would be an error otherwise. Machines that are not busy are served at once.
///
/// - *Exceptions.* A handler's exception ends that handler only. What was postponed is served all
///   the same; then the first exception goes on to whoever made the change.
///
/// - *The last reference may go while a handler is on the stack* (an observer drops the root). The
///   machine is then destroyed when its outermost handler has ended; until then it writes to
///   entities that it holds by itself.
///
/// - *The end.* `tearDown()` is the machine's own sequence of last steps. It runs once: from the
///   destructor, or before that from `retire()`, when a parent replaces a child by a new one on the
///   same version-2 entity. A replaced child that somebody still holds must not empty, at its
///   destruction, what the new child has written meanwhile. From the first of these steps on
///   nothing is dispatched to the machine any more, and it makes no more children.
///
/// - *Members are released in the reverse order of declaration*, that of the attribute table. A
///   machine names the parts that the notification switch reaches, inputs before children, in one
///   line: `auto parts() { return std::tie(ruleV1_, perOriginSm_); }`.
class TranslateSm : public Kel::PtrInterface {
 public:
  /// Whether notifications wait: under construction, in a handler, or past its end.
  bool busy() const noexcept { return depth_ != 0 || retired_; }
  /// Whether what runs was postponed: entries may have been replaced between then and now.
  bool catchingUp() const noexcept { return catchingUp_; }

  /// Keeps `call` until the machine is done; dropped when the machine has come to its end.
  void postpone(std::function<void()> call);
  /// What was postponed since the start of the process.
  struct Postponed {
    std::uint64_t calls = 0;  ///< for all machines
    std::size_t atOnce = 0;   ///< for one machine, at most
  };
  static const Postponed& postponed() noexcept;  ///< Of all machines of the process.

  /// Makes a machine of type Sm and switches its notifications on; what every creator does.
  template <class Sm, class... Args>
  static Brix::Ptr<Sm> make(const Args&... args) {
    Brix::Ptr<Sm> sm(new Sm(args...), Brix::adopt);
    sm->hasNotificationActiveIs(true);
    return sm;
  }

  /// Brings the machine to its end now; its destructor then only releases what it holds.
  void retire() noexcept;
  /// Whether it has come to its end; it may go on existing for whoever holds it.
  bool retired() const noexcept { return retired_; }

 protected:
  TranslateSm() noexcept = default;
  ~TranslateSm() override;

  /// The rest of construction; see above.
  template <class Sm>
  static void start(Sm& sm) {
    TranslateSm& base = sm;
    try {
      std::apply([](auto&... part) { (part.start(), ...); }, sm.parts());
      sm.handleInitialized();
      base.settle();
    } catch (...) {
      base.retired_ = true;
      std::apply([](auto&... part) { (part.abandon(), ...); }, sm.parts());
      throw;
    }
  }

  /// Switches the parts of `sm`, in their order; what the override of each machine does.
  template <class Sm>
  static void switchParts(Sm& sm, bool on) noexcept {
    if (sm.hasNotificationActive() == on) {
      return;
    }
    sm.PtrInterface::hasNotificationActiveIs(on);
    std::apply([on](auto&... part) { (part.activeIs(on), ...); }, sm.parts());
  }

  /// Stores a value that differs from the present one, and tells the machine's notifiees.
  template <class T>
  static void storeAndPublish(const TranslateSm& sm, T& attribute, const T& value, Kel::AttrId id) {
    if (!(attribute == value)) {
      attribute = value;
      sm.notifieeList().publish(id, nullptr, valueOf(attribute));
    }
  }

  /// What a notification carries as value: an object itself, not the pointer that holds it.
  template <class T>
  static const void* valueOf(const T& attribute) noexcept {
    return &attribute;
  }
  template <class T>
  static const void* valueOf(const Brix::Ptr<T>& object) noexcept {
    return static_cast<const Kel::PtrInterface*>(object.get());
  }

  /// The last steps, in the machine's own order.
  virtual void tearDown() noexcept = 0;

 private:
  friend class Busy;

  void onZeroReferences() noexcept override;
  void dropPostponed() noexcept;
  /// The outermost handler has ended: serves what was postponed, destroys what nobody holds.
  void settle();

  // They fill the gap that the base has left: there are hundreds of thousands of machines.
  bool attention_ : 1 = false;  // something to settle: a postponed call, or no reference left
  bool retired_ : 1 = false;
  bool catchingUp_ : 1 = false;
  std::uint16_t depth_ = 1;  // handlers on the stack; the constructor counts as one
};
static_assert(sizeof(TranslateSm) == 16);

/// A machine is busy while this lives. At the end of the outermost one, postponed notifications are
/// served, and the machine is destroyed if its last reference has gone meanwhile: nobody may touch
/// it afterwards. Raises what a postponed notification has raised, unless an exception is already
/// on its way through the handler.
class Busy {
 public:
  /// `sm` has to live as long as this.
  [[gnu::always_inline]] explicit Busy(TranslateSm& sm) noexcept : sm_(sm) { ++sm.depth_; }
  Busy(const Busy&) = delete;
  Busy& operator=(const Busy&) = delete;
  [[gnu::always_inline]] ~Busy() noexcept(false) {
    if (sm_.depth_ == 1 && sm_.attention_) {
      sm_.settle();
    } else {
      --sm_.depth_;
    }
  }

  /// What `make` returns; `sm` is busy meanwhile. Deliberate: a function that returns an object
  /// holds no Busy of its own, as some compilers never destroy what a return statement has made
  /// when the end of a local variable raises.
  template <class Make>
  static auto during(TranslateSm& sm, Make make) {
    decltype(make()) made;
    {
      const Busy busy{sm};
      made = make();
    }
    return made;
  }

 private:
  TranslateSm& sm_;
};

}  // namespace VelaPolicyMonitor
