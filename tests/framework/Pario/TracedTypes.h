#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

#include "Kel/ValueType.h"

namespace ParioTest {

/// Copied as memory, with a printed form of its own.
struct Prefix {
  std::array<std::uint8_t, 4> address;
  std::uint8_t length;
  friend auto operator<=>(const Prefix&, const Prefix&) = default;
};
void kelAppend(std::string& out, const Prefix& value);

/// An enumeration with names, printed by name.
enum class Colour : std::uint8_t { red, green };
constexpr auto kelNames(Colour /*type*/) { return std::array<std::string_view, 2>{"red", "green"}; }

/// An enumeration with a printed form of its own.
enum class Shape : std::uint16_t { round = 500 };
void kelAppend(std::string& out, const Shape& value);

/// A name that wraps a string.
class Name {
 public:
  explicit Name(std::string_view text) : text_(text) {}
  const Kel::String& stringValue() const noexcept { return text_; }

 private:
  Kel::String text_;
};

/// Has a descriptor, but is not on the list of value types.
struct Unlisted {
  std::uint16_t value;
  friend auto operator<=>(const Unlisted&, const Unlisted&) = default;
};
void kelAppend(std::string& out, const Unlisted& value);

}  // namespace ParioTest

namespace Kel {
template <>
const ValueType& valueTypeOf<ParioTest::Prefix>();
template <>
const ValueType& valueTypeOf<ParioTest::Colour>();
template <>
const ValueType& valueTypeOf<ParioTest::Shape>();
template <>
const ValueType& valueTypeOf<ParioTest::Unlisted>();
}  // namespace Kel
