#include "L3/VrfName.h"

#include <ostream>

#include "Kel/Exception.h"

namespace L3 {

void VrfName::checkLength() const {
  if (name_.size() > maxLength()) {
    Kel::throwRangeException("Kel::String::bytes > maxLength() not allowed");
  }
}

std::ostream& operator<<(std::ostream& out, const VrfName& value) {
  return out << value.stringValue().view();
}

bool kelParse(std::string_view text, VrfName& value, std::string& why) {
  if (text.size() > VrfName::maxLength()) {
    why = "the name has " + std::to_string(text.size()) + " bytes; expected at most " +
          std::to_string(VrfName::maxLength()) + " bytes, of which a letter may take several";
    return false;
  }
  value = VrfName(text);
  return true;
}

}  // namespace L3
