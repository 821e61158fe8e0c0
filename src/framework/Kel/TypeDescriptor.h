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
  using Visit = void(void* context, const void* key, const void* value);

  Brix::AttrId id = 0;
  const char* name = "";
  RowKind kind = RowKind::value;
  const char* keyName = "";  ///< entries, children: the key attribute of an entry; map: of the key
  const char* valueName = "";  ///< map: what the value is called
  const ValueType& (*key)() = nullptr;
  const ValueType& (*value)() = nullptr;
  const TypeDescriptor& (*target)() = nullptr;  ///< type of the entity or entities reached

  const void* (*find)(const PtrInterface& object, const void* key) = nullptr;  ///< null: absent
  /// Writes a value; for a set, inserts the key; for entities, creates or returns (the entity).
  void* (*put)(PtrInterface& object, const void* key, const void* value) = nullptr;
  void (*erase)(PtrInterface& object, const void* key) = nullptr;
  void (*walk)(const PtrInterface& object, void* context, Visit* visit) = nullptr;
  std::size_t (*size)(const PtrInterface& object) = nullptr;
};

/// What is known of a type at run time.
struct TypeDescriptor {
  const char* name = "";                         ///< with its namespace
  std::span<const Row> rows;                     ///< in the order of their ids
  std::span<const std::string_view> operations;  ///< callable operations of a state machine
  std::span<const Brix::AttrId> published;       ///< what it tells its notifieeList()
  /// What observers of an object of this type subscribe to; null: it has nothing to subscribe to.
  Brix::Publisher (*publisher)(const PtrInterface& object) = nullptr;

  const Row* row(std::string_view name_) const;
  const Row* row(Brix::AttrId id) const;
};

/// A library's part of the type system: its types, each with a fixed index.
///
/// A module is reached through a function with a local static, and a type reaches its module
/// through that function: no order of static initialisation can be wrong.
class Module {
 public:
  using TypeFunction = const TypeDescriptor& (*)();
  constexpr Module(const char* name, std::span<const TypeFunction> types) noexcept
      : name_(name), types_(types) {}

  const char* name() const noexcept { return name_; }
  std::size_t size() const noexcept { return types_.size(); }
  const TypeDescriptor& type(std::size_t index) const { return types_[index](); }

 private:
  const char* name_;
  std::span<const TypeFunction> types_;
};

/// Names a type: the module that defines it and the type's index in it.
struct FwkType {
  const Module* module = nullptr;
  std::uint16_t index = 0;

  const TypeDescriptor& descriptor() const { return module->type(index); }
  bool operator==(const FwkType&) const noexcept = default;
};

}  // namespace Kel
