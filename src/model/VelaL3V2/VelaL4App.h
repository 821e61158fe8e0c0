#pragma once

#include <compare>
#include <cstdint>
#include <iosfwd>
#include <string>

#include "Kel/Hash.h"

namespace [[using gnu: visibility("default")]] VelaL3V2 {

/// A layer-4 application: a port of an IP protocol.
struct VelaL4App {
  std::uint16_t port = 0;     ///< of TCP, UDP and the like
  std::uint8_t protocol = 0;  ///< the number of the IP protocol

  std::uint32_t hash() const noexcept {
    return Kel::hashOfNumber(port | std::uint64_t{protocol} << 16U);
  }
  bool operator==(const VelaL4App&) const noexcept = default;
  auto operator<=>(const VelaL4App&) const noexcept = default;
};

/// "443/6": port and protocol.
void kelAppend(std::string& out, const VelaL4App& app);
std::ostream& operator<<(std::ostream& out, const VelaL4App& app);

}  // namespace VelaL3V2
