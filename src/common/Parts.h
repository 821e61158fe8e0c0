#pragma once

#include <functional>
#include <type_traits>
#include <utility>

#include "Kel/Attributes.h"
#include "Kel/Dispatch.h"
#include "Kel/EntryMap.h"
#include "Kel/Exception.h"
#include "common/TracePlace.h"
#include "common/TranslateSm.h"

namespace [[using gnu: visibility("default")]] VelaPolicyMonitor {

/// A watched entity of a state machine: the counted pointer to it, and the slot that is registered
/// with its publisher while the machine's notifications are on. Null is never registered.
template <class Entity, class Sm, const Kel::Dispatch<Sm>& Table>
class Reactor : private Brix::Subscriber {
 public:
  Reactor(const Brix::Ptr<Entity>& entity, Sm& owner) noexcept : entity_(entity), owner_(owner) {}
  Reactor(const Reactor&) = delete;
  Reactor& operator=(const Reactor&) = delete;
  ~Reactor() { activeIs(false); }

  const Brix::Ptr<Entity>& entity() const noexcept { return entity_; }

  void activeIs(bool on) noexcept {
    if (!entity_ || on == (dispatch() != nullptr)) {
      return;
    }
    if (on) {
      dispatchIs(&notify);
      entity_->publisher().subscriberAdd(*this);
    } else {
      entity_->publisher().subscriberRemove(*this);
      dispatchIs(nullptr);
    }
  }
  void start() noexcept { activeIs(true); }
  void abandon() noexcept { activeIs(false); }

 private:
  static void notify(const Brix::Publisher& /*publisher*/, Subscriber& slot, Kel::AttrId id,
                     const void* key, const void* /*value*/) noexcept(Sm::kDispatchIsNoexcept) {
    Table(static_cast<Reactor&>(slot).owner_, id, key);
  }

  Brix::Ptr<Entity> entity_;
  Sm& owner_;
};

/// The children of a state machine, by the key that each carries.
template <class Child, auto KeyOf>
class Children {
 public:
  using Map = Kel::EntryMap<Child, KeyOf>;
  using Key = typename Map::Key;

  const Map& map() const noexcept { return map_; }
  Child* find(const auto& key) const noexcept { return map_.find(key); }
  /// The child that was there, or null. It is out of the collection when it comes to its end.
  Brix::Ptr<Child> remove(const Key& key) { return map_.take(key); }
  void removeAll() {
    for (const auto& [key, child] : map_) {
      remove(key);
    }
  }

  /// The child under `key` if it was built from `args`; otherwise it gives way to a new one. The
  /// old child comes to its end before the new one is built: its last act empties the version-2
  /// entity that both write. Null while the child of this key is being built further down the
  /// stack (an observer of version 2 has called a handler of the owner): there is to be no second
  /// one. Null also when the owner has come to its end itself (one of its handlers is still on the
  /// stack): a child of its would empty, at its own end, what the successor's wrote.
  template <class Owner, class... Args>
  Brix::Ptr<Child> keepOrReplace(Owner& owner, const Key& key, const Args&... args) {
    return Busy::during(owner, [&]() -> Brix::Ptr<Child> {
      if (Child* const there = find(key)) {
        if (there->builtFrom(args...)) {
          return Brix::Ptr<Child>(there);
        }
        return replace(owner, key, args...);
      }
      return owner.retired() ? nullptr : add(owner, key, args...);
    });
  }

  /// The child under `key`, built now if there is none; one that was built from other objects
  /// than `args` is an error of the caller, raised as Kel::ReinstantiationException; while the
  /// owner is catching up it gives way instead, as its entry was deleted and created anew
  /// meanwhile. Null in the same two cases as above.
  template <class Owner, class... Args>
  Brix::Ptr<Child> keepOrThrow(Owner& owner, const char* collection, const Key& key,
                               const Args&... args) {
    return Busy::during(owner, [&]() -> Brix::Ptr<Child> {
      if (Child* const there = find(key)) {
        if (there->builtFrom(args...)) {
          return Brix::Ptr<Child>(there);
        }
        if (!owner.catchingUp()) {
          Kel::Impl::throwMutatorReinstantiating(collection, Kel::textOf(key));
        }
        return replace(owner, key, args...);
      }
      return owner.retired() ? nullptr : add(owner, key, args...);
    });
  }

  void activeIs(bool on) noexcept {
    for (const auto& [key, child] : map_) {
      child->hasNotificationActiveIs(on);
    }
  }
  void start() noexcept {}
  void abandon() { removeAll(); }

 private:
  /// A child that is on its way, in a list from the latest to the first.
  struct Building {
    Building(const Children& where, const Key& which) noexcept
        : children(where), key(which), before(latest) {
      latest = this;
    }
    Building(const Building&) = delete;
    Building& operator=(const Building&) = delete;
    ~Building() { latest = before; }

    const Children& children;
    const Key& key;
    const Building* const before;
    static inline const Building* latest = nullptr;
  };
  bool isBeingBuilt(const Key& key) const noexcept {
    const Building* at = Building::latest;
    while (at != nullptr && !(&at->children == this && at->key == key)) {
      at = at->before;
    }
    return at != nullptr;
  }

  /// `key` by value: the one that the caller has may lie in the child that goes.
  template <class Owner, class... Args>
  Brix::Ptr<Child> replace(Owner& owner, Key key, const Args&... args) {
    remove(key)->retire();
    // An observer of what that deleted may have had the next child made already.
    while (Child* const there = find(key)) {
      if (there->builtFrom(args...)) {
        return Brix::Ptr<Child>(there);
      }
      remove(key)->retire();
    }
    return owner.retired() ? nullptr : add(owner, key, args...);
  }

  /// The child is built first and stored then: a constructor that throws leaves no entry behind.
  template <class Owner, class... Args>
  Brix::Ptr<Child> add(const Owner& owner, const Key& key, const Args&... args) {
    if (isBeingBuilt(key)) {
      return nullptr;
    }
    const Building building{*this, key};
    const TracePlace::Making making(owner.tracePlace());
    Brix::Ptr<Child> child = TranslateSm::make<Child>(key, args...);
    map_.insert(child);
    return child;
  }

  Map map_;
};

/// The single child of a state machine; null while there is none.
template <class Child>
class SingleChild {
 public:
  const Brix::Ptr<Child>& get() const noexcept { return child_; }
  /// Stores `child` (null for none) and hands out the one that was there.
  Brix::Ptr<Child> exchange(Brix::Ptr<Child> child) noexcept {
    child_.swap(child);
    return child;
  }

  void activeIs(bool on) noexcept {
    if (const Brix::Ptr<Child> child = child_) {
      child->hasNotificationActiveIs(on);
    }
  }
  void start() noexcept {}
  void abandon() noexcept { exchange(nullptr); }

 private:
  Brix::Ptr<Child> child_;
};

/// The row of an object that a state machine watches or owns.
template <class Self, class Object, const Brix::Ptr<Object>& (Self::*Accessor)() const noexcept>
constexpr Kel::Row objectRow(Kel::AttrId id, const char* name, Kel::RowKind kind) {
  Kel::Row row{
      .id = id, .name = name, .kind = kind, .target = &Kel::describe<std::remove_const_t<Object>>};
  row.find = [](const Kel::PtrInterface& sm, const void* /*key*/) -> const void* {
    return Kel::Impl::nameless((Kel::Impl::self<Self>(sm).*Accessor)().get());
  };
  return row;
}

}  // namespace VelaPolicyMonitor

// The words that state machines add to those of entities (Kel/Attributes.h).

/// A watched entity: x() reads; xDispatch is the table of what its changes run.
#define SM_INPUT(id_, x, Entity)                                            \
 private:                                                                   \
  static const Kel::Dispatch<Self> x##Dispatch;                             \
  Reactor<Entity, Self, x##Dispatch> x##_;                                  \
                                                                            \
 public:                                                                    \
  static constexpr Kel::Attr<void> x##Attr{id_};                            \
  const Brix::Ptr<Entity>& x() const noexcept { return x##_.entity(); }     \
  static constexpr Kel::Row kelRow(Kel::Id<id_>) {                          \
    return objectRow<Self, Entity, &Self::x>(id_, #x, Kel::RowKind::input); \
  }

/// Children of type Child under the key that each carries as `keyName`: x() is the whole, x(key)
/// one child (null when absent). xIs, xDel and xDelAll are the machine's own.
#define SM_CHILDREN(id_, x, keyName_, Child)                                             \
 private:                                                                                \
  Children<Child, &Child::keyName_> x##_;                                                \
                                                                                         \
 public:                                                                                 \
  using x##Key = Children<Child, &Child::keyName_>::Key;                                 \
  static constexpr Kel::Attr<x##Key> x##Attr{id_};                                       \
  const auto& x() const noexcept { return x##_.map(); }                                  \
  Brix::Ptr<Child> x(const auto& key) const { return Brix::Ptr<Child>(x##_.find(key)); } \
  static constexpr Kel::Row kelRow(Kel::Id<id_>) {                                       \
    Kel::Row row{.id = id_,                                                              \
                 .name = #x,                                                             \
                 .kind = Kel::RowKind::children,                                         \
                 .keyName = #keyName_,                                                   \
                 .key = &Kel::valueTypeOf<x##Key>,                                       \
                 .target = &Kel::describe<Child>};                                       \
    row.find = [](const Kel::PtrInterface& sm, const void* key) {                        \
      return Kel::Impl::nameless(                                                        \
          static_cast<const Self&>(sm).x##_.find(*static_cast<const x##Key*>(key)));     \
    };                                                                                   \
    row.walk = [](const Kel::PtrInterface& sm, void* context, Kel::Row::Visit* visit) {  \
      for (const auto& [key, child] : static_cast<const Self&>(sm).x()) {                \
        visit(context, &key, Kel::Impl::nameless(child.get()));                          \
      }                                                                                  \
    };                                                                                   \
    row.size = [](const Kel::PtrInterface& sm) {                                         \
      return static_cast<const Self&>(sm).x().size();                                    \
    };                                                                                   \
    return row;                                                                          \
  }

/// A single child that may be absent: x() reads, null when absent. xIs and xDel are the machine's
/// own.
#define SM_CHILD(id_, x, Child)                                             \
 private:                                                                   \
  SingleChild<Child> x##_;                                                  \
                                                                            \
 public:                                                                    \
  static constexpr Kel::Attr<void> x##Attr{id_};                            \
  const Brix::Ptr<Child>& x() const noexcept { return x##_.get(); }         \
  static constexpr Kel::Row kelRow(Kel::Id<id_>) {                          \
    return objectRow<Self, Child, &Self::x>(id_, #x, Kel::RowKind::single); \
  }
