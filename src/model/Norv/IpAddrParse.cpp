#include "Norv/IpAddrParse.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "Norv/IpText.h"

namespace Norv {

namespace {

using Octets = std::array<std::uint8_t, 4>;
using Groups = std::array<std::uint8_t, 16>;

constexpr std::string_view wantIpv4 =
    "; expected four decimal numbers from 0 to 255, such as 10.1.0.1";
constexpr std::string_view wantIpv6 =
    "; expected eight groups of one to four hexadecimal digits, perhaps one run of zero groups as "
    "\"::\", such as 2001:db8::1";
constexpr std::string_view wantEither =
    "; expected four decimal numbers from 0 to 255, such as 10.1.0.1, or groups of hexadecimal "
    "digits, such as 2001:db8::1";

bool fail(std::string& why, std::string_view found) {
  why = found;
  return false;
}

// Names what stands at `position`, where an address of `family` has to go on or to end.
bool failAt(std::string& why, std::string_view text, std::size_t position,
            std::string_view family) {
  const std::string rest = IpText::quoted(text.substr(position));
  switch (text[position]) {
    case '%':
      return fail(why, "the zone " + rest + " is not allowed");
    case '/':
      return fail(why, "the length " + rest + " is allowed in a prefix only");
    default:
      return fail(why, IpText::characterAt(text, position) + " has no place in an " +
                           std::string(family) + " address");
  }
}

bool parseIpv4(std::string_view text, Octets& octets, std::string& why) {
  std::size_t at = 0;
  for (std::size_t octet = 0; octet < octets.size(); ++octet) {
    const std::string_view digits = text.substr(at, IpText::digitCount(text.substr(at)));
    at += digits.size();
    const bool last = at == text.size();
    if (digits.empty()) {
      if (!last && text[at] != '.') return failAt(why, text, at, "IPv4");
      return fail(why, "octet " + std::to_string(octet + 1) + " is empty");
    }
    if (!IpText::parseDecimal(digits, 255, "octet", octets[octet], why)) return false;
    if (last) {
      if (octet == 3) return true;
      return fail(why, "only " + std::to_string(octet + 1) + " of four octets given");
    }
    if (text[at] == ':') {
      return fail(why, "the port " + IpText::quoted(text.substr(at)) + " is not allowed");
    }
    if (text[at] != '.') return failAt(why, text, at, "IPv4");
    ++at;
  }
  return fail(why, "more than four octets given");
}

// A digit's value, or 16 for any other character.
unsigned hexValue(char c) noexcept {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? static_cast<unsigned>(lower - 'a' + 10) : 16;
}

/// Reads one IPv6 address from front to back; the groups behind "::" move to the end at last.
class Ipv6Reader {
 public:
  explicit Ipv6Reader(std::string_view text) noexcept : text_(text) {}

  bool read(std::string& why) {
    if (text_.starts_with("::")) {
      gap_ = 0;
      at_ = 2;
    }
    while (at_ < text_.size()) {
      if (!readGroup(why) || !readColons(why)) return false;
    }
    return closeGap(why);
  }

  const Groups& bytes() const noexcept { return bytes_; }

 private:
  static constexpr std::size_t noGap = ~std::size_t{0};

  bool readGroup(std::string& why) {
    unsigned group = 0;
    const std::size_t begin = at_;
    for (; at_ < text_.size(); ++at_) {
      const unsigned digit = hexValue(text_[at_]);
      if (digit == 16) break;
      group = group << 4 | digit;
    }
    if (at_ < text_.size() && text_[at_] == '.') return readDotted(begin, why);
    if (at_ == begin) {
      if (text_[at_] != ':') return failAt(why, text_, at_, "IPv6");
      return fail(why,
                  at_ == 0 ? "a single colon stands at the start" : "three colons stand in a row");
    }
    if (at_ - begin > 4) {
      return fail(why, "group " + IpText::quoted(text_.substr(begin, at_ - begin)) +
                           " has more than four digits");
    }
    if (filled_ == bytes_.size()) return fail(why, "more than eight groups given");
    bytes_[filled_++] = static_cast<std::uint8_t>(group >> 8);
    bytes_[filled_++] = static_cast<std::uint8_t>(group);
    return true;
  }

  bool readDotted(std::size_t begin, std::string& why) {
    const std::string_view dotted = text_.substr(begin);
    if (dotted.find(':') != std::string_view::npos) {
      return fail(why, "groups follow the dotted part, which has to be last");
    }
    Octets octets;
    std::string fault;
    if (!parseIpv4(dotted, octets, fault)) {
      return fail(why, "dotted part " + IpText::quoted(dotted) + ": " + fault);
    }
    if (filled_ + octets.size() > bytes_.size()) {
      return fail(why, "more than eight groups given, the dotted part counted as two");
    }
    std::memcpy(&bytes_[filled_], octets.data(), octets.size());
    filled_ += octets.size();
    at_ = text_.size();
    return true;
  }

  bool readColons(std::string& why) {
    if (at_ == text_.size()) return true;
    if (text_[at_] != ':') return failAt(why, text_, at_, "IPv6");
    ++at_;
    if (at_ == text_.size()) return fail(why, "a single colon stands at the end");
    if (text_[at_] != ':') return true;
    if (gap_ != noGap) return fail(why, "\"::\" is given more than once");
    gap_ = filled_;
    ++at_;
    return true;
  }

  bool closeGap(std::string& why) {
    if (gap_ == noGap) {
      if (filled_ == bytes_.size()) return true;
      return fail(why,
                  "only " + std::to_string(filled_ / 2) + " of eight groups given, and no \"::\"");
    }
    if (filled_ == bytes_.size()) {
      return fail(why, "\"::\" stands for no group, because eight groups are given");
    }
    auto* const gap = bytes_.begin() + gap_;
    auto* const end = bytes_.begin() + filled_;
    std::fill(gap, std::move_backward(gap, end, bytes_.end()), std::uint8_t{0});
    return true;
  }

  std::string_view text_;
  std::size_t at_ = 0;
  Groups bytes_{};
  std::size_t filled_ = 0;
  std::size_t gap_ = noGap;
};

}  // namespace

bool parseAddress(std::string_view text, IpGenAddr& value, std::string& why,
                  std::string_view& want) {
  const std::size_t colon = text.find(':');
  if (colon != std::string_view::npos && colon < text.find('.')) {
    want = wantIpv6;
    Ipv6Reader reader(text);
    if (!reader.read(why)) return false;
    value = IpGenAddr::ipv6(reader.bytes());
    return true;
  }
  if (IpText::digitCount(text) == 0 && text.find('.') == std::string_view::npos) {
    want = wantEither;
    return fail(why, text.empty() ? "the text is empty" : "it looks like neither IPv4 nor IPv6");
  }
  want = wantIpv4;
  Octets octets;
  if (!parseIpv4(text, octets, why)) return false;
  value = IpGenAddr::ipv4(std::uint32_t{octets[0]} << 24 | std::uint32_t{octets[1]} << 16 |
                          std::uint32_t{octets[2]} << 8 | octets[3]);
  return true;
}

}  // namespace Norv
