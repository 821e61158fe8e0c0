#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

#include "Kel/Text.h"

namespace [[using gnu: visibility("default")]] VelaPolicyMonitor {

/// Names a high-availability pair of two firewalls as one device: the encoded set of both names,
/// the lower one first, followed by the marker "_HAPair".
class HAPairDeviceId {
 public:
  static constexpr std::string_view kMarker = "_HAPair";  ///< what every pair id ends with

  HAPairDeviceId() noexcept = default;
  /// Any text; whether it is a pair id is not checked.
  explicit HAPairDeviceId(const Kel::String& value) noexcept : value_(value) {}

  /// The pair's id; the same in whichever order the firewalls are given.
  static Kel::String encode(const Kel::String& fw1Name, const Kel::String& fw2Name);
  /// Whether `deviceId` ends with the marker.
  static bool isHAPairDeviceId(const Kel::String& deviceId) noexcept;

  const Kel::String& value() const noexcept { return value_; }  ///< the whole id
  /// The lower of the two names. The marker's length is cut from the end without looking: callers
  /// have checked with isHAPairDeviceId. Empty for an id that is not longer than the marker.
  Kel::String getFw1Name() const { return memberName(0); }
  /// The higher of the two names; likewise.
  Kel::String getFw2Name() const { return memberName(1); }

  std::uint32_t hash() const noexcept { return value_.hash(); }
  explicit operator bool() const noexcept { return !value_.empty(); }
  bool operator==(const HAPairDeviceId&) const noexcept = default;
  bool operator<(const HAPairDeviceId& other) const noexcept { return value_ < other.value_; }

 private:
  Kel::String memberName(std::uint32_t index) const;

  Kel::String value_;
};

void kelAppend(std::string& out, const HAPairDeviceId& id);
bool kelParse(std::string_view text, HAPairDeviceId& value, std::string& why);
std::ostream& operator<<(std::ostream& out, const HAPairDeviceId& id);

}  // namespace VelaPolicyMonitor
