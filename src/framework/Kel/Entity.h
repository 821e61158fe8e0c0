#pragma once

#include <utility>

#include "Kel/EntryMap.h"
#include "Kel/OrderedMap.h"
#include "Kel/PtrInterface.h"
#include "Kel/Rows.h"
#include "Kel/Set.h"
#include "Kel/Slab.h"
#include "Kel/Text.h"
#include "Kel/ValueMap.h"
#include "Kel/ValueType.h"

namespace [[using gnu: visibility("default")]] Kel {

/// Entries are kept in a hash map, or sorted where their key type asks for it (kelOrdered).
template <class T, auto KeyOf>
struct CollectionOf {
  using Key = std::remove_cvref_t<decltype((std::declval<const T&>().*KeyOf)())>;
  static constexpr bool kOrdered = requires { Key::kelOrdered; };  ///< whether it is kept sorted
  /// What holds the entries.
  using type = std::conditional_t<kOrdered, OrderedMap<T, KeyOf>, EntryMap<T, KeyOf>>;
};

/// The base of configuration and status entities: objects made of attributes, that tell their
/// subscribers of every change. `Index` is the type's constant in its module's enumeration.
///
/// When an attribute notifies:
/// - a write of a scalar, *also of an equal value*: the writer meant something by it;
/// - the creation and the removal of an entry or of a member, with its key; the removal of all,
///   once per key. What finds nothing to change (creating what is there, removing what is not)
///   notifies nobody.
/// Notification comes after the change is complete, so that a subscriber may decide by looking.
/// The key that it gets is a copy or lies in an entry that is kept alive for the round.
///
/// The attributes themselves are declared with the words of Attributes.h.
template <class Self_, auto Index>
class Entity : public PtrInterface, public SlabAllocated<Self_> {
 public:
  using Self = Self_;  ///< the entity's own type, which the words name

  FwkType fwkType() const noexcept override {
    return {&kelModule(Index), static_cast<std::uint16_t>(Index)};
  }

  /// What observers subscribe to; publishing through it delivers a notification again.
  Brix::Publisher publisher() const noexcept { return {*this, subscribers_}; }

  /// What the entities of this type have been doing.
  static const EntityCounts& kelCounts() noexcept { return counts_; }

 protected:
  Entity() noexcept = default;

  template <class... Args>
  static Brix::Ptr<Self> create(Args&&... args) {
    Brix::Ptr<Self> made(new Self(std::forward<Args>(args)...), Brix::adopt);
    made->hasNotificationActiveIs(true);
    return made;
  }

  void publish(AttrId id, const void* key = nullptr, const void* value = nullptr) const {
    counts_.notifications.count();
    if (!subscribers_.empty()) {
      publisher().publish(id, key, value);
    }
  }

  template <class T>
  void write(T& attribute, const T& value, AttrId id) {
    countUnchanged(attribute == value);
    attribute = value;
    publish(id, nullptr, &attribute);
  }
  void write(Seconds& attribute, const Seconds& value, AttrId id) {
    write<Seconds>(attribute, writtenTime(value), id);
  }

  template <class K>
  void insertMember(Set<K>& set, K key, AttrId id) {
    if (set.insert(key)) {
      publish(id, &key);
    } else {
      countUnchanged(true);
    }
  }
  template <class K>
  void insertMembers(Set<K>& set, const Set<K>& keys, AttrId id) {
    if (set.empty() && subscribers_.empty()) {
      set.fill(keys);
      counts_.notifications.count(keys.size());
      return;
    }
    for (const K& key : keys) {
      insertMember(set, key, id);
    }
  }
  template <class K>
  void eraseMember(Set<K>& set, K key, AttrId id) {
    if (set.erase(key)) {
      publish(id, &key);
    } else {
      countUnchanged(true);
    }
  }
  template <class K>
  void eraseMembers(Set<K>& set, AttrId id) {
    for (const K& key : set) {
      eraseMember(set, key, id);
    }
  }

  template <class K, class V>
  void putValue(ValueMap<K, V>& map, K key, V value, AttrId id) {
    const V* const there = map.find(key);
    countUnchanged(there != nullptr && *there == value);
    map.put(key, value);
    publish(id, &key, &value);
  }
  template <class K, class V>
  void eraseValue(ValueMap<K, V>& map, K key, AttrId id) {
    if (map.erase(key)) {
      publish(id, &key);
    } else {
      countUnchanged(true);
    }
  }
  template <class K, class V>
  void eraseValues(ValueMap<K, V>& map, AttrId id) {
    for (const auto& [key, value] : map) {
      eraseValue(map, key, id);
    }
  }

  template <class T, auto KeyOf, class Map, class Key>
  Brix::Ptr<T> createEntry(Map& map, const Key& key, AttrId id) {
    if (T* const there = map.find(key)) {
      return Brix::Ptr<T>(there);
    }
    Brix::Ptr<T> made(new T(typename Map::Key(key)), Brix::adopt);
    made->hasNotificationActiveIs(true);
    map.insert(made);
    publishEntry<KeyOf>(*made, id);
    return made;
  }
  template <auto KeyOf, class Map, class Key>
  void eraseEntry(Map& map, const Key& key, AttrId id) {
    if (const auto gone = map.take(key)) {
      publishEntry<KeyOf>(*gone, id);
    }
  }
  template <auto KeyOf, class Map>
  void eraseEntries(Map& map, AttrId id) {
    for (const auto& [key, entry] : map) {
      eraseEntry<KeyOf>(map, key, id);
    }
  }

  template <class T>
  Brix::Ptr<T> createSingle(Brix::Ptr<T>& single, AttrId id) {
    if (single) {
      return single;
    }
    single = Brix::Ptr<T>(new T, Brix::adopt);
    single->hasNotificationActiveIs(true);
    Brix::Ptr<T> made = single;
    publish(id, nullptr, made.get());
    return made;
  }
  template <class T>
  void eraseSingle(Brix::Ptr<T>& single, AttrId id) {
    if (const Brix::Ptr<T> gone = std::exchange(single, nullptr)) {
      publish(id);
    }
  }

 private:
  template <auto KeyOf, class T>
  void publishEntry(const T& entry, AttrId id) const {
    const auto& key = (entry.*KeyOf)();
    publish(id, &key, &entry);
  }

  static void countUnchanged(bool unchanged) noexcept {
    if (unchanged) {
      counts_.unchangedWrites.count();
    }
  }

  static inline EntityCounts counts_;

  mutable Brix::SubscriberList subscribers_;
};

}  // namespace Kel
