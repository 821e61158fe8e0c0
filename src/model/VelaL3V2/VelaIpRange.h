#pragma once

#include <compare>
#include <cstdint>
#include <iosfwd>
#include <string>

#include "Kel/Hash.h"
#include "Norv/IpGenAddr.h"

namespace [[using gnu: visibility("default")]] VelaL3V2 {

/// The addresses from `first` to `last`; their order is not checked.
struct VelaIpRange {
  Norv::IpGenAddr first;  ///< the lowest address
  Norv::IpGenAddr last;   ///< the highest address, which is in the range too

  std::uint32_t hash() const noexcept {
    return Kel::hashOfNumber(first.hash() | std::uint64_t{last.hash()} << 32U);
  }
  /// " IP range: 10.1.0.1-10.1.0.9", led by the blank and the label.
  std::string stringValue() const;

  bool operator==(const VelaIpRange&) const noexcept = default;
  auto operator<=>(const VelaIpRange&) const noexcept = default;
};

void kelAppend(std::string& out, const VelaIpRange& range);
std::ostream& operator<<(std::ostream& out, const VelaIpRange& range);

}  // namespace VelaL3V2
