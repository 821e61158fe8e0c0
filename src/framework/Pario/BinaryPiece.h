#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

#include "Kel/ValueType.h"
#include "Lumo/Site.h"
#include "Pario/Piece.h"

// How the pieces of a message lie in a record of the binary trace.

namespace [[using gnu: visibility("default")]] Pario {
namespace Impl {

/// The type of a value as the binary trace knows it.
template <class T>
const Lumo::ValueType* binaryType() {
  using Lumo::Kind;
  if constexpr (TextLike<T>) {
    static constexpr Lumo::ValueType type{Kind::text, 0, "Kel::String"};
    return &type;
  } else if constexpr (std::same_as<T, bool>) {
    static constexpr Lumo::ValueType type{Kind::boolean, 1, "bool"};
    return &type;
  } else if constexpr (std::integral<T>) {
    static constexpr std::string_view names[2][9] = {
        {"", "int8_t", "int16_t", "", "int32_t", "", "", "", "int64_t"},
        {"", "uint8_t", "uint16_t", "", "uint32_t", "", "", "", "uint64_t"}};
    static constexpr Lumo::ValueType type{std::is_unsigned_v<T> ? Kind::natural : Kind::integer,
                                          sizeof(T),
                                          names[std::is_unsigned_v<T> ? 1 : 0][sizeof(T)]};
    return &type;
  } else if constexpr (std::same_as<T, Kel::Seconds>) {
    static constexpr Lumo::ValueType type{Kind::real, sizeof(T), "Kel::Seconds"};
    return &type;
  } else if constexpr (Kel::NamedEnum<T>) {
    static const auto labels = kelNames(T{});  // which returns them by value
    static const Lumo::ValueType type{Kind::enumeration, sizeof(T), Kel::valueTypeOf<T>().name,
                                      labels};
    return &type;
  } else {
    static_assert(std::is_trivially_copyable_v<T> && sizeof(T) <= 0xffff,
                  "a traced value is text, a number, or a value type that may be copied as memory");
    static const Lumo::ValueType type{std::is_enum_v<T> ? Kind::enumeration : Kind::bytes,
                                      sizeof(T), Kel::valueTypeOf<T>().name};
    return &type;
  }
}

/// How many bytes the piece takes in a record, unless it is text with a NUL inside.
template <class T>
std::size_t recordedSize(const T& piece) noexcept {
  if constexpr (isLiteral<T>) {
    return 0;
  } else if constexpr (TextLike<T>) {
    return textView(piece).size() + 1;
  } else {
    return sizeof(T);
  }
}

/// Copies one word of text; false when there is a NUL in it.
template <class Word>
bool copyWord(std::byte* to, const char* from) noexcept {
  Word word = 0;
  std::memcpy(&word, from, sizeof word);
  std::memcpy(to, &word, sizeof word);
  constexpr auto ones = static_cast<Word>(0x0101010101010101U);
  return ((word - ones) & ~word & (ones << 7U)) == 0;
}

/// Copies text and puts a NUL behind it; false when there was a NUL inside. Names are short: a few
/// overlapping words are faster than two calls, for copying and for searching.
inline bool copyText(std::byte*& to, std::string_view text) noexcept {
  const std::size_t size = text.size();
  const char* const from = text.data();
  bool clean = true;
  if (size >= 8) {
    clean = copyWord<std::uint64_t>(to, from);
    for (std::size_t at = 8; at + 8 < size; at += 8) {
      clean &= copyWord<std::uint64_t>(to + at, from + at);
    }
    clean &= copyWord<std::uint64_t>(to + size - 8, from + size - 8);
  } else if (size >= 4) {
    clean = copyWord<std::uint32_t>(to, from);
    clean &= copyWord<std::uint32_t>(to + size - 4, from + size - 4);
  } else {
    for (std::size_t at = 0; at < size; ++at) {
      to[at] = static_cast<std::byte>(from[at]);
      clean &= from[at] != '\0';
    }
  }
  to[size] = std::byte{0};
  to += size + 1;
  return clean;
}

/// Copies a piece into a record; false for text with a NUL inside.
template <class T>
bool record(std::byte*& to, const T& piece) noexcept {
  if constexpr (isLiteral<T>) {
    return true;
  } else if constexpr (TextLike<T>) {
    return copyText(to, textView(piece));
  } else {
    std::memcpy(to, &piece, sizeof(T));
    to += sizeof(T);
    return true;
  }
}

/// The piece, with text in a form in which the binary trace can hold it.
template <class T>
decltype(auto) withoutNul(const T& piece) {
  if constexpr (!isLiteral<T> && TextLike<T>) {
    std::string out;
    for (const char byte : textView(piece)) {
      byte == '\0' ? out.append("\\x00") : out.append(1, byte);
    }
    return out;
  } else {
    return (piece);
  }
}

}  // namespace Impl
}  // namespace Pario
