#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace [[using gnu: visibility("default")]] VelaL3 {

/// What a rule does with the traffic that it matches.
enum class VelaAction : std::uint8_t { forward, drop, redirect };

constexpr auto kelNames(VelaAction /*type*/) {
  return std::array<std::string_view, 3>{"forward", "drop", "redirect"};
}

}  // namespace VelaL3
