#pragma once

#include <cstddef>

#include "Kel/ValueType.h"

namespace [[using gnu: visibility("default")]] Kel {

/// Puts value types on the list that forEachValueType walks; one static object per source file.
class ValueTypeRegistration {
 public:
  template <class... Types>
  explicit ValueTypeRegistration(const Types&... types) {
    (add(types), ...);
  }

 private:
  static void add(const ValueType& type);
};

/// The descriptor of T; `fields` for records. For the source file that specialises valueTypeOf.
template <class T>
constexpr ValueType describeValue(const char* name, Encoding encoding,
                                  std::span<const Field> fields = {}) {
  static_assert(sizeof(T) <= kLargestValue, "an AnyValue has no room for it");
  static_assert(alignof(T) <= 16, "an AnyValue is not aligned for it");
  ValueType type{};
  type.name = name;
  type.encoding = encoding;
  type.size = sizeof(T);
  type.align = alignof(T);
  type.trivial = std::is_trivially_copyable_v<T>;
  type.append = [](std::string& out, const void* value) {
    appendValue(out, *static_cast<const T*>(value));
  };
  if constexpr (Parsable<T>) {
    type.parse = [](std::string_view text, void* value, std::string& why) {
      return parseValue(text, *static_cast<T*>(value), why);
    };
  }
  type.compare = [](const void* a, const void* b) {
    const T& left = *static_cast<const T*>(a);
    const T& right = *static_cast<const T*>(b);
    return left < right ? -1 : right < left ? 1 : 0;
  };
  type.absent = [](const void* value) {
    if constexpr (std::is_same_v<T, Seconds>) {
      return isNoTime(*static_cast<const Seconds*>(value));
    } else if constexpr (requires(const T& t) { kelAbsent(t); }) {
      return kelAbsent(*static_cast<const T*>(value));
    } else {
      static_cast<void>(value);
      return false;
    }
  };
  type.construct = [](void* place) { ::new (place) T(); };
  type.assign = [](void* to, const void* from) {
    *static_cast<T*>(to) = *static_cast<const T*>(from);
  };
  type.destroy = [](void* value) { static_cast<T*>(value)->~T(); };
  type.fields = fields;
  return type;
}

}  // namespace Kel
