#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

#include "Brix/String.h"

namespace [[using gnu: visibility("default")]] L3 {

/// The name of a VRF on its device: any text of 0 to 100 bytes.
///
/// A constructor that is given more raises Kel::RangeException with the text "Kel::String::bytes >
/// maxLength() not allowed". Explicit, because not every string is a VRF name.
class VrfName {
 public:
  /// The longest name, in bytes, not in characters.
  static constexpr std::size_t maxLength() { return 100; }

  /// The empty name.
  VrfName() noexcept = default;
  /// Raises when too long.
  explicit VrfName(Brix::String name) : name_(std::move(name)) { checkLength(); }
  /// Raises when too long.
  explicit VrfName(std::string_view name) : VrfName(Brix::String(name)) {}
  /// Raises when too long.
  explicit VrfName(const std::string& name) : VrfName(Brix::String(name)) {}
  explicit VrfName(const char* name) : VrfName(Brix::String(name)) {}  ///< Raises when too long.

  const Brix::String& stringValue() const noexcept { return name_; }

  /// The hash of the string.
  std::uint32_t hash() const noexcept { return name_.hash(); }

  friend bool operator==(const VrfName&, const VrfName&) noexcept = default;
  friend bool operator==(const VrfName& a, std::string_view b) noexcept { return a.name_ == b; }

  /// By bytes, as unsigned numbers.
  friend std::strong_ordering operator<=>(const VrfName&, const VrfName&) noexcept = default;

 private:
  void checkLength() const;

  Brix::String name_;
};

static_assert(sizeof(VrfName) == sizeof(Brix::String));

std::ostream& operator<<(std::ostream& out, const VrfName& value);

/// Appends the name.
inline void kelAppend(std::string& out, const VrfName& value) { out += value.stringValue().view(); }

/// Takes any text of at most VrfName::maxLength() bytes. On a longer one returns false, says in
/// `why` what was found and what was expected, and leaves `value` as it was.
bool kelParse(std::string_view text, VrfName& value, std::string& why);

}  // namespace L3

template <>
struct std::hash<L3::VrfName> {
  std::size_t operator()(const L3::VrfName& value) const noexcept { return value.hash(); }
};
