#pragma once

#include <compare>
#include <cstdint>
#include <cstring>
#include <iosfwd>
#include <string>
#include <string_view>

#include "Norv/IpGenAddr.h"

namespace [[using gnu: visibility("default")]] Norv {

/// A range of addresses that share their first `length` bits. Eighteen bytes without alignment.
///
/// Host bits are always zero: 10.1.2.3/8 is 10.0.0.0/8, so that two spellings are one prefix.
class IpGenPrefix {
 public:
  /// The IPv4 prefix 0.0.0.0/0.
  IpGenPrefix() noexcept = default;

  /// Reads an address, a slash and a length in bits without leading zeros: 10.1.0.0/16. Raises
  /// Kel::RangeException for all else, also for a length above 32 (IPv4) or 128 (IPv6).
  IpGenPrefix(std::string_view text);

  /// The prefix of `length` bits that holds `address`. Raises Kel::RangeException when `length` is
  /// above the width of the address.
  IpGenPrefix(const IpGenAddr& address, unsigned length);

  /// The first address, whose host bits are zero.
  const IpGenAddr& address() const noexcept { return address_; }

  /// The number of shared bits: 0 to 32 for IPv4, 0 to 128 for IPv6.
  unsigned length() const noexcept { return length_; }

  IpGenAddr::Family family() const noexcept { return address_.family(); }  ///< that of its address
  bool isIpv4() const noexcept { return address_.isIpv4(); }  ///< whether it is 0 to 32 bits long
  bool isIpv6() const noexcept { return address_.isIpv6(); }  ///< whether it is 0 to 128 bits long

  /// Whether `address` lies in the prefix. An address of the other family never does.
  bool contains(const IpGenAddr& address) const noexcept;

  /// The printed form: the address as an address prints, a slash, the length.
  std::string stringValue() const;

  /// Appends the printed form to `out`.
  void appendTo(std::string& out) const;

  /// Spreads over all 32 bits, so that a table may take any of them. Not stable between versions.
  std::uint32_t hash() const noexcept { return address_.seededHash(length_ + 1U); }

  friend bool operator==(const IpGenPrefix& a, const IpGenPrefix& b) noexcept {
    return std::memcmp(&a, &b, sizeof(IpGenPrefix)) == 0;
  }

  /// IPv4 before IPv6, then by the first address, then the shorter length first.
  friend std::strong_ordering operator<=>(const IpGenPrefix& a, const IpGenPrefix& b) noexcept {
    const std::strong_ordering order = a.address_ <=> b.address_;
    return order != 0 ? order : a.length_ <=> b.length_;
  }

 private:
  IpGenAddr address_;
  std::uint8_t length_ = 0;
};

static_assert(sizeof(IpGenPrefix) == 18 && alignof(IpGenPrefix) == 1);

std::ostream& operator<<(std::ostream& out, const IpGenPrefix& value);

/// Appends the printed form of `value`.
inline void kelAppend(std::string& out, const IpGenPrefix& value) { value.appendTo(out); }

/// Reads what the constructor from text reads. On bad text returns false, says in `why` what was
/// found and what was expected, and leaves `value` as it was.
bool kelParse(std::string_view text, IpGenPrefix& value, std::string& why);

}  // namespace Norv

template <>
struct std::hash<Norv::IpGenPrefix> {
  std::size_t operator()(const Norv::IpGenPrefix& value) const noexcept { return value.hash(); }
};
