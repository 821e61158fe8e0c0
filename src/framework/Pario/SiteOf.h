#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <type_traits>

#include "Pario/BinaryPiece.h"
#include "Pario/Piece.h"
#include "Pario/Site.h"

// From the pieces of a call to its site.

namespace [[using gnu: visibility("default")]] Pario {
namespace Impl {

template <class T>
constexpr auto typeFunction() -> const Lumo::ValueType* (*)() {
  if constexpr (isLiteral<T>) {
    return nullptr;
  } else {
    return binaryType<T>;
  }
}

template <class... Pieces>
inline constexpr std::size_t literalsAmong = (std::size_t{0} + ... + (isLiteral<Pieces> ? 1 : 0));

template <class... Pieces>
struct ShapeOf {
  // The null behind the last one is there because an array cannot be empty.
  static constexpr const Lumo::ValueType* (*types[])() = {typeFunction<Pieces>()..., nullptr};
  static constexpr Shape shape{sizeof...(Pieces), types};
};

/// A line with the literals among its pieces. One function serves all lines with the same types of
/// pieces; what it gets in memory it need not keep in registers.
template <std::size_t Literals>
struct LineWith : Line {
  static_assert(Literals <= kMostLiterals, "a message has at most six literals");
  std::array<const char*, Literals> literals;
};
template <class... Pieces>
using LineOf = LineWith<literalsAmong<Pieces...>>;

template <class... Pieces>
[[gnu::always_inline]] inline LineOf<Pieces...> lineOf(const Line& line,
                                                       const Pieces&... pieces) noexcept {
  LineOf<Pieces...> all{line, {}};
  [[maybe_unused]] std::size_t next = 0;
  [[maybe_unused]] const auto take = [&]([[maybe_unused]] const auto& piece) {
    using T = std::remove_cvref_t<decltype(piece)>;
    if constexpr (std::is_array_v<T>) {
      all.literals[next++] = piece;
    } else if constexpr (isLiteral<T>) {
      all.literals[next++] = piece.text;
    }
  };
  (take(pieces), ...);
  return all;
}

/// The site of a call, null when it was not registered yet.
template <class... Pieces>
[[gnu::always_inline]] inline const Site* knownSiteOf(const LineOf<Pieces...>& line) noexcept {
  for (const Site* site = bucketOf(line).load(std::memory_order_acquire); site != nullptr;
       site = site->next) {
    bool same = isSiteOf(*site, line, ShapeOf<Pieces...>::shape);
    for (std::size_t i = 0; i < line.literals.size(); ++i) {  // std::equal is a call to memcmp
      same = same && site->literals[i] == line.literals[i];
    }
    if (same) [[likely]] {
      return site;
    }
  }
  return nullptr;
}

/// The site of a call, which may come from any thread. Null without memory for it.
template <class... Pieces>
const Site* siteOf(const LineOf<Pieces...>& line) noexcept {
  if (const Site* const site = knownSiteOf<Pieces...>(line); site != nullptr) {
    return site;
  }
  std::array<const char*, kMostLiterals> literals{};
  std::copy(line.literals.begin(), line.literals.end(), literals.begin());
  return registerSite(line, ShapeOf<Pieces...>::shape, literals);
}

}  // namespace Impl
}  // namespace Pario
