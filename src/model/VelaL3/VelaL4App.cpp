#include "VelaL3/VelaL4App.h"

#include <ostream>

#include "Kel/Text.h"

namespace VelaL3 {

void kelAppend(std::string& out, const VelaL4App& app) {
  Kel::appendValue(out, app.port);
  out += '/';
  Kel::appendValue(out, app.protocol);
}

std::ostream& operator<<(std::ostream& out, const VelaL4App& app) {
  return out << Kel::textOf(app);
}

}  // namespace VelaL3
