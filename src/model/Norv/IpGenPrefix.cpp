#include "Norv/IpGenPrefix.h"

#include <ostream>

#include "Kel/Exception.h"
#include "Norv/IpAddrParse.h"
#include "Norv/IpText.h"

namespace Norv {

namespace {

constexpr std::string_view want =
    "; expected an address, a slash and a length in bits, such as 10.1.0.0/16 or 2001:db8::/32";

bool parseLength(std::string_view text, const IpGenAddr& address, std::uint8_t& length,
                 std::string& why) {
  if (text.empty()) {
    why = "the length after the slash is missing";
    return false;
  }
  if (IpText::digitCount(text) != text.size()) {
    why = "length " + IpText::quoted(text) + " is not a decimal number";
    if (text.find_first_of(".:") != std::string_view::npos) why += "; a mask is not allowed";
    return false;
  }
  const std::string_view name = address.isIpv4() ? "IPv4 length" : "IPv6 length";
  return IpText::parseDecimal(text, address.width(), name, length, why);
}

}  // namespace

IpGenPrefix::IpGenPrefix(std::string_view text) {
  std::string why;
  if (!kelParse(text, *this, why)) {
    Kel::throwRangeException(IpText::quoted(text) + " is not an IP prefix: " + why);
  }
}

IpGenPrefix::IpGenPrefix(const IpGenAddr& address, unsigned length)
    : address_(address.network(length)), length_(static_cast<std::uint8_t>(length)) {
  if (length <= address.width()) return;
  Kel::throwRangeException("length " + std::to_string(length) + " of a prefix of " +
                           address.stringValue() + " is above " + std::to_string(address.width()));
}

bool IpGenPrefix::contains(const IpGenAddr& address) const noexcept {
  return address.network(length_) == address_;
}

std::string IpGenPrefix::stringValue() const {
  std::string text;
  appendTo(text);
  return text;
}

void IpGenPrefix::appendTo(std::string& out) const {
  IpText::PrintBuffer buffer;
  char* at = IpText::printAddress(buffer.data(), address_);
  *at++ = '/';
  out.append(buffer.data(), IpText::printDecimal(at, length_));
}

std::ostream& operator<<(std::ostream& out, const IpGenPrefix& value) {
  return out << value.stringValue();
}

bool kelParse(std::string_view text, IpGenPrefix& value, std::string& why) {
  const std::size_t slash = text.find('/');
  const bool hasLength = slash != std::string_view::npos;
  IpGenAddr address;
  std::uint8_t length = 0;
  std::string_view addressWant;  // says too little: a prefix is wanted
  if (slash == 0) {
    why = "the address before the slash is missing";
  } else if (parseAddress(text.substr(0, slash), address, why, addressWant)) {
    if (hasLength && parseLength(text.substr(slash + 1), address, length, why)) {
      value = IpGenPrefix(address, length);
      return true;
    }
    if (!hasLength) why = "the length is missing";
  }
  why += want;
  return false;
}

}  // namespace Norv
