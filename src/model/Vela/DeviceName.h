#pragma once

#include <compare>
#include <concepts>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

#include "Brix/String.h"

namespace [[using gnu: visibility("default")]] Vela {

/// The name of a device, or of a pair of devices, as the version-2 collections are keyed by it: the
/// version-1 name unchanged, of any length.
class DeviceName {
 public:
  /// The empty name.
  DeviceName() noexcept = default;

  // Deliberate: implicit, because every string is a device name.
  DeviceName(Brix::String name) noexcept : name_(std::move(name)) {}  ///< any text is one
  DeviceName(std::string_view name) : name_(name) {}                  ///< any text is one
  DeviceName(const std::string& name) : name_(name) {}                ///< any text is one
  DeviceName(const char* name) : name_(name) {}                       ///< any text is one

  const Brix::String& stringValue() const noexcept { return name_; }

  /// The hash of the string.
  std::uint32_t hash() const noexcept { return name_.hash(); }

  friend bool operator==(const DeviceName&, const DeviceName&) noexcept = default;

  // A template, because a name and a text convert into each other's place equally well.
  template <typename Text>
  requires std::convertible_to<const Text&, std::string_view>
  friend bool operator==(const DeviceName& a, const Text& b) noexcept {
    return a.name_ == std::string_view(b);
  }

  /// By bytes, as unsigned numbers.
  friend std::strong_ordering operator<=>(const DeviceName&, const DeviceName&) noexcept = default;

 private:
  Brix::String name_;
};

static_assert(sizeof(DeviceName) == sizeof(Brix::String));

std::ostream& operator<<(std::ostream& out, const DeviceName& value);

/// Appends the name.
inline void kelAppend(std::string& out, const DeviceName& value) {
  out += value.stringValue().view();
}

/// Takes any text; never returns false.
bool kelParse(std::string_view text, DeviceName& value, std::string& why);

}  // namespace Vela

template <>
struct std::hash<Vela::DeviceName> {
  std::size_t operator()(const Vela::DeviceName& value) const noexcept { return value.hash(); }
};
