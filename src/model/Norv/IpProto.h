#pragma once

#include <compare>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

namespace [[using gnu: visibility("default")]] Norv {

/// The number of a protocol above IP: 6 is TCP, 17 is UDP.
class IpProto {
 public:
  /// Protocol 0.
  constexpr IpProto() noexcept = default;
  constexpr IpProto(std::uint8_t value) noexcept : value_(value) {}  ///< any number is one

  constexpr std::uint8_t value() const noexcept { return value_; }  ///< the number

  /// The number in decimal.
  std::string stringValue() const;

  /// Appends the number in decimal to `out`.
  void appendTo(std::string& out) const;

  /// Spreads over all 32 bits, so that a table may take any of them. Not stable between versions.
  constexpr std::uint32_t hash() const noexcept { return value_ * 0x9e3779b1U; }

  friend constexpr auto operator<=>(const IpProto&, const IpProto&) noexcept = default;

 private:
  std::uint8_t value_ = 0;
};

static_assert(sizeof(IpProto) == 1);

std::ostream& operator<<(std::ostream& out, const IpProto& value);

/// Appends the printed form of `value`.
inline void kelAppend(std::string& out, const IpProto& value) { value.appendTo(out); }

/// Reads a decimal number from 0 to 255 without sign and leading zeros. On bad text returns false,
/// says in `why` what was found and what was expected, and leaves `value` as it was.
bool kelParse(std::string_view text, IpProto& value, std::string& why);

}  // namespace Norv

template <>
struct std::hash<Norv::IpProto> {
  constexpr std::size_t operator()(const Norv::IpProto& value) const noexcept {
    return value.hash();
  }
};
