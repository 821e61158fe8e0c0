#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace HashSpread {

constexpr std::size_t buckets = 65536;

/// How 65536 hashes fall into 65536 buckets. Random numbers fill 41427 (63.2 %), give or take 100,
/// and leave no bucket with more than about nine.
struct Spread {
  std::size_t filled = 0;
  std::size_t fullest = 0;
};

/// Takes the bucket from the sixteen bits of a hash that start at bit `shift`.
inline Spread spreadOf(const std::vector<std::uint32_t>& hashes, unsigned shift) {
  std::vector<std::size_t> load(buckets);
  for (const std::uint32_t hash : hashes) ++load[hash >> shift & (buckets - 1)];
  const auto empty = std::count(load.begin(), load.end(), 0U);
  return {buckets - static_cast<std::size_t>(empty), *std::max_element(load.begin(), load.end())};
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
