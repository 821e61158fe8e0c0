#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace [[using gnu: visibility("default")]] VelaL3 {

/// How the policy of a rule is applied.
enum class VelaPolicyModifier : std::uint8_t { symmetric, stateless };

constexpr auto kelNames(VelaPolicyModifier /*type*/) {
  return std::array<std::string_view, 2>{"symmetric", "stateless"};
}

}  // namespace VelaL3
