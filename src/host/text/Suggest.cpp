#include "text/Suggest.h"

#include <algorithm>

#include "Kel/Text.h"
#include "text/Concat.h"

namespace Host {

std::string_view nearest(std::string_view word, const std::vector<std::string_view>& names) {
  constexpr std::size_t kLongest = 80;  // the distance costs the product of the lengths
  std::string_view best;
  std::size_t least = std::max<std::size_t>(2, word.size() / 3) + 1;
  for (const std::string_view name : names) {
    if (word.size() > kLongest) {
      break;
    }
    const std::size_t distance = Kel::editDistance(word, name);
    if (distance < least && distance < name.size()) {
      least = distance;
      best = name;
    }
  }
  return best;
}

std::string didYouMean(std::string_view word, const std::vector<std::string_view>& names) {
  const std::string_view name = nearest(word, names);
  return name.empty() ? "" : concat({"; did you mean \"", name, "\"?"});
}

}  // namespace Host
