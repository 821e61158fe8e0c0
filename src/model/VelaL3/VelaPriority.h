#pragma once

#include <compare>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

#include "Kel/Hash.h"

namespace [[using gnu: visibility("default")]] VelaL3 {

/// A rule's priority, 10000 (lowest) to 30000 (highest). Rules are kept in its order.
class VelaPriority {
 public:
  static constexpr std::uint32_t min = 10000;  ///< the lowest: that of default rules
  static constexpr std::uint32_t max = 30000;  ///< the highest: it is looked at first
  /// Collections under this key are kept sorted.
  static constexpr bool kelOrdered = true;

  constexpr VelaPriority() noexcept = default;
  /// Raises Kel::RangeException outside min to max.
  explicit VelaPriority(std::uint32_t value);
  /// Any value, also one outside the range: for deserialisers and tests.
  static constexpr VelaPriority unchecked(std::uint32_t value) noexcept {
    VelaPriority priority;
    priority.value_ = value;
    return priority;
  }

  /// 10000 to 30000, unless unchecked.
  constexpr std::uint32_t value() const noexcept { return value_; }
  constexpr std::uint32_t hash() const noexcept { return Kel::hashOfNumber(value_); }
  constexpr bool isEq(const VelaPriority& other) const noexcept { return value_ == other.value_; }
  constexpr bool operator==(const VelaPriority&) const noexcept = default;
  constexpr auto operator<=>(const VelaPriority&) const noexcept = default;

 private:
  std::uint32_t value_ = min;
};

void kelAppend(std::string& out, VelaPriority priority);
std::ostream& operator<<(std::ostream& out, VelaPriority priority);
bool kelParse(std::string_view text, VelaPriority& value, std::string& why);

}  // namespace VelaL3
