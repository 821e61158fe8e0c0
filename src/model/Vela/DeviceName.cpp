#include "Vela/DeviceName.h"

#include <ostream>

namespace Vela {

std::ostream& operator<<(std::ostream& out, const DeviceName& value) {
  return out << value.stringValue().view();
}

bool kelParse(std::string_view text, DeviceName& value, std::string& /*why*/) {
  value = DeviceName(text);
  return true;
}

}  // namespace Vela
