#include "state/Checksum.h"

#include <array>
#include <charconv>

namespace Host {
namespace {

constexpr std::uint32_t kPolynomial = 0x82f63b78;  // its bits from low to high

constexpr std::array<std::uint32_t, 256> makeTable() {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t byte = 0; byte < table.size(); ++byte) {
    std::uint32_t rest = byte;
    for (int bit = 0; bit < 8; ++bit) {
      rest = (rest >> 1U) ^ ((rest & 1U) != 0 ? kPolynomial : 0);
    }
    table[byte] = rest;
  }
  return table;
}

constexpr std::array<std::uint32_t, 256> kTable = makeTable();

}  // namespace

std::uint32_t checksum(std::string_view bytes, std::uint32_t before) {
  std::uint32_t rest = ~before;
  for (const char c : bytes) {
    rest = kTable[(rest ^ static_cast<unsigned char>(c)) & 0xffU] ^ (rest >> 8U);
  }
  return ~rest;
}

std::string checksumText(std::uint32_t checksum) {
  char digits[8];
  const auto length =
      static_cast<std::size_t>(std::to_chars(digits, std::end(digits), checksum, 16).ptr - digits);
  return std::string(8 - length, '0').append(digits, length);
}

}  // namespace Host
