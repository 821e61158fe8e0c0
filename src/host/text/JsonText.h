#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Host {

// The letters of JSON: how text and numbers are spelt.

/// Appends `text`, which is UTF-8, in double quotes, with quotes, backslashes and control
/// characters escaped.
void appendJsonText(std::string& out, std::string_view text);

/// Escapes out[from...] in place; costs next to nothing where there is nothing to escape.
void escapeJsonFrom(std::string& out, std::size_t from);

/// The length of the JSON escape at the start of `text`, both halves of a surrogate pair together;
/// 0 when it is none.
std::size_t escapeLength(std::string_view text) noexcept;

/// Appends what `raw`, the inside of a JSON text, stands for; false when an escape in it is none.
bool appendUnescaped(std::string& out, std::string_view raw);

/// Whether `text` is a number as JSON spells them.
bool isJsonNumber(std::string_view text) noexcept;

/// The digits of the whole number that the JSON number `text` means: "2e4" and "20000.0" are
/// "20000". Numbers that are not whole, or have more than 30 digits, are returned as they are.
std::string wholeDigits(std::string_view text);

/// "0xFF": a byte for a message.
std::string hexByte(unsigned char byte);

}  // namespace Host
