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

/// Reads the digits of a decimal number from 0 to `most` (at most 255) without leading zeros.
/// Otherwise returns false and names the fault in `why`, where `name` says what the number is.
bool parseDecimal(std::string_view digits, unsigned most, std::string_view name,
                  std::uint8_t& value, std::string& why);

/// The number of characters at the start of `text` that are decimal digits.
std::size_t digitCount(std::string_view text) noexcept;

/// Names the character at `position` (from 0) of `text` for a message: "'x' at position 3", counted
/// from 1.
std::string characterAt(std::string_view text, std::size_t position);

/// Quotes `text` for a message: quotes, control and non-ASCII bytes as \xHH, a long text cut short.
std::string quoted(std::string_view text);

}  // namespace Norv::IpText
