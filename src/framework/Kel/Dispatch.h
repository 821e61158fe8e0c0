#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <type_traits>
#include <utility>

#include "Kel/PtrInterface.h"
#include "Kel/Rows.h"

namespace [[using gnu: visibility("default")]] Kel {

// Dispatch tables: which handler of a state machine runs when which attribute of a watched entity
// changes. A table is a constexpr constant with one row per attribute that is reacted to:
//
//   constexpr Kel::Dispatch<Self> kRuleV1{
//       Kel::On<Self>::key<VelaL3::VelaRuleConfig::originAttr, &Self::handleOrigin>,
//   };
//
// A row picks, of the overloads of a handler's name, the one that takes the attribute's key (by
// value or by constant reference); a handler for another key type does not compile.

/// A keyed handler that takes its key by value or by reference.
template <class Sm, class K>
struct KeyHandler {
  void (Sm::*byReference)(const K&) = nullptr;
  void (Sm::*byValue)(K) = nullptr;

  constexpr KeyHandler(void (Sm::*handler)(const K&)) : byReference(handler) {}  // NOLINT
  constexpr KeyHandler(void (Sm::*handler)(K)) : byValue(handler) {}             // NOLINT
  constexpr void operator()(Sm& sm, const K& key) const {
    if (byReference != nullptr) {
      (sm.*byReference)(key);
    } else {
      (sm.*byValue)(key);
    }
  }
};

/// Whether an exception may not leave a dispatch to an Sm: the process ends. The same holds for a
/// dispatch that has had to wait.
template <class Sm>
constexpr bool dispatchIsNoexcept() {
  if constexpr (requires { Sm::kDispatchIsNoexcept; }) {
    return Sm::kDispatchIsNoexcept;
  } else {
    return false;
  }
}

/// One row: the attribute, how to run its handler now, and how to keep the call for later.
template <class Sm>
struct Reaction {
  AttrId id = 0;
  void (*run)(Sm& sm, const void* key) = nullptr;
  std::function<void()> (*later)(Sm& sm, const void* key) = nullptr;
};

template <class Sm, class K, class As, auto Handler>
constexpr Reaction<Sm> keyReaction(AttrId id) {
  // The key is copied first: it may lie in what the handler is about to delete.
  return {id,
          [](Sm& sm, const void* key) {
            const As copy(*static_cast<const K*>(key));
            Handler(sm, copy);
          },
          [](Sm& sm, const void* key) -> std::function<void()> {
            return [&sm, copy = As(*static_cast<const K*>(key))]() noexcept(
                       dispatchIsNoexcept<Sm>()) { Handler(sm, copy); };
          }};
}

template <class Sm>
struct On {
  /// The entry's key goes to the handler as it is.
  template <const auto& Attribute, KeyHandler<Sm, KeyOf<Attribute>> Handler>
  static constexpr Reaction<Sm> key =
      keyReaction<Sm, KeyOf<Attribute>, KeyOf<Attribute>, Handler>(Attribute.id);

  /// The handler takes another type than the notification carries: `Adapter` converts the key and
  /// calls it.
  template <const auto& Attribute, void (Sm::*Adapter)(const KeyOf<Attribute>&)>
  static constexpr Reaction<Sm> adapted =
      keyReaction<Sm, KeyOf<Attribute>, KeyOf<Attribute>,
                  KeyHandler<Sm, KeyOf<Attribute>>(Adapter)>(Attribute.id);

  /// An attribute without keys.
  template <const auto& Attribute, void (Sm::*Handler)()>
  static constexpr Reaction<Sm> change{
      Attribute.id, [](Sm& sm, const void* /*key*/) { (sm.*Handler)(); },
      [](Sm& sm, const void* /*key*/) -> std::function<void()> {
        return [&sm]() noexcept(dispatchIsNoexcept<Sm>()) { (sm.*Handler)(); };
      }};
};

template <class Sm>
class Dispatch {
 public:
  constexpr Dispatch(std::initializer_list<Reaction<Sm>> rows) {
    first_ = rows.begin()->id;
    for (const Reaction<Sm>& row : rows) {
      rows_[static_cast<std::size_t>(row.id - first_)] = row;
      last_ = row.id;
    }
  }

  /// The three steps of every dispatch function: another attribute: nothing; a machine that is
  /// marked for deletion: nothing; otherwise the handler runs, or waits for the machine to be done
  /// with what it is doing.
  void operator()(Sm& sm, AttrId id, const void* key) const {
    if (id < first_ || id > last_) {
      return;
    }
    const Reaction<Sm>& row = rows_[static_cast<std::size_t>(id - first_)];
    if (row.run == nullptr || sm.kelMarkedForDeletion()) {
      return;
    }
    if (sm.busy()) [[unlikely]] {
      postpone(sm, row, key);
    } else {
      row.run(sm, key);
    }
  }

  /// The attributes that are reacted to; for dumps.
  constexpr bool reactsTo(AttrId id) const {
    return id >= first_ && id <= last_ &&
           rows_[static_cast<std::size_t>(id - first_)].run != nullptr;
  }

 private:
  // Apart, so that a dispatch to a machine that is not busy needs no room on the stack.
  [[gnu::noinline, gnu::cold]] static void postpone(Sm& sm, const Reaction<Sm>& row,
                                                    const void* key) {
    sm.postpone(row.later(sm, key));
  }

  std::array<Reaction<Sm>, 10> rows_{};  // by distance from the lowest id
  AttrId first_ = 0;
  AttrId last_ = -1;
};

}  // namespace Kel
