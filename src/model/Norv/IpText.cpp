#include "Norv/IpText.h"

#include <cstring>

namespace Norv::IpText {

namespace {

constexpr std::string_view hexDigits = "0123456789abcdef";

struct DecimalText {
  std::array<char, 3> digits;
  std::uint8_t size;
};

constexpr std::array<DecimalText, 256> decimalTexts() {
  std::array<DecimalText, 256> texts{};
  for (unsigned value = 0; value < texts.size(); ++value) {
    DecimalText& text = texts[value];
    for (unsigned unit = value < 10 ? 1 : value < 100 ? 10 : 100; unit != 0; unit /= 10) {
      text.digits[text.size++] = static_cast<char>('0' + value / unit % 10);
    }
  }
  return texts;
}

constexpr std::array<DecimalText, 256> decimals = decimalTexts();

struct Run {
  unsigned begin;
  unsigned end;
};

// The first longest run of zero groups; an empty one behind the last group when none has two.
Run longestZeroRun(const std::array<unsigned, 8>& groups) noexcept {
  Run longest{8, 8};
  for (unsigned begin = 0; begin < groups.size(); ++begin) {
    unsigned end = begin;
    while (end < groups.size() && groups[end] == 0) ++end;
    if (end - begin >= 2 && end - begin > longest.end - longest.begin) longest = {begin, end};
    begin = end;
  }
  return longest;
}

char* printGroup(char* at, unsigned group) noexcept {
  if (group >= 0x1000) *at++ = hexDigits[group >> 12];
  if (group >= 0x100) *at++ = hexDigits[group >> 8 & 15U];
  if (group >= 0x10) *at++ = hexDigits[group >> 4 & 15U];
  *at++ = hexDigits[group & 15U];
  return at;
}

char* printDotted(char* at, const std::uint8_t* octets) noexcept {
  at = printDecimal(at, octets[0]);
  for (unsigned octet = 1; octet < 4; ++octet) {
    *at++ = '.';
    at = printDecimal(at, octets[octet]);
  }
  return at;
}

char* printGroups(char* at, const std::uint8_t* bytes) noexcept {
  std::array<unsigned, 8> groups;
  for (unsigned group = 0; group < groups.size(); ++group) {
    groups[group] = static_cast<unsigned>(bytes[2 * group] << 8 | bytes[2 * group + 1]);
  }
  const Run zeros = longestZeroRun(groups);
  const bool mapped = zeros.begin == 0 && zeros.end == 5 && groups[5] == 0xffff;
  for (unsigned group = 0; group < groups.size();) {
    if (group == zeros.begin) {
      *at++ = ':';
      *at++ = ':';
      group = zeros.end;
    } else if (mapped && group == 6) {
      *at++ = ':';
      return printDotted(at, bytes + 12);
    } else {
      if (group != 0 && group != zeros.end) *at++ = ':';
      at = printGroup(at, groups[group++]);
    }
  }
  return at;
}

void appendHex(std::string& out, unsigned char byte) {
  out += "\\x";
  out += hexDigits[byte >> 4];
  out += hexDigits[byte & 15U];
}

// A number that is too long to be a slip of the pen is cut short.
std::string shown(std::string_view digits) {
  return std::string(digits.substr(0, 20)) + (digits.size() > 20 ? "..." : "");
}

}  // namespace

char* printDecimal(char* at, std::uint8_t value) noexcept {
  // Four bytes at once, whatever the number of digits, cost less than a loop that counts.
  const DecimalText& text = decimals[value];
  std::memcpy(at, &text, sizeof text);
  return at + text.size;
}

char* printAddress(char* at, const IpGenAddr& value) noexcept {
  const std::uint8_t* bytes = value.bytes().data();
  return value.isIpv4() ? printDotted(at, bytes) : printGroups(at, bytes);
}

bool failDecimal(std::string_view digits, unsigned most, std::string_view name, std::string& why) {
  const bool leadingZero = digits[0] == '0';  // zero alone is never wrong
  why = std::string(name) + ' ' + shown(digits) +
        (leadingZero ? " has a leading zero" : " is above " + std::to_string(most));
  return false;
}

std::string characterAt(std::string_view text, std::size_t position) {
  return quoted(text.substr(position, 1)) + " at position " + std::to_string(position + 1);
}

std::string quoted(std::string_view text) {
  constexpr std::size_t most = 60;
  std::string out = "\"";
  for (const char c : text.substr(0, most)) {
    const bool plain = c >= ' ' && c <= '~' && c != '"' && c != '\\';
    plain ? out.push_back(c) : appendHex(out, static_cast<unsigned char>(c));
  }
  out += '"';
  if (text.size() > most) out += " and " + std::to_string(text.size() - most) + " more bytes";
  return out;
}

}  // namespace Norv::IpText
