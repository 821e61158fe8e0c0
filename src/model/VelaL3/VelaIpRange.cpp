#include "VelaL3/VelaIpRange.h"

#include <ostream>

namespace VelaL3 {

// Deliberate: the leading blank and the label belong to the value, so that a message that ends in a
// blank shows two blanks before the label.
void kelAppend(std::string& out, const VelaIpRange& range) {
  out += " IP range: ";
  range.first.appendTo(out);
  out += '-';
  range.last.appendTo(out);
}

std::string VelaIpRange::stringValue() const {
  std::string text;
  kelAppend(text, *this);
  return text;
}

std::ostream& operator<<(std::ostream& out, const VelaIpRange& range) {
  return out << range.stringValue();
}

}  // namespace VelaL3
