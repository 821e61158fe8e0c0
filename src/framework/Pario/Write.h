#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <type_traits>

#include "Lumo/TraceFile.h"
#include "Pario/Event.h"
#include "Pario/Listening.h"
#include "Pario/Piece.h"
#include "Pario/Site.h"

namespace Pario {
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

/// A record that was started: where its values go, null when there is none.
struct OpenRecord {
  std::byte* place;
  Lumo::TraceFile* ring;
};

/// Settles the time of a message, for both traces: that of the open event, or the present one. Then
/// starts a record in the default ring, if the binary trace listens to the site's level.
OpenRecord openRecord(const Site& site, std::size_t size) noexcept;

/// False when nothing was written because of a NUL inside a text.
template <class... Pieces>
[[gnu::always_inline]] inline bool writeBinary(const Site& site, const Pieces&... pieces) noexcept {
  auto [at, ring] = openRecord(site, (std::size_t{0} + ... + recordedSize(pieces)));
  if (at == nullptr) {
    return true;
  }
  bool clean = true;
  ((clean = record(at, pieces) && clean), ...);
  if (!clean) [[unlikely]] {
    ring->abandon();
    return false;
  }
  ring->finish(at);
  return true;
}

/// Writes the record anew with every NUL inside a text escaped.
template <class... Pieces>
[[gnu::noinline, gnu::cold]] void writeEscaped(const Site& site, const Pieces&... pieces) noexcept {
  try {
    writeBinary(site, withoutNul(pieces)...);
  } catch (...) {  // NOLINT(bugprone-empty-catch)
    // Deliberate: without memory for the copy the record is lost; a handler must not notice.
  }
}

/// Hands the finished message to the text trace, under the time that openRecord settled.
void sendText(const Site& site, const std::string& message);

template <class... Pieces>
[[gnu::noinline, gnu::cold]] void writeText(const Site& site, const Pieces&... pieces) noexcept {
  try {
    std::string message = site.prefix;
    (appendPiece(message, pieces), ...);
    sendText(site, message);
  } catch (...) {  // NOLINT(bugprone-empty-catch)
    // Deliberate: without memory for the text the line is lost; a handler must not notice.
  }
}

/// `write` with its pieces as they are passed on.
template <class... Pieces>
[[gnu::noinline]] void writePieces(const Line& line, Pieces... pieces) noexcept {
  const Site* const site = siteOf<std::remove_cvref_t<Pieces>...>(line, pieces...);
  if (site == nullptr) [[unlikely]] {
    return;
  }
  if (!writeBinary(*site, pieces...)) [[unlikely]] {
    writeEscaped<std::remove_cvref_t<Pieces>...>(*site, pieces...);
  }
  if (site->text->listens(line.level)) [[unlikely]] {
    writeText<std::remove_cvref_t<Pieces>...>(*site, pieces...);
  }
}

}  // namespace Impl

/// Writes one message to both traces, as far as they listen. To be called when `on(line.level)`.
///
/// A piece that is a `const char` array is a literal: it belongs to the site and is written once
/// per process, so an array that is not a literal must be passed as a std::string_view. Every other
/// piece is a value: text (all that converts to std::string_view, and names that wrap a
/// Kel::String), bool, integers, Kel::Seconds, enumerations, and value types with a descriptor
/// (Kel::valueTypeOf) that may be copied as memory.
///
/// The binary trace takes the values raw, nothing is formatted for it. The text trace formats them.
/// Both get the same pieces in the same order under the same time, so a reader of the binary trace
/// prints the line that the text trace printed. Never fails: what cannot be written is lost.
template <class... Pieces>
void write(const Line& line, const Pieces&... pieces) noexcept {
  Impl::writePieces<Impl::Passed<Pieces>...>(line, Impl::pass(pieces)...);
}

}  // namespace Pario
