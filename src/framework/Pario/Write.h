#pragma once

#include <cstddef>

#include "Lumo/TraceFile.h"
#include "Pario/Event.h"
#include "Pario/Listening.h"
#include "Pario/Piece.h"
#include "Pario/Site.h"

namespace Pario {
namespace Impl {

template <class... Pieces>
const Shape& shapeOf() {
  static const Lumo::ValueType* const types[] = {[]() -> const Lumo::ValueType* {
                                                   if constexpr (isLiteral<Pieces>) {
                                                     return nullptr;
                                                   } else {
                                                     return binaryType<Pieces>();
                                                   }
                                                 }()...,
                                                 nullptr};
  static const Shape shape{sizeof...(Pieces), (std::size_t{0} + ... + (isLiteral<Pieces> ? 1 : 0)),
                           types};
  return shape;
}

/// Puts the address of a literal piece into the list.
template <class T>
void listLiteral([[maybe_unused]] const char**& list, [[maybe_unused]] const T& piece) noexcept {
  if constexpr (isLiteral<T>) {
    *list++ = LiteralTraits<T>::text(piece);
  }
}

/// False when nothing was written because of a NUL inside a text.
template <class... Pieces>
bool writeBinary(Lumo::TraceFile& ring, const Site& site, const EventTime& time,
                 const Pieces&... pieces) noexcept {
  std::byte* at = ring.begin(*site.binary, (std::size_t{0} + ... + recordedSize(pieces)),
                             time.stamp, time.seconds);
  if (at == nullptr) [[unlikely]] {
    return true;
  }
  if (!(true & ... & record(at, pieces))) [[unlikely]] {
    ring.abandon();
    return false;
  }
  ring.finish(at);
  return true;
}

/// Hands the finished message to the text trace.
void sendText(const Site& site, const Line& line, const EventTime& time,
              const std::string& message);

template <class... Pieces>
[[gnu::noinline, gnu::cold]] void writeText(const Site& site, const Line& line,
                                            const EventTime& time, const Pieces&... pieces) {
  std::string message = site.prefix;
  (appendPiece(message, pieces), ...);
  sendText(site, line, time, message);
}

/// The default ring when the binary trace listens to `level`, else null.
inline Lumo::TraceFile* ringFor(unsigned level) noexcept {
  const bool listens = (listening.load(std::memory_order_relaxed) & (0x10000U << level)) != 0;
  return listens ? Lumo::defaultHandle() : nullptr;
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
[[gnu::noinline]] void write(const Line& line, const Pieces&... pieces) noexcept {
  try {
    const Impl::Shape& shape = Impl::shapeOf<Pieces...>();
    const char* literals[sizeof...(Pieces) + 1];
    const char** list = literals;
    (Impl::listLiteral(list, pieces), ...);
    const Impl::Site& site = Impl::findSite(line, shape, literals);
    const EventTime time = Impl::timeNow();
    if (Lumo::TraceFile* const ring = Impl::ringFor(line.level);
        ring != nullptr && !Impl::writeBinary(*ring, site, time, pieces...)) [[unlikely]] {
      Impl::writeBinary(*ring, site, time, Impl::withoutNul(pieces)...);
    }
    if (site.text->listens(line.level)) [[unlikely]] {
      Impl::writeText(site, line, time, pieces...);
    }
  } catch (...) {  // NOLINT(bugprone-empty-catch)
    // Deliberate: without memory for a description the line is lost; a handler must not notice.
  }
}

}  // namespace Pario
