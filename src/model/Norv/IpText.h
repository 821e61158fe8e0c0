#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Norv/IpGenAddr.h"

/// What the three value types share in reading and printing text.
namespace Norv::IpText {

/// Room for the longest printed prefix, 43 characters, and the slack that printDecimal() wants.
using PrintBuffer = std::array<char, 48>;

/// Prints `value` in decimal at `at` and returns the end. May touch four characters from `at` on.
char* printDecimal(char* at, std::uint8_t value) noexcept;

/// Prints `value` at `at` and returns the end. Leaves room for a slash and a length in a buffer.
char* printAddress(char* at, const IpGenAddr& value) noexcept;

/// The number of characters at the start of `text` that are decimal digits.
inline std::size_t digitCount(std::string_view text) noexcept {
  std::size_t count = 0;
  while (count < text.size() && text[count] >= '0' && text[count] <= '9') ++count;
  return count;
}

/// Says in `why` what is wrong with the digits of a number, which `name` names. Returns false.
bool failDecimal(std::string_view digits, unsigned most, std::string_view name, std::string& why);

/// Reads one or more digits of a decimal number from 0 to `most` (at most 255) without leading
/// zeros. Otherwise returns false and says in `why` what is wrong with the number named `name`.
inline bool parseDecimal(std::string_view digits, unsigned most, std::string_view name,
                         std::uint8_t& value, std::string& why) {
  unsigned number = 0;
  for (const char digit : digits.substr(0, 4)) {
    number = number * 10 + static_cast<unsigned>(digit - '0');
  }
  const bool leadingZero = digits.size() > 1 && digits[0] == '0';
  if (leadingZero || digits.size() > 3 || number > most) {
    return failDecimal(digits, most, name, why);
  }
  value = static_cast<std::uint8_t>(number);
  return true;
}

/// Names the character at `position` (from 0) of `text` for a message: "'x' at position 3", counted
/// from 1.
std::string characterAt(std::string_view text, std::size_t position);

/// Quotes `text` for a message: quotes, control and non-ASCII bytes as \xHH, a long text cut short.
std::string quoted(std::string_view text);

}  // namespace Norv::IpText
