#pragma once

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
struct ShapeOf {
  static constexpr std::size_t literals = (std::size_t{0} + ... + (isLiteral<Pieces> ? 1 : 0));
  static_assert(literals <= kMostLiterals, "a message has at most six literals");
  // The null behind the last one is there because an array cannot be empty.
  static constexpr const Lumo::ValueType* (*types[])() = {typeFunction<Pieces>()..., nullptr};
  static constexpr Shape shape{sizeof...(Pieces), types};
};

template <class... Pieces>
std::array<const char*, kMostLiterals> literalsOf(const Pieces&... pieces) noexcept {
  std::array<const char*, kMostLiterals> literals{};
  [[maybe_unused]] std::size_t next = 0;
  [[maybe_unused]] const auto list = [&]([[maybe_unused]] const auto& piece) {
    if constexpr (isLiteral<std::remove_cvref_t<decltype(piece)>>) {
      literals[next++] = piece.text;
    }
  };
  (list(pieces), ...);
  return literals;
}

template <class... Pieces>
bool hasLiterals(const Site& site, const Pieces&... pieces) noexcept {
  [[maybe_unused]] std::size_t next = 0;
  [[maybe_unused]] const auto same = [&]([[maybe_unused]] const auto& piece) {
    if constexpr (isLiteral<std::remove_cvref_t<decltype(piece)>>) {
      return site.literals[next++] == piece.text;
    } else {
      return true;
    }
  };
  return (true && ... && same(pieces));
}

/// Registers the site of a call, which may come from any thread. Null without memory for it.
template <class... Pieces>
[[gnu::noinline, gnu::cold]] const Site* newSiteOf(const Line& line,
                                                   const Pieces&... pieces) noexcept {
  return registerSite(line, ShapeOf<Pieces...>::shape, literalsOf(pieces...));
}

template <class... Pieces>
const Site* siteOf(const Line& line, const Pieces&... pieces) noexcept {
  for (const Site* site = bucketOf(line).load(std::memory_order_acquire); site != nullptr;
       site = site->next) {
    if (isSiteOf(*site, line, ShapeOf<Pieces...>::shape) && hasLiterals(*site, pieces...))
        [[likely]] {
      return site;
    }
  }
  return newSiteOf(line, pieces...);
}

}  // namespace Impl
}  // namespace Pario
