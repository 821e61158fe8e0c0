#pragma once

#include "Kel/Entity.h"

namespace [[using gnu: visibility("default")]] Kel {
namespace Impl {

// The rows of entities. Each operation is the same few lines for every attribute of its kind: from
// the nameless object to the attribute by its member pointer, from the nameless key to its type.

template <class Self>
const Self& self(const PtrInterface& object) {
  return static_cast<const Self&>(object);
}
template <class Self>
Self& self(PtrInterface& object) {
  return static_cast<Self&>(object);
}
template <class T>
const T& as(const void* value) {
  return *static_cast<const T*>(value);
}
/// An entity reached through a row is handed out as its PtrInterface.
inline const void* nameless(const PtrInterface* object) { return object; }

template <class T>
struct ObjectOf {};
template <class T>
struct ObjectOf<Brix::Ptr<T>> {
  using type = std::remove_const_t<T>;
};

template <class Self, class T, auto Member>
constexpr Row constantRow(AttrId id, const char* name) {
  Row row{.id = id, .name = name};
  if constexpr (requires { typename ObjectOf<T>::type; }) {
    row.kind = RowKind::object;
    row.target = &describe<typename ObjectOf<T>::type>;
    row.find = [](const PtrInterface& object, const void* /*key*/) -> const void* {
      return nameless((self<Self>(object).*Member).get());
    };
  } else {
    row.kind = RowKind::constant;
    row.value = &valueTypeOf<T>;
    row.find = [](const PtrInterface& object, const void* /*key*/) -> const void* {
      return &(self<Self>(object).*Member);
    };
  }
  return row;
}

template <class Self, class T, auto Member, void (Self::*Write)(const T&)>
constexpr Row valueRow(AttrId id, const char* name) {
  Row row = constantRow<Self, T, Member>(id, name);
  row.kind = RowKind::value;
  row.put = [](PtrInterface& object, const void* /*key*/, const void* value) -> void* {
    (self<Self>(object).*Write)(as<T>(value));
    return nullptr;
  };
  return row;
}

template <class Self, class K, auto Member, void (Self::*Insert)(const K&),
          void (Self::*Erase)(const K&)>
constexpr Row setRow(AttrId id, const char* name) {
  Row row{.id = id, .name = name, .kind = RowKind::set, .key = &valueTypeOf<K>};
  row.find = [](const PtrInterface& object, const void* key) -> const void* {
    return (self<Self>(object).*Member).contains(as<K>(key)) ? key : nullptr;
  };
  row.put = [](PtrInterface& object, const void* key, const void* /*value*/) -> void* {
    (self<Self>(object).*Insert)(as<K>(key));
    return nullptr;
  };
  row.erase = [](PtrInterface& object, const void* key) {
    (self<Self>(object).*Erase)(as<K>(key));
  };
  row.walk = [](const PtrInterface& object, void* context, Row::Visit* visit) {
    for (const K& key : self<Self>(object).*Member) {
      visit(context, &key, &key);
    }
  };
  row.size = [](const PtrInterface& object) { return (self<Self>(object).*Member).size(); };
  return row;
}

template <class Self, class K, class V, auto Member, void (Self::*Put)(const K&, const V&),
          void (Self::*Erase)(const K&)>
constexpr Row mapRow(AttrId id, const char* name, const char* keyName, const char* valueName) {
  Row row{.id = id,
          .name = name,
          .kind = RowKind::map,
          .keyName = keyName,
          .valueName = valueName,
          .key = &valueTypeOf<K>,
          .value = &valueTypeOf<V>};
  row.find = [](const PtrInterface& object, const void* key) -> const void* {
    return (self<Self>(object).*Member).find(as<K>(key));
  };
  row.put = [](PtrInterface& object, const void* key, const void* value) -> void* {
    (self<Self>(object).*Put)(as<K>(key), as<V>(value));
    return nullptr;
  };
  row.erase = [](PtrInterface& object, const void* key) {
    (self<Self>(object).*Erase)(as<K>(key));
  };
  row.walk = [](const PtrInterface& object, void* context, Row::Visit* visit) {
    for (const auto& [key, value] : self<Self>(object).*Member) {
      visit(context, &key, &value);
    }
  };
  row.size = [](const PtrInterface& object) { return (self<Self>(object).*Member).size(); };
  return row;
}

/// What entries of entities and children of state machines have in common: they are read alike.
template <class Self, class T, class K, auto Member>
constexpr Row readCollectionRow(AttrId id, const char* name, RowKind kind, const char* keyName) {
  Row row{.id = id,
          .name = name,
          .kind = kind,
          .keyName = keyName,
          .key = &valueTypeOf<K>,
          .target = &describe<T>};
  row.find = [](const PtrInterface& object, const void* key) {
    return nameless((self<Self>(object).*Member).find(as<K>(key)));
  };
  row.walk = [](const PtrInterface& object, void* context, Row::Visit* visit) {
    for (const auto& [key, entry] : self<Self>(object).*Member) {
      visit(context, &key, nameless(entry.get()));
    }
  };
  row.size = [](const PtrInterface& object) { return (self<Self>(object).*Member).size(); };
  return row;
}

template <class Self, class T, class K, auto Member, Brix::Ptr<T> (Self::*Create)(const K&),
          void (Self::*Erase)(const K&)>
constexpr Row entriesRow(AttrId id, const char* name, const char* keyName) {
  Row row = readCollectionRow<Self, T, K, Member>(id, name, RowKind::entries, keyName);
  row.put = [](PtrInterface& object, const void* key, const void* /*value*/) -> void* {
    return static_cast<PtrInterface*>((self<Self>(object).*Create)(as<K>(key)).get());
  };
  row.erase = [](PtrInterface& object, const void* key) {
    (self<Self>(object).*Erase)(as<K>(key));
  };
  return row;
}

template <class Self, class T, auto Member, Brix::Ptr<T> (Self::*Create)(), void (Self::*Erase)()>
constexpr Row singleRow(AttrId id, const char* name) {
  Row row{.id = id, .name = name, .kind = RowKind::single, .target = &describe<T>};
  row.find = [](const PtrInterface& object, const void* /*key*/) {
    return nameless((self<Self>(object).*Member).get());
  };
  row.put = [](PtrInterface& object, const void* /*key*/, const void* /*value*/) -> void* {
    return static_cast<PtrInterface*>((self<Self>(object).*Create)().get());
  };
  row.erase = [](PtrInterface& object, const void* /*key*/) { (self<Self>(object).*Erase)(); };
  return row;
}

template <class T>
constexpr T initial() {
  return T{};
}
template <>
constexpr Seconds initial<Seconds>() {
  return kNoTime;
}

}  // namespace Impl
}  // namespace Kel

// The words in which an entity declares its attributes. Each takes the attribute's fixed id first,
// declares the member, its operations (named after the attribute), the constant `<name>Attr` with
// the id and the key type, and the row. A word pastes names; what happens is in Kel::Entity.
// The id is part of what agents build against: it never changes and is never used again.

/// Read-only from outside (a key, an object given at construction, a flag of a machine): x() reads.
#define KEL_CONST(id_, x, T)                                      \
 private:                                                         \
  T x##_;                                                         \
                                                                  \
 public:                                                          \
  static constexpr Kel::Attr<void> x##Attr{id_};                  \
  const T& x() const noexcept { return x##_; }                    \
  static constexpr Kel::Row kelRow(Kel::Id<id_>) {                \
    return Kel::Impl::constantRow<Self, T, &Self::x##_>(id_, #x); \
  }

/// A scalar: x() reads, xIs(v) writes and notifies, also when the value is equal.
#define KEL_ATTR(id_, x, T)                                                  \
 private:                                                                    \
  T x##_ = Kel::Impl::initial<T>();                                          \
                                                                             \
 public:                                                                     \
  static constexpr Kel::Attr<void> x##Attr{id_};                             \
  const T& x() const noexcept { return x##_; }                               \
  void x##Is(const T& value) { this->write(x##_, value, id_); }              \
  static constexpr Kel::Row kelRow(Kel::Id<id_>) {                           \
    return Kel::Impl::valueRow<Self, T, &Self::x##_, &Self::x##Is>(id_, #x); \
  }

/// A set of keys: x() is the whole, x(key) whether it is a member, xIs(key) inserts, xDel(key)
/// removes, xAllIs(keys) inserts all of another set, xDelAll() removes all; what changes nothing
/// notifies nobody. xReserve(size) makes room.
#define KEL_SET(id_, x, K)                                                                \
 private:                                                                                 \
  Kel::Set<K> x##_;                                                                       \
                                                                                          \
 public:                                                                                  \
  static constexpr Kel::Attr<K> x##Attr{id_};                                             \
  const Kel::Set<K>& x() const noexcept { return x##_; }                                  \
  bool x(const K& key) const noexcept { return x##_.contains(key); }                      \
  void x##Is(const K& key) { this->insertMember(x##_, key, id_); }                        \
  void x##Del(const K& key) { this->eraseMember(x##_, key, id_); }                        \
  void x##AllIs(const Kel::Set<K>& keys) { this->insertMembers(x##_, keys, id_); }        \
  void x##DelAll() { this->eraseMembers(x##_, id_); }                                     \
  void x##Reserve(std::size_t size) { x##_.reserve(size); }                               \
  static constexpr Kel::Row kelRow(Kel::Id<id_>) {                                        \
    return Kel::Impl::setRow<Self, K, &Self::x##_, &Self::x##Is, &Self::x##Del>(id_, #x); \
  }

/// A sorted map of values: x() is the whole, x(key) the value (a default one when absent),
/// xIs(key, value) writes and notifies also when the value is equal, xDel(key), xDelAll().
#define KEL_MAP(id_, x, keyName_, K, valueName_, V)                                   \
 private:                                                                             \
  Kel::ValueMap<K, V> x##_;                                                           \
                                                                                      \
 public:                                                                              \
  static constexpr Kel::Attr<K> x##Attr{id_};                                         \
  const Kel::ValueMap<K, V>& x() const noexcept { return x##_; }                      \
  V x(const K& key) const {                                                           \
    const V* const found = x##_.find(key);                                            \
    return found == nullptr ? V{} : *found;                                           \
  }                                                                                   \
  void x##Is(const K& key, const V& value) { this->putValue(x##_, key, value, id_); } \
  void x##Del(const K& key) { this->eraseValue(x##_, key, id_); }                     \
  void x##DelAll() { this->eraseValues(x##_, id_); }                                  \
  static constexpr Kel::Row kelRow(Kel::Id<id_>) {                                    \
    return Kel::Impl::mapRow<Self, K, V, &Self::x##_, &Self::x##Is, &Self::x##Del>(   \
        id_, #x, #keyName_, #valueName_);                                             \
  }

/// A collection of entities of type T under the key that each carries as `keyName`: x() is the
/// whole, x(key) one entry (null when absent), xIs(key) creates or returns, xDel(key), xDelAll().
#define KEL_ENTRY(id_, x, keyName_, T)                                                             \
 private:                                                                                          \
  using x##Kel = Kel::CollectionOf<T, &T::keyName_>;                                               \
  x##Kel::type x##_;                                                                               \
                                                                                                   \
 public:                                                                                           \
  static constexpr Kel::Attr<x##Kel::Key> x##Attr{id_};                                            \
  const x##Kel::type& x() const noexcept { return x##_; }                                          \
  Brix::Ptr<T> x(const auto& key) { return Brix::Ptr<T>(x##_.find(key)); }                         \
  Brix::Ptr<const T> x(const auto& key) const { return Brix::Ptr<const T>(x##_.find(key)); }       \
  Brix::Ptr<T> x##Is(const x##Kel::Key& key) {                                                     \
    return this->template createEntry<T, &T::keyName_>(x##_, key, id_);                            \
  }                                                                                                \
  void x##Del(const x##Kel::Key& key) { this->template eraseEntry<&T::keyName_>(x##_, key, id_); } \
  void x##DelAll() { this->template eraseEntries<&T::keyName_>(x##_, id_); }                       \
  static constexpr Kel::Row kelRow(Kel::Id<id_>) {                                                 \
    return Kel::Impl::entriesRow<Self, T, x##Kel::Key, &Self::x##_, &Self::x##Is, &Self::x##Del>(  \
        id_, #x, #keyName_);                                                                       \
  }

/// One entity that may be absent: x() reads (null when absent), xIs() creates or returns, xDel().
#define KEL_SINGLE(id_, x, T)                                                                \
 private:                                                                                    \
  Brix::Ptr<T> x##_;                                                                         \
                                                                                             \
 public:                                                                                     \
  static constexpr Kel::Attr<void> x##Attr{id_};                                             \
  const Brix::Ptr<T>& x() noexcept { return x##_; }                                          \
  Brix::Ptr<const T> x() const noexcept { return x##_; }                                     \
  Brix::Ptr<T> x##Is() { return this->createSingle(x##_, id_); }                             \
  void x##Del() { this->eraseSingle(x##_, id_); }                                            \
  static constexpr Kel::Row kelRow(Kel::Id<id_>) {                                           \
    return Kel::Impl::singleRow<Self, T, &Self::x##_, &Self::x##Is, &Self::x##Del>(id_, #x); \
  }
