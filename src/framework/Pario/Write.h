#pragma once

#include <cstddef>
#include <string>
#include <type_traits>

#include "Lumo/DefaultHandle.h"
#include "Lumo/TraceFile.h"
#include "Pario/BinaryPiece.h"
#include "Pario/Event.h"
#include "Pario/Listening.h"
#include "Pario/Piece.h"
#include "Pario/Scope.h"
#include "Pario/Site.h"
#include "Pario/SiteOf.h"

namespace [[using gnu: visibility("default")]] Pario {
namespace Impl {

/// A record that was started: where its values go, null when there is none.
struct OpenRecord {
  std::byte* place;
  Lumo::TraceFile* ring;
};

/// Settles the time of a message, for both traces: that of the open event, or the present one. Then
/// starts a record in the default ring, if the binary trace listens to the site's level.
OpenRecord openRecord(const Site& site, std::size_t size, Place place) noexcept;

/// False when nothing was written because of a NUL inside a text.
template <class... Pieces>
[[gnu::always_inline]] inline bool writeBinary(const Site& site, Place place,
                                               const Pieces&... pieces) noexcept {
  auto [at, ring] = openRecord(site, (std::size_t{0} + ... + recordedSize(pieces)), place);
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
[[gnu::noinline, gnu::cold]] void writeEscaped(const Site& site, Place place,
                                               const Pieces&... pieces) noexcept {
  try {
    writeBinary(site, place, withoutNul(pieces)...);
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
  if (!inScope(line.place, line.form)) {
    return;
  }
  const Site* const site = siteOf<std::remove_cvref_t<Pieces>...>(line, pieces...);
  if (site == nullptr) [[unlikely]] {
    return;
  }
  if (!writeBinary(*site, line.place, pieces...)) [[unlikely]] {
    writeEscaped<std::remove_cvref_t<Pieces>...>(*site, line.place, pieces...);
  }
  if (site->text->listens(line.level)) [[unlikely]] {
    writeText<std::remove_cvref_t<Pieces>...>(*site, pieces...);
  }
}

}  // namespace Impl

/// Writes one message to both traces, as far as they listen, if it is in their scope. To be called
/// when `on(line.level)`.
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
