#pragma once

#include <compare>
#include <cstdint>
#include <iosfwd>
#include <string>

#include "Kel/Hash.h"

namespace [[using gnu: visibility("default")]] VelaL3 {

/// The ports from `first` to `last` of an IP protocol; their order is not checked.
struct VelaL4AppRange {
  std::uint16_t first = 0;    ///< the lowest port
  std::uint16_t last = 0;     ///< the highest port, which is in the range too
  std::uint8_t protocol = 0;  ///< the number of the IP protocol

  std::uint32_t hash() const noexcept {
    return Kel::hashOfNumber(first | std::uint64_t{last} << 16U | std::uint64_t{protocol} << 32U);
  }
  bool operator==(const VelaL4AppRange&) const noexcept = default;
  auto operator<=>(const VelaL4AppRange&) const noexcept = default;
};

/// "8000-8080/6": first and last port, and protocol.
void kelAppend(std::string& out, const VelaL4AppRange& range);
std::ostream& operator<<(std::ostream& out, const VelaL4AppRange& range);

}  // namespace VelaL3
