#pragma once

#include <charconv>
#include <concepts>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>

#include "Brix/String.h"

namespace [[using gnu: visibility("default")]] Kel {

using String = Brix::String;  ///< that of all names

/// Time since the epoch of the framework's clock, in seconds; a plain double.
using Seconds = double;

// The text protocol of value types. A type of our own offers two free functions beside itself,
//   void kelAppend(std::string& out, const T& value);                          printed form
//   bool kelParse(std::string_view text, T& value, std::string& why);          never throws
// and an enumeration offers its names instead: kelNames(T), in the order of its ordinals. These
// two functions below cover those and the language's own types in one way.

template <class T>
concept NamedEnum = std::is_enum_v<T> && requires(T value) {
  kelNames(value).size();
};

/// Appends the printed form of `value`: true and false, decimal digits, seconds with six digits,
/// the name of an enumerator (or the number of an ordinal without a name), a type's own form.
template <class T>
void appendValue(std::string& out, const T& value) {
  if constexpr (std::same_as<T, bool>) {
    out += value ? "true" : "false";
  } else if constexpr (std::integral<T>) {
    char digits[std::numeric_limits<T>::digits10 + 3];
    out.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
  } else if constexpr (std::same_as<T, Seconds>) {
    char digits[330];
    out.append(digits, std::to_chars(digits, digits + sizeof digits, value + 0.0,
                                     std::chars_format::fixed, 6)
                           .ptr);
  } else if constexpr (NamedEnum<T>) {
    const auto ordinal = static_cast<std::underlying_type_t<T>>(value);
    if (static_cast<std::size_t>(ordinal) < kelNames(value).size()) {
      out += kelNames(value)[static_cast<std::size_t>(ordinal)];
    } else {
      appendValue(out, static_cast<unsigned>(ordinal));
    }
  } else {
    kelAppend(out, value);
  }
}

namespace Impl {
bool parseUnsigned(std::string_view text, unsigned long long largest, unsigned long long& value,
                   std::string& why);
bool parseBool(std::string_view text, bool& value, std::string& why);
bool parseSeconds(std::string_view text, Seconds& value, std::string& why);
/// Says that `text` is none of `names`, and which there are.
std::string whyNoName(std::string_view text, const std::string_view* names, std::size_t count);
}  // namespace Impl

/// Types that can be read from text; a record is read field by field instead.
template <class T>
concept Parsable = std::same_as<T, bool> || std::unsigned_integral<T> || std::same_as<T, Seconds> ||
    NamedEnum<T> || requires(T& value, std::string& why) {
  { kelParse(std::string_view(), value, why) } -> std::same_as<bool>;
};

/// Reads the printed form; false leaves `value` as it was and says in `why` what was expected.
template <Parsable T>
bool parseValue(std::string_view text, T& value, std::string& why) {
  if constexpr (std::same_as<T, bool>) {
    return Impl::parseBool(text, value, why);
  } else if constexpr (std::unsigned_integral<T>) {
    unsigned long long number = 0;
    if (!Impl::parseUnsigned(text, std::numeric_limits<T>::max(), number, why)) {
      return false;
    }
    value = static_cast<T>(number);
    return true;
  } else if constexpr (std::same_as<T, Seconds>) {
    return Impl::parseSeconds(text, value, why);
  } else if constexpr (NamedEnum<T>) {
    const auto& names = kelNames(T{});
    for (std::size_t i = 0; i < names.size(); ++i) {
      if (names[i] == text) {
        value = static_cast<T>(i);
        return true;
      }
    }
    why = Impl::whyNoName(text, names.data(), names.size());
    return false;
  } else {
    return kelParse(text, value, why);
  }
}

/// The printed form by itself.
template <class T>
std::string textOf(const T& value) {
  std::string out;
  appendValue(out, value);
  return out;
}

/// How many single-character edits turn one text into the other; for "did you mean".
std::size_t editDistance(std::string_view a, std::string_view b);

}  // namespace Kel
