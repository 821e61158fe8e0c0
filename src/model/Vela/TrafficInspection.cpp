#include "Vela/TrafficInspection.h"

#include <algorithm>
#include <array>
#include <ostream>

namespace Vela {

namespace {

struct Bit {
  std::string_view name;
  std::uint8_t mask;
};

constexpr std::array<Bit, 2> bits{{{"local", 0x01}, {"unified", 0x02}}};

const Bit* bitOf(std::string_view name) noexcept {
  for (const Bit& bit : bits) {
    if (bit.name == name) return &bit;
  }
  return nullptr;
}

bool fail(std::string& why, std::string_view found, std::string_view name,
          std::string_view expected) {
  why.assign(found).append(" \"").append(name).append("\"; expected ").append(expected);
  return false;
}

}  // namespace

std::string TrafficInspection::stringValue() const {
  std::string text;
  kelAppend(text, *this);
  return text;
}

std::ostream& operator<<(std::ostream& out, const TrafficInspection& value) {
  return out << value.stringValue();
}

void kelAppend(std::string& out, const TrafficInspection& value) {
  std::string_view blank;
  for (const Bit& bit : bits) {
    if ((value.value & bit.mask) == 0) continue;
    out.append(blank).append(bit.name);
    blank = " ";
  }
}

bool kelParse(std::string_view text, TrafficInspection& value, std::string& why) {
  TrafficInspection read;
  while (true) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    if (text.empty()) break;
    const std::string_view name = text.substr(0, text.find(' '));
    text.remove_prefix(name.size());
    const Bit* bit = bitOf(name);
    if (bit == nullptr) {
      return fail(why, "unknown bit", name, "local, unified, both, or nothing");
    }
    if ((read.value & bit->mask) != 0) return fail(why, "repeated bit", name, "each name once");
    read.value = static_cast<std::uint8_t>(read.value | bit->mask);
  }
  value = read;
  return true;
}

}  // namespace Vela
