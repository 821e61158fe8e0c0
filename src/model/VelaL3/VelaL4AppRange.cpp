#include "VelaL3/VelaL4AppRange.h"

#include <ostream>

#include "Kel/Text.h"

namespace VelaL3 {

void kelAppend(std::string& out, const VelaL4AppRange& range) {
  Kel::appendValue(out, range.first);
  out += '-';
  Kel::appendValue(out, range.last);
  out += '/';
  Kel::appendValue(out, range.protocol);
}

std::ostream& operator<<(std::ostream& out, const VelaL4AppRange& range) {
  return out << Kel::textOf(range);
}

}  // namespace VelaL3
