#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace HashSpread {

constexpr std::size_t buckets = 65536;

/// Expects 65536 hashes to fall into 65536 buckets as random numbers do, whichever sixteen bits
/// choose the bucket: those fill 41427 (63.2 %), give or take 100, with at most about nine in one.
inline void expectSpread(const char* what, const std::vector<std::uint32_t>& hashes) {
  for (const unsigned shift : {0U, 8U, 16U}) {
    std::vector<std::size_t> load(buckets);
    for (const std::uint32_t hash : hashes) ++load[hash >> shift & (buckets - 1)];
    const auto empty = std::count(load.begin(), load.end(), 0U);
    EXPECT_LE(empty, 24600) << what << ", bits from " << shift;
    EXPECT_LE(*std::max_element(load.begin(), load.end()), 12U) << what << ", bits from " << shift;
  }
}

/// One hash per number from 0 to 65535, of the value that `make` builds from the number.
template <typename Make>
std::vector<std::uint32_t> hashesOf(Make make) {
  std::vector<std::uint32_t> hashes;
  hashes.reserve(buckets);
  for (std::uint32_t i = 0; i < buckets; ++i) hashes.push_back(make(i).hash());
  return hashes;
}

}  // namespace HashSpread
