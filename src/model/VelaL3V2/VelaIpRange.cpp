#include "VelaL3V2/VelaIpRange.h"

namespace VelaL3V2 {

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

}  // namespace VelaL3V2
