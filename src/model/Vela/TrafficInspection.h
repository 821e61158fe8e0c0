#pragma once

#include <compare>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

namespace [[using gnu: visibility("default")]] Vela {

/// Which traffic a device inspects, as a set of bits: TrafficInspection{0x02} is unified
/// inspection.
struct TrafficInspection {
  /// Bit 0 is local, bit 1 unified; the other bits are kept and compared, and have no name.
  std::uint8_t value = 0;

  constexpr bool local() const noexcept { return (value & 0x01U) != 0; }  ///< whether bit 0 is set
  /// Whether bit 1 is set.
  constexpr bool unified() const noexcept { return (value & 0x02U) != 0; }

  /// The names of the set bits in ascending order with a blank between them: "local unified", or
  /// the empty text for none.
  std::string stringValue() const;

  /// Spreads over all 32 bits, so that a table may take any of them. Not stable between versions.
  constexpr std::uint32_t hash() const noexcept { return value * 0x9e3779b1U; }

  /// By value.
  friend constexpr auto operator<=>(const TrafficInspection&,
                                    const TrafficInspection&) noexcept = default;
};

static_assert(sizeof(TrafficInspection) == 1);

std::ostream& operator<<(std::ostream& out, const TrafficInspection& value);

/// Appends the names of the set bits.
void kelAppend(std::string& out, const TrafficInspection& value);

/// Reads the names of bits in any order with blanks between them; no name sets no bit. On an
/// unknown or a repeated name returns false, says in `why` what was found and what was expected,
/// and leaves `value` as it was.
bool kelParse(std::string_view text, TrafficInspection& value, std::string& why);

}  // namespace Vela

template <>
struct std::hash<Vela::TrafficInspection> {
  constexpr std::size_t operator()(const Vela::TrafficInspection& value) const noexcept {
    return value.hash();
  }
};
