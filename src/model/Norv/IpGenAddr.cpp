#include "Norv/IpGenAddr.h"

#include <algorithm>
#include <ostream>

#include "Kel/Exception.h"
#include "Norv/IpAddrParse.h"
#include "Norv/IpText.h"

namespace Norv {

IpGenAddr::IpGenAddr(std::string_view text) {
  std::string why;
  if (!kelParse(text, *this, why)) {
    Kel::throwRangeException(IpText::quoted(text) + " is not an IP address: " + why);
  }
}

IpGenAddr IpGenAddr::ipv4(std::uint32_t hostOrder) noexcept {
  IpGenAddr address;
  address.bytes_[0] = static_cast<std::uint8_t>(hostOrder >> 24);
  address.bytes_[1] = static_cast<std::uint8_t>(hostOrder >> 16);
  address.bytes_[2] = static_cast<std::uint8_t>(hostOrder >> 8);
  address.bytes_[3] = static_cast<std::uint8_t>(hostOrder);
  return address;
}

IpGenAddr IpGenAddr::ipv6(std::span<const std::uint8_t, 16> networkOrder) noexcept {
  IpGenAddr address;
  std::copy(networkOrder.begin(), networkOrder.end(), address.bytes_.begin());
  address.family_ = Family::ipv6;
  return address;
}

IpGenAddr IpGenAddr::network(unsigned length) const noexcept {
  IpGenAddr network = *this;
  const std::size_t whole = length / 8;
  if (whole >= bytes_.size()) return network;
  network.bytes_[whole] &= static_cast<std::uint8_t>(0xff00U >> length % 8);
  std::fill(network.bytes_.begin() + whole + 1, network.bytes_.end(), std::uint8_t{0});
  return network;
}

std::string IpGenAddr::stringValue() const {
  std::string text;
  appendTo(text);
  return text;
}

void IpGenAddr::appendTo(std::string& out) const {
  IpText::PrintBuffer buffer;
  out.append(buffer.data(), IpText::printAddress(buffer.data(), *this));
}

std::ostream& operator<<(std::ostream& out, const IpGenAddr& value) {
  return out << value.stringValue();
}

bool kelParse(std::string_view text, IpGenAddr& value, std::string& why) {
  std::string_view want;
  if (parseAddress(text, value, why, want)) return true;
  why += want;
  return false;
}

}  // namespace Norv
