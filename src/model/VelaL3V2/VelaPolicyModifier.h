#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <string_view>

namespace [[using gnu: visibility("default")]] VelaL3V2 {

/// How the policy of a rule is applied.
enum class VelaPolicyModifier : std::uint8_t { symmetric, stateless };

constexpr auto kelNames(VelaPolicyModifier /*type*/) {
  return std::array<std::string_view, 2>{"symmetric", "stateless"};
}

/// The name, or the number of an ordinal that has none.
std::ostream& operator<<(std::ostream& out, VelaPolicyModifier value);

}  // namespace VelaL3V2
