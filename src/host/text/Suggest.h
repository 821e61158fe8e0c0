#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Host {

/// The one of `names` that is spelt most like `word`; empty when none is near.
std::string_view nearest(std::string_view word, const std::vector<std::string_view>& names);

/// `; did you mean "..."?` with the nearest name; empty when none is near.
std::string didYouMean(std::string_view word, const std::vector<std::string_view>& names);

}  // namespace Host
