#pragma once

#include <cmath>
#include <cstdint>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

#include "Kel/Text.h"

namespace [[using gnu: visibility("default")]] Kel {

/// How a value of some type is written in RFC 7951 JSON.
enum class Encoding : std::uint8_t {
  string,   ///< quoted: text, addresses, prefixes, names of enumerators, bits
  number,   ///< bare digits: integers up to 32 bits
  boolean,  ///< true and false
  decimal,  ///< quoted digits (decimal64): seconds
  record,   ///< an object with one member per field
};

struct ValueType;

/// One field of a record-like value type.
struct Field {
  const char* name;            ///< as in the code
  const ValueType& (*type)();  ///< of its value
  std::size_t offset;          ///< in bytes, in the record
};

/// A value type with its type forgotten: what a program needs to hold, print, parse and compare
/// values that it does not know. There is one object per type, at an address of its own.
struct ValueType {
  const char* name;     ///< as written in the code, with its namespace
  Encoding encoding;    ///< in JSON
  std::uint16_t size;   ///< in bytes
  std::uint16_t align;  ///< in bytes
  bool trivial;         ///< its bytes are the value: it may be copied as memory
  void (*append)(std::string& out, const void* value);                  ///< the text form
  bool (*parse)(std::string_view text, void* value, std::string& why);  ///< false: says in `why`
  int (*compare)(const void* a, const void* b);  ///< below, equal to or above 0
  bool (*absent)(const void* value);             ///< the value that stands for "never set"
  void (*construct)(void* place);                ///< a default value
  void (*assign)(void* to, const void* from);    ///< both are constructed
  void (*destroy)(void* value);                  ///< leaves the place
  std::span<const Field> fields;                 ///< of a record; empty otherwise
};

/// A time that nobody has written yet. It equals 0 and is told apart by its sign, so that "never
/// stamped" needs no memory of its own; `writtenTime` turns any written time into another one.
inline constexpr Seconds kNoTime = -0.0;
inline Seconds writtenTime(Seconds time) { return time + 0.0; }  ///< `time`, never kNoTime
/// Whether it was never written.
inline bool isNoTime(Seconds time) { return time == 0 && std::signbit(time); }

/// The descriptor of T; specialised (by KEL_VALUE_TYPE, in one source file) for each value type.
template <class T>
const ValueType& valueTypeOf();
template <>
const ValueType& valueTypeOf<bool>();
template <>
const ValueType& valueTypeOf<std::uint8_t>();
template <>
const ValueType& valueTypeOf<std::uint16_t>();
template <>
const ValueType& valueTypeOf<std::uint32_t>();
template <>
const ValueType& valueTypeOf<Seconds>();
template <>
const ValueType& valueTypeOf<String>();

/// Calls `each` for every value type of the process.
void forEachValueType(void (*each)(void* context, const ValueType& type), void* context);

/// The size of the largest value type, in bytes.
inline constexpr std::size_t kLargestValue = 48;

/// A value of a type known only by its descriptor.
class AnyValue {
 public:
  explicit AnyValue(const ValueType& type);  ///< a default value of this type
  ~AnyValue();
  AnyValue(const AnyValue&) = delete;
  AnyValue& operator=(const AnyValue&) = delete;

  const ValueType& type() const noexcept { return type_; }  ///< its type
  void* get() noexcept { return place_; }                   ///< the value
  const void* get() const noexcept { return place_; }       ///< the value

 private:
  const ValueType& type_;
  alignas(16) std::byte place_[kLargestValue];
};

}  // namespace Kel
