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

/// Hands the finished message to the text trace, under the time of the open event.
void sendText(const Site& site, const std::string& message);

template <class... Pieces>
[[gnu::noinline, gnu::cold]] void writeText(const Site& site, const Pieces&... pieces) noexcept {
  try {
    std::string message = site.prefix;
    [[maybe_unused]] const char* const* literal = site.literals.data();
    (appendPiece(message, literal, pieces), ...);
    sendText(site, message);
  } catch (...) {  // NOLINT(bugprone-empty-catch)
    // Deliberate: without memory for the text the line is lost; a handler must not notice.
  }
}

/// Writes a record to the default ring, whatever has to be done for it. False when nothing was
/// written because of a NUL inside a text.
template <class... Pieces>
bool writeBinary(const Site& site, Place place, const Pieces&... pieces) noexcept {
  Lumo::TraceFile* const ring = Lumo::defaultHandle();
  const std::size_t size = recordedSize(pieces...);
  std::byte* const at = ring == nullptr
                            ? nullptr
                            : ring->begin(site.id, size, openEvent.stamp, openEvent.seconds, place);
  if (at == nullptr) {
    return true;
  }
  const bool whole = copyPieces(at, pieces...);
  whole ? ring->finish(at + size) : ring->abandon();
  return whole;
}

/// Writes the record with every NUL inside a text escaped.
template <class... Pieces>
[[gnu::noinline, gnu::cold]] void writeEscaped(const Site& site, Place place,
                                               const Pieces&... pieces) noexcept {
  try {
    writeBinary(site, place, withoutNul(pieces)...);
  } catch (...) {  // NOLINT(bugprone-empty-catch)
    // Deliberate: without memory for the copy the record is lost; a handler must not notice.
  }
}

template <class... Pieces>
void writePieces(const LineOf<Pieces...>& line, Pieces... pieces) noexcept;

/// A record outside of any event is one by itself.
template <class... Pieces>
[[gnu::noinline]] void writeAlone(const LineOf<Pieces...>& line, Pieces... pieces) noexcept {
  enterEvent();
  writePieces<Pieces...>(line, pieces...);
  leaveEvent();
}

/// What writePieces does when storing a few numbers is not enough.
template <class... Pieces>
[[gnu::noinline, gnu::cold]] void writeFully(const LineOf<Pieces...>& line,
                                             Pieces... pieces) noexcept {
  if (!inScope(line.place, line.form)) {
    return;
  }
  const Site* const site = siteOf<std::remove_cvref_t<Pieces>...>(line);
  if (site == nullptr) {
    return;
  }
  const bool binary = (listening.load(std::memory_order_relaxed) & site->binaryOnly) != 0;
  if (binary && !writeBinary(*site, line.place, pieces...)) {
    writeEscaped(*site, line.place, pieces...);
  }
  if (site->text->listens(line.spot.level)) {
    writeText(*site, pieces...);
  }
}

/// `write` with its pieces as they are passed on. What nearly every record is, one of a known site
/// for the binary trace alone inside an event, is written here. All else is left to a call that
/// takes the same arguments and is the last one, so that none has to be saved for it.
template <class... Pieces>
[[gnu::noinline]] void writePieces(const LineOf<Pieces...>& line, Pieces... pieces) noexcept {
  if (openEvent.depth == 0) [[unlikely]] {
    return writeAlone<Pieces...>(line, pieces...);
  }
  const Site* const site = knownSiteOf<std::remove_cvref_t<Pieces>...>(line);
  Lumo::TraceFile* const ring = Lumo::defaultHandle();
  if (site != nullptr && ring != nullptr &&
      (listening.load(std::memory_order_relaxed) & site->concerned) == site->binaryOnly &&
      ring->tryRecord(site->id, recordedSize(pieces...), openEvent.stamp, openEvent.seconds,
                      line.place, [&](std::byte* place) { return copyPieces(place, pieces...); }))
      [[likely]] {
    return;
  }
  writeFully<Pieces...>(line, pieces...);
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
[[gnu::always_inline]] inline void write(const Line& line, const Pieces&... pieces) noexcept {
  Impl::writePieces<Impl::Passed<Pieces>...>(Impl::lineOf(line, pieces...), Impl::pass(pieces)...);
}

}  // namespace Pario
