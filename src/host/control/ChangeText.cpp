#include "control/ChangeText.h"

#include <array>
#include <cmath>
#include <ctime>

#include "control/AgentAnswer.h"
#include "text/Concat.h"
#include "text/Report.h"

namespace Host {
namespace {

struct Sign {
  std::string_view event;
  std::string_view sign;
  std::string_view color;
};

constexpr std::array<Sign, 3> kSigns{
    {{"add", "+", "\033[32m"}, {"remove", "-", "\033[31m"}, {"set", "~", "\033[33m"}}};
constexpr Sign kOther{"", "?", ""};

const Sign& signOf(std::string_view event) {
  for (const Sign& each : kSigns) {
    if (each.event == event) {
      return each;
    }
  }
  return kOther;
}

}  // namespace

void appendChange(std::string& out, const simdjson::dom::object& change, bool color) {
  const Sign& sign = signOf(textIn(change, "event"));
  out += color ? sign.color : "";
  out += concat({sign.sign, " ", printable(textIn(change, "path"))});
  simdjson::dom::element value;
  if (change["value"].get(value) == simdjson::SUCCESS) {
    out += concat({" = ", printable(simdjson::minify(value))});
  }
  out += color ? "\033[0m" : "";
}

void appendTimeOfDay(std::string& out, double seconds) {
  const double whole = std::floor(seconds);
  const auto time = static_cast<std::time_t>(whole);
  std::tm local{};
  ::localtime_r(&time, &local);
  std::array<char, 16> text{};
  const std::size_t size = std::strftime(text.data(), text.size(), "%H:%M:%S.", &local);
  const std::string millis =
      std::to_string(1000 + static_cast<int>((seconds - whole) * 1000));  // the 1 goes
  out += concat({{text.data(), size}, millis.substr(1)});
}

}  // namespace Host
