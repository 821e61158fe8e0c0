#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "text/Concat.h"
#include "text/Suggest.h"

namespace Host {

// The words of a change line: members, and what some of them may be.

inline constexpr std::array<std::string_view, 6> kVerbs{"start",  "stop",    "suspend",
                                                        "resume", "cleanup", "initialize"};
inline constexpr std::array<std::string_view, 2> kTrees{"policy", "service-device"};
inline constexpr std::array<std::string_view, 4> kShows{"v2", "status", "audit", "stats"};

/// The position of `name`; `names.size()` when it is not there.
template <class Names>
std::size_t positionOf(std::string_view name, const Names& names) {
  return static_cast<std::size_t>(std::ranges::find(names, name) - names.begin());
}

template <class Names>
std::string whyUnknown(std::string_view name, const Names& names) {
  std::string all;
  for (const std::string_view each : names) {
    all += concat({all.empty() ? "" : ", ", each});
  }
  const std::string meant = didYouMean(name, {names.begin(), names.end()});
  return concat({"\"", name.substr(0, 80), "\" is unknown here; expected ",
                 names.size() > 1 ? "one of " : "", all, meant});
}

}  // namespace Host
