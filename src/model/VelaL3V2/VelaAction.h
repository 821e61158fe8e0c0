#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <string_view>

namespace [[using gnu: visibility("default")]] VelaL3V2 {

/// What a rule does with the traffic that it matches.
enum class VelaAction : std::uint8_t { forward, drop, redirect };

constexpr auto kelNames(VelaAction /*type*/) {
  return std::array<std::string_view, 3>{"forward", "drop", "redirect"};
}

/// The name, or the number of an ordinal that has none.
std::ostream& operator<<(std::ostream& out, VelaAction value);

}  // namespace VelaL3V2
