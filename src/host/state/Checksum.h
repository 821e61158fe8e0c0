#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Host {

/// CRC-32C, the Castagnoli polynomial: RFC 3720, section 12.1 and appendix B.4. What comes in
/// pieces is given the checksum of the pieces before.
std::uint32_t checksum(std::string_view bytes, std::uint32_t before = 0);

/// Eight hexadecimal digits.
std::string checksumText(std::uint32_t checksum);

}  // namespace Host
