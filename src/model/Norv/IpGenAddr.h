#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <cstring>
#include <iosfwd>
#include <span>
#include <string>
#include <string_view>

namespace [[using gnu: visibility("default")]] Norv {

/// An IPv4 or an IPv6 address. Seventeen bytes without alignment, because millions are stored.
///
/// An IPv4 address and its mapped IPv6 form (0:0:0:0:0:ffff:10.1.0.1) are two different addresses.
class IpGenAddr {
 public:
  /// Which version of the Internet protocol.
  enum class Family : std::uint8_t { ipv4, ipv6 };

  /// The IPv4 address 0.0.0.0.
  IpGenAddr() noexcept = default;

  /// Reads four decimal octets without leading zeros (10.1.0.1), or any textual form of an IPv6
  /// address: upper or lower case, "::" for one run of zero groups, a dotted quad in the last 32
  /// bits. Neither zones nor prefix lengths are taken. Raises Kel::RangeException for all else.
  IpGenAddr(std::string_view text);

  /// The IPv4 address whose 32 bits are `hostOrder`: 0x0a010001 is 10.1.0.1.
  static IpGenAddr ipv4(std::uint32_t hostOrder) noexcept;

  /// The IPv6 address of sixteen bytes in network order.
  static IpGenAddr ipv6(std::span<const std::uint8_t, 16> networkOrder) noexcept;

  Family family() const noexcept { return family_; }                ///< of which version it is
  bool isIpv4() const noexcept { return family_ == Family::ipv4; }  ///< whether it is 4 bytes
  bool isIpv6() const noexcept { return !isIpv4(); }                ///< whether it is 16 bytes

  /// The width in bits, which is also the longest prefix length: 32 or 128.
  unsigned width() const noexcept { return isIpv4() ? 32U : 128U; }

  /// The address in network order: four bytes of an IPv4 address, sixteen of an IPv6 address.
  std::span<const std::uint8_t> bytes() const noexcept { return {bytes_.data(), width() / 8}; }

  /// The printed form: dotted decimal, or lower-case hexadecimal groups with the longest run of two
  /// or more zero groups (the first among equals) shortened to "::". IPv4-mapped addresses print
  /// their last 32 bits dotted.
  std::string stringValue() const;

  /// Appends the printed form to `out`.
  void appendTo(std::string& out) const;

  /// Spreads over all 32 bits, so that a table may take any of them. Not stable between versions.
  std::uint32_t hash() const noexcept { return seededHash(0); }

  friend bool operator==(const IpGenAddr& a, const IpGenAddr& b) noexcept {
    return std::memcmp(&a, &b, sizeof(IpGenAddr)) == 0;
  }

  /// IPv4 before IPv6, then by value.
  friend std::strong_ordering operator<=>(const IpGenAddr& a, const IpGenAddr& b) noexcept {
    if (a.family_ != b.family_) return a.family_ <=> b.family_;
    return std::memcmp(a.bytes_.data(), b.bytes_.data(), a.bytes_.size()) <=> 0;
  }

 private:
  friend class IpGenPrefix;

  // The address with zeros behind its first `length` bits.
  IpGenAddr network(unsigned length) const noexcept;

  std::uint32_t seededHash(std::uint64_t seed) const noexcept {
    std::array<std::uint64_t, 2> words;
    std::memcpy(words.data(), bytes_.data(), bytes_.size());
    const std::uint64_t tail = seed << 8 | static_cast<std::uint8_t>(family_);
    const std::uint64_t first = mix(words[0] ^ tail * 0x9e3779b97f4a7c15U, 0xa0761d6478bd642fU);
    return static_cast<std::uint32_t>(mix(first ^ words[1], 0xe7037ed1a0b428dbU));
  }

  // The upper half of the product carries even the topmost bit of `value` down into the low bits.
  static std::uint64_t mix(std::uint64_t value, std::uint64_t multiplier) noexcept {
    __extension__ using Product = unsigned __int128;
    const Product product = static_cast<Product>(value) * multiplier;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
  }

  std::array<std::uint8_t, 16> bytes_{};  // network order; an IPv4 address leaves twelve zero bytes
  Family family_ = Family::ipv4;
};

static_assert(sizeof(IpGenAddr) == 17 && alignof(IpGenAddr) == 1);

std::ostream& operator<<(std::ostream& out, const IpGenAddr& value);

/// Appends the printed form of `value`.
inline void kelAppend(std::string& out, const IpGenAddr& value) { value.appendTo(out); }

/// Reads what the constructor from text reads. On bad text returns false, says in `why` what was
/// found and what was expected, and leaves `value` as it was.
bool kelParse(std::string_view text, IpGenAddr& value, std::string& why);

}  // namespace Norv

template <>
struct std::hash<Norv::IpGenAddr> {
  std::size_t operator()(const Norv::IpGenAddr& value) const noexcept { return value.hash(); }
};
