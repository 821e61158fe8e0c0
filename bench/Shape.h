#pragma once

#include <string>
#include <vector>

#include "Keys.h"
#include "VelaL3/VelaL3.h"

namespace Bench {

/// How large a tree is. The largest one has 1.1 million set entries of 20.6 bytes on average in
/// 40,000 matches.
struct Shape {
  std::uint32_t matches;

  static constexpr std::uint32_t kPerMatch = 27;  // and one more in every second match
  static Shape ofEntries(std::uint32_t entries) { return {entries * 2 / 55}; }
  std::size_t entries() const { return std::size_t{matches} * 55 / 2; }
};

inline std::string deviceName(std::uint32_t number) { return "fw" + std::to_string(number); }
inline std::string vrfName(std::uint32_t number) { return "vrf" + std::to_string(number); }

/// The set entries of match `number`: 9 source and 12 destination prefixes, 5 ranges, 1 or 2 ports.
template <class Match>
void fillMatch(Match& match, std::uint32_t number) {
  const std::uint32_t first = number * 32;
  for (std::uint32_t i = 0; i != 9; ++i) {
    match.srcIpIs(prefixOf(first + i));
  }
  for (std::uint32_t i = 9; i != 21; ++i) {
    match.dstIpIs(prefixOf(first + i));
  }
  for (std::uint32_t i = 21; i != 26; ++i) {
    match.srcIpRangeIs({prefixOf(first + i).address(), prefixOf(first + i + 1).address()});
  }
  match.dstL4AppIs({static_cast<std::uint16_t>(number), 6});
  if (number % 2 != 0) {
    match.dstL4AppIs({static_cast<std::uint16_t>(number), 17});
  }
}

/// A prefix that match `number` does not have.
inline Prefix absentPrefix(std::uint32_t number) { return prefixOf(number * 32 + 31); }

/// Fills the version-1 source `source`: policies of at most 5,000 rules with two origins each, two
/// policies per device. Returns its matches. `Priority` makes the key of a rule from a number.
template <class Match, class Source, class Priority>
std::vector<Match*> fillSource(Source& source, const Shape& shape, Priority priority) {
  constexpr std::uint32_t kPerPolicy = 10'000;
  std::vector<Match*> matches;
  for (std::uint32_t number = 0; number != shape.matches; ++number) {
    const std::uint32_t policy = number / kPerPolicy, rule = number % kPerPolicy / 2;
    auto&& origin = source.policySetIs(deviceName(policy / 2))
                        ->policyIs(L3::VrfName(vrfName(policy)))
                        ->ruleIs(priority(20'000 + rule))
                        ->originIs(number % 2 == 0 ? "web" : "telemetry");
    origin->actionIs(VelaL3::VelaAction::drop);
    auto&& match = origin->matchIs();
    fillMatch(*match, number);
    matches.push_back(&*match);
  }
  return matches;
}

}  // namespace Bench
