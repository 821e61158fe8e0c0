#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

/// What a fuzzer calls with bytes that it has made up; each target defines it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace Fuzz {

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// Ends the process where what must hold does not.
inline void require(bool holds, const char* what) {
  if (!holds) {
    std::fprintf(stderr, "it does not hold that %s\n", what);
    std::abort();
  }
}

}  // namespace Fuzz
