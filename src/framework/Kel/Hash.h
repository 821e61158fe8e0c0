#pragma once

#include <concepts>
#include <cstdint>
#include <string_view>
#include <type_traits>

#include "Brix/String.h"

namespace [[using gnu: visibility("default")]] Kel {

/// Spreads `value` over 32 bits, each of which depends on every bit of it.
constexpr std::uint32_t hashOfNumber(std::uint64_t value) noexcept {
  value ^= value >> 33U;
  value *= 0xFF51'AFD7'ED55'8CCDU;
  value ^= value >> 33U;
  value *= 0xC4CE'B9FE'1A85'EC53U;
  return static_cast<std::uint32_t>(value ^ (value >> 32U));
}

/// The hash under which the collections file a key; keys that compare equal have equal hashes.
///
/// A type with a member `hash()` decides for itself, and must spread over all 32 bits. Text of
/// every kind hashes as a Brix::String of the same bytes does, so that a look-up needs no string of
/// its own. Numbers and enumerations are mixed here.
template <class Key>
constexpr std::uint32_t hashOf(const Key& key) noexcept {
  if constexpr (requires {
                  { key.hash() } -> std::same_as<std::uint32_t>;
                }) {
    return key.hash();
  } else if constexpr (std::is_convertible_v<const Key&, std::string_view>) {
    return Brix::String::hashOf(key);
  } else if constexpr (std::is_enum_v<Key>) {
    return hashOfNumber(static_cast<std::uint64_t>(key));
  } else {
    static_assert(std::is_integral_v<Key>, "a key needs a member hash() or must be a number");
    return hashOfNumber(static_cast<std::uint64_t>(key));
  }
}

}  // namespace Kel
