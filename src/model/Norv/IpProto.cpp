#include "Norv/IpProto.h"

#include <ostream>

#include "Norv/IpText.h"

namespace Norv {

std::string IpProto::stringValue() const {
  std::string text;
  appendTo(text);
  return text;
}

void IpProto::appendTo(std::string& out) const {
  std::array<char, 4> buffer;
  out.append(buffer.data(), IpText::printDecimal(buffer.data(), value_));
}

std::ostream& operator<<(std::ostream& out, const IpProto& value) {
  return out << value.stringValue();
}

bool kelParse(std::string_view text, IpProto& value, std::string& why) {
  const std::size_t digits = IpText::digitCount(text);
  std::uint8_t number = 0;
  if (text.empty()) {
    why = "the text is empty";
  } else if (digits != text.size()) {
    why = IpText::characterAt(text, digits) + " is not a decimal digit";
  } else if (IpText::parseDecimal(text, 255, "number", number, why)) {
    value = number;
    return true;
  }
  why += "; expected a protocol number from 0 to 255, such as 6 for TCP";
  return false;
}

}  // namespace Norv
