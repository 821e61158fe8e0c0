#include "VelaL3/VelaPriority.h"

#include <ostream>

#include "Kel/Exception.h"
#include "Kel/Text.h"

namespace VelaL3 {
namespace {

/// In 32-bit arithmetic, so that one comparison checks both ends.
constexpr bool inRange(std::uint32_t value) noexcept {
  return value - VelaPriority::min <= VelaPriority::max - VelaPriority::min;
}

}  // namespace

VelaPriority::VelaPriority(std::uint32_t value) : value_(value) {
  if (!inRange(value)) {
    Kel::throwRangeException(
        "VelaL3::VelaPriority::value < VelaL3::VelaPriority::min or > "
        "VelaL3::VelaPriority::max not allowed");
  }
}

void kelAppend(std::string& out, VelaPriority priority) { Kel::appendValue(out, priority.value()); }

bool kelParse(std::string_view text, VelaPriority& value, std::string& why) {
  std::uint32_t number = 0;
  if (!Kel::parseValue(text, number, why)) {
    return false;
  }
  if (!inRange(number)) {
    why = "priority " + std::string(text) + " is out of range; expected 10000 to 30000";
    return false;
  }
  value = VelaPriority::unchecked(number);
  return true;
}

std::ostream& operator<<(std::ostream& out, VelaPriority priority) {
  return out << Kel::textOf(priority);
}

}  // namespace VelaL3
