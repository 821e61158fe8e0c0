#pragma once

#include <cstdint>
#include <vector>

#include "Norv/Norv.h"

#ifdef BENCH_ABSL
#include <absl/container/flat_hash_set.h>
#endif

namespace Bench {

using Prefix = Norv::IpGenPrefix;

/// A host prefix whose address has nothing to do with those of the neighbouring numbers; different
/// numbers have different ones.
inline Prefix prefixOf(std::uint32_t number) {
  return {Norv::IpGenAddr::ipv4(number * 0x9E37'79B1U), 32};
}

/// The prefixes of `from`, `from` + 1, … .
inline std::vector<Prefix> prefixes(std::size_t count, std::uint32_t from = 0) {
  std::vector<Prefix> all;
  all.reserve(count);
  for (std::uint32_t i = 0; i != count; ++i) {
    all.push_back(prefixOf(from + i));
  }
  return all;
}

/// One hash for all containers, so that they differ in what they do with it only.
struct KeyHash {
  template <class Key>
  std::size_t operator()(const Key& key) const noexcept {
    return key.hash();
  }
};

}  // namespace Bench
