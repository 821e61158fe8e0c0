#include "text/JsonText.h"

#include <algorithm>
#include <charconv>

namespace Host {
namespace {

constexpr std::string_view kHexDigits = "0123456789abcdef";

bool needsEscape(char c) { return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\'; }

void appendEscaped(std::string& out, char c) {
  constexpr std::string_view kNamed = "\"\\\b\f\n\r\t";
  constexpr std::string_view kNames = "\"\\bfnrt";
  out += '\\';
  if (const std::size_t at = kNamed.find(c); at != std::string_view::npos) {
    out += kNames[at];
  } else {
    out += "u00";
    out += kHexDigits[static_cast<unsigned char>(c) >> 4U];
    out += kHexDigits[static_cast<unsigned char>(c) & 0x0fU];
  }
}

/// The code unit of the \uXXXX at the start of `text`; a number above 0xffff when there is none.
unsigned unitAt(std::string_view text) noexcept {
  unsigned unit = 0;
  if (text.size() < 6 || text[0] != '\\' || text[1] != 'u') {
    return ~0U;
  }
  const char* const end = text.data() + 6;
  const auto [stop, error] = std::from_chars(text.data() + 2, end, unit, 16);
  return stop == end && error == std::errc() ? unit : ~0U;
}

bool isHighHalf(unsigned unit) noexcept { return unit >= 0xd800 && unit < 0xdc00; }
bool isLowHalf(unsigned unit) noexcept { return unit >= 0xdc00 && unit < 0xe000; }

void appendCharacter(std::string& out, unsigned character) {
  const auto follow = [&](unsigned shift) {
    out += static_cast<char>(0x80U | ((character >> shift) & 0x3fU));
  };
  if (character < 0x80) {
    out += static_cast<char>(character);
  } else if (character < 0x800) {
    out += static_cast<char>(0xc0U | (character >> 6U));
    follow(0);
  } else if (character < 0x10000) {
    out += static_cast<char>(0xe0U | (character >> 12U));
    follow(6);
    follow(0);
  } else {
    out += static_cast<char>(0xf0U | (character >> 18U));
    follow(12);
    follow(6);
    follow(0);
  }
}

std::size_t digitsAt(std::string_view text, std::size_t at) noexcept {
  const std::size_t end = std::min(text.find_first_not_of("0123456789", at), text.size());
  return at < end ? end - at : 0;
}

/// The parts of a JSON number; `sound` is false when it is none.
struct Number {
  bool sound = false;
  std::string_view whole;     // with the minus
  std::string_view fraction;  // behind the point
  std::string_view exponent;  // behind the e
};

Number partsOf(std::string_view text) noexcept {
  Number parts;
  std::size_t at = text.starts_with('-') ? 1 : 0;
  const std::size_t whole = digitsAt(text, at);
  if (whole == 0 || (whole > 1 && text[at] == '0')) {
    return parts;
  }
  at += whole;
  parts.whole = text.substr(0, at);
  if (at < text.size() && text[at] == '.') {
    parts.fraction = text.substr(at + 1, digitsAt(text, at + 1));
    if (parts.fraction.empty()) {
      return parts;
    }
    at += 1 + parts.fraction.size();
  }
  if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
    const std::size_t sign = at + 1 < text.size() && (text[at + 1] == '+' || text[at + 1] == '-');
    const std::size_t digits = digitsAt(text, at + 1 + sign);
    if (digits == 0) {
      return parts;
    }
    parts.exponent = text.substr(at + 1, sign + digits);
    at += 1 + sign + digits;
  }
  parts.sound = at == text.size();
  return parts;
}

}  // namespace

void appendJsonText(std::string& out, std::string_view text) {
  out += '"';
  const std::size_t from = out.size();
  out += text;
  escapeJsonFrom(out, from);
  out += '"';
}

void escapeJsonFrom(std::string& out, std::size_t from) {
  const auto begin = out.begin() + static_cast<std::ptrdiff_t>(from);
  if (std::none_of(begin, out.end(), needsEscape)) {
    return;
  }
  const std::string plain = out.substr(from);
  out.resize(from);
  for (const char c : plain) {
    if (needsEscape(c)) {
      appendEscaped(out, c);
    } else {
      out += c;
    }
  }
}

std::size_t escapeLength(std::string_view text) noexcept {
  if (text.size() < 2) {
    return 0;
  }
  if (text[1] != 'u') {
    return std::string_view("\"\\/bfnrt").find(text[1]) == std::string_view::npos ? 0 : 2;
  }
  const unsigned unit = unitAt(text);
  if (isHighHalf(unit)) {
    return isLowHalf(unitAt(text.substr(6))) ? 12 : 0;
  }
  return unit > 0xffff || isLowHalf(unit) ? 0 : 6;
}

bool appendUnescaped(std::string& out, std::string_view raw) {
  for (;;) {
    const std::size_t plain = std::min(raw.find('\\'), raw.size());
    out += raw.substr(0, plain);
    raw.remove_prefix(plain);
    if (raw.empty()) {
      return true;
    }
    const std::size_t length = escapeLength(raw);
    if (length == 0) {
      return false;
    }
    if (length == 2) {
      constexpr std::string_view kNames = "\"\\/bfnrt";
      constexpr std::string_view kNamed = "\"\\/\b\f\n\r\t";
      out += kNamed[kNames.find(raw[1])];
    } else if (length == 6) {
      appendCharacter(out, unitAt(raw));
    } else {
      appendCharacter(out,
                      0x10000 + ((unitAt(raw) - 0xd800) << 10U) + (unitAt(raw.substr(6)) - 0xdc00));
    }
    raw.remove_prefix(length);
  }
}

bool isJsonNumber(std::string_view text) noexcept { return partsOf(text).sound; }

std::string wholeDigits(std::string_view text) {
  constexpr int kMost = 30;
  const Number parts = partsOf(text);
  int shift = 0;
  const std::string_view exponent = parts.exponent.substr(parts.exponent.starts_with('+') ? 1 : 0);
  const auto [stop, error] =
      std::from_chars(exponent.data(), exponent.data() + exponent.size(), shift);
  if (!parts.sound || (!exponent.empty() && error != std::errc()) || shift > kMost ||
      shift < -kMost || parts.whole.size() + parts.fraction.size() > kMost) {
    return std::string(text);
  }
  // All digits in a row, and how many of them stand before the point.
  const bool minus = parts.whole.starts_with('-');
  std::string digits = std::string(parts.whole.substr(minus ? 1 : 0)) + std::string(parts.fraction);
  const int before = static_cast<int>(digits.size() - parts.fraction.size()) + shift;
  const auto kept = static_cast<std::size_t>(std::max(before, 0));
  digits.resize(std::max(digits.size(), kept), '0');
  if (digits.find_first_not_of('0', kept) != std::string::npos) {
    return std::string(text);
  }
  digits.resize(kept);
  digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size()));
  return digits.empty() ? "0" : (minus ? "-" : "") + digits;
}

std::string hexByte(unsigned char byte) {
  constexpr std::string_view kUpper = "0123456789ABCDEF";
  return {'0', 'x', kUpper[byte >> 4U], kUpper[byte & 0x0fU]};
}

}  // namespace Host
