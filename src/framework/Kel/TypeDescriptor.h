#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "Brix/Subscriber.h"

namespace [[using gnu: visibility("default")]] Brix {
class Publisher;
}

namespace [[using gnu: visibility("default")]] Kel {

class PtrInterface;
struct TypeDescriptor;
struct ValueType;

/// What an attribute is.
enum class RowKind : std::uint8_t {
  constant,  ///< set at construction: keys, and what a state machine was given
  value,     ///< read and written
  set,       ///< keys without values
  map,       ///< keys with values
  entries,   ///< a keyed collection of entities
  single,    ///< one entity that may be absent
  object,    ///< an object that a state machine was given and does not watch
  input,     ///< an object that a state machine watches
  children,  ///< a state machine's children, by key
};

/// The name of a kind, for dumps and messages.
const char* nameOf(RowKind kind);

/// One attribute of a type: its name and number, and how to reach it in an object whose type is
/// not known. Every operation takes the object, and the key where the attribute has keys (null
/// where it has none); an operation is null where it makes no sense.
///
/// What `find` returns and `walk` hands out as `value` is, by kind: the value itself (constant,
/// value, map), the key (set), or the `PtrInterface` of the object (entries, single, object,
/// input, children).
struct Row {
  /// What a walk calls; `context` is that of the walk.
  using Visit = void(void* context, const void* key, const void* value);

  Brix::AttrId id = 0;            ///< fixed for ever
  const char* name = "";          ///< as in the code
  RowKind kind = RowKind::value;  ///< what it is, and so what can be done with it
  const char* keyName = "";  ///< entries, children: the key attribute of an entry; map: of the key
  const char* valueName = "";                   ///< map: what the value is called
  const ValueType& (*key)() = nullptr;          ///< type of the keys; null: it has none
  const ValueType& (*value)() = nullptr;        ///< type of the value; null: it has none
  const TypeDescriptor& (*target)() = nullptr;  ///< type of the entity or entities reached

  const void* (*find)(const PtrInterface& object, const void* key) = nullptr;  ///< null: absent
  /// Writes a value; for a set, inserts the key; for entities, creates or returns (the entity).
  void* (*put)(PtrInterface& object, const void* key, const void* value) = nullptr;
  void (*erase)(PtrInterface& object, const void* key) = nullptr;  ///< absent: nothing
  /// Calls `visit` for each.
  void (*walk)(const PtrInterface& object, void* context, Visit* visit) = nullptr;
  std::size_t (*size)(const PtrInterface& object) = nullptr;  ///< how many
};

/// What is known of a type at run time.
struct TypeDescriptor {
  const char* name = "";                         ///< with its namespace
  std::span<const Row> rows;                     ///< in the order of their ids
  std::span<const std::string_view> operations;  ///< callable operations of a state machine
  std::span<const Brix::AttrId> published;       ///< what it tells its notifieeList()
  /// What observers of an object of this type subscribe to; null: it has nothing to subscribe to.
  Brix::Publisher (*publisher)(const PtrInterface& object) = nullptr;

  const Row* row(std::string_view name_) const;  ///< null: no such attribute
  const Row* row(Brix::AttrId id) const;         ///< null: no such attribute
};

/// A library's part of the type system: its types, each with a fixed index.
///
/// A module is reached through a function with a local static, and a type reaches its module
/// through that function: no order of static initialisation can be wrong.
class Module {
 public:
  using TypeFunction = const TypeDescriptor& (*)();  ///< gives the descriptor of one type
  /// `types` in the order of their indices; both have to live as long.
  constexpr Module(const char* name, std::span<const TypeFunction> types) noexcept
      : name_(name), types_(types) {}

  const char* name() const noexcept { return name_; }  ///< of the module
  std::size_t size() const noexcept { return types_.size(); }
  /// The type with this index.
  const TypeDescriptor& type(std::size_t index) const { return types_[index](); }

 private:
  const char* name_;
  std::span<const TypeFunction> types_;
};

/// Names a type: the module that defines it and the type's index in it.
struct FwkType {
  const Module* module = nullptr;  ///< that defines the type
  std::uint16_t index = 0;         ///< of the type in its module

  const TypeDescriptor& descriptor() const { return module->type(index); }  ///< The type itself.
  bool operator==(const FwkType&) const noexcept = default;
};

}  // namespace Kel
