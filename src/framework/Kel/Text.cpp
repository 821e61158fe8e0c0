#include "Kel/Text.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

namespace Kel {
namespace Impl {

bool parseUnsigned(std::string_view text, unsigned long long largest, unsigned long long& value,
                   std::string& why) {
  unsigned long long number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (text.empty() || stop != end) {
    why = "\"" + std::string(text) + "\" is not a whole number; expected 0 to " + textOf(largest);
    return false;
  }
  if (error != std::errc() || number > largest) {
    why = std::string(text) + " is too large; expected 0 to " + textOf(largest);
    return false;
  }
  value = number;
  return true;
}

bool parseBool(std::string_view text, bool& value, std::string& why) {
  if (text != "true" && text != "false") {
    why = "\"" + std::string(text) + "\" is neither true nor false";
    return false;
  }
  value = text == "true";
  return true;
}

bool parseSeconds(std::string_view text, Seconds& value, std::string& why) {
  // decimal64 with six fraction digits: an optional minus, digits, optionally a point and 1 to 6
  // digits.
  const std::string_view digits = text.starts_with('-') ? text.substr(1) : text;
  const std::size_t point = digits.find('.');
  const std::string_view whole = digits.substr(0, point);
  const std::string_view fraction =
      point == std::string_view::npos ? "0" : digits.substr(point + 1);
  const auto isDigits = [](std::string_view part) {
    return !part.empty() &&
           std::all_of(part.begin(), part.end(), [](char c) { return c >= '0' && c <= '9'; });
  };
  if (!isDigits(whole) || !isDigits(fraction) || fraction.size() > 6 || whole.size() > 12) {
    why = "\"" + std::string(text) +
          "\" is not a time; expected seconds such as 12.5, at most 12 digits before the point and "
          "six after it";
    return false;
  }
  Seconds number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  value = number;
  return true;
}

std::string whyNoName(std::string_view text, const std::string_view* names, std::size_t count) {
  std::string why = "\"" + std::string(text) + "\" is unknown; expected ";
  for (std::size_t i = 0; i < count; ++i) {
    why += (i == 0 ? "" : i + 1 == count ? " or " : ", ") + std::string(names[i]);
  }
  return why;
}

}  // namespace Impl

std::size_t editDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row[b.size()];
}

}  // namespace Kel
