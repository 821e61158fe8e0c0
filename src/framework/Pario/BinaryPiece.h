#pragma once

#include <bit>
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

template <class T>
std::size_t recordedSizeOf(const T& piece) noexcept {
  if constexpr (isLiteral<T>) {
    return 0;
  } else if constexpr (TextLike<T>) {
    return textView(piece).size() + 1;
  } else {
    return sizeof(T);
  }
}

/// How many bytes the pieces take in a record, unless there is text with a NUL inside.
template <class... Pieces>
std::size_t recordedSize(const Pieces&... pieces) noexcept {
  return (std::size_t{0} + ... + recordedSizeOf(pieces));
}

/// Copies the values of one record, and notes whether there was a NUL inside of a text.
class Copier {
 public:
  explicit Copier(std::byte* to) noexcept : to_(to) {}

  template <class T>
  [[gnu::always_inline]] void copy(const T& piece) noexcept {
    if constexpr (isLiteral<T>) {
      return;
    } else if constexpr (TextLike<T>) {
      copyText(textView(piece));
    } else {
      std::memcpy(to_, &piece, sizeof(T));
      to_ += sizeof(T);
    }
  }

  /// Whether there was no NUL.
  bool clean() const noexcept { return std::bit_cast<std::uint64_t>(zeros_) == 0; }

 private:
  // One register, whose bytes are compared all at once.
  using Bytes [[gnu::vector_size(8)]] = signed char;

  // Names are short: a few words that overlap are faster than two calls, for copying and for
  // searching.
  [[gnu::always_inline]] void copyText(std::string_view text) noexcept {
    const std::size_t size = text.size();
    const char* const from = text.data();
    if (size >= 8) {
      search(copyWord<Bytes>(from, 0));
      for (std::size_t at = 8; at + 8 < size; at += 8) {
        search(copyWord<Bytes>(from, at));
      }
      search(copyWord<Bytes>(from, size - 8));
    } else if (size >= 4) {
      const std::uint64_t first = copyWord<std::uint32_t>(from, 0);
      search(std::bit_cast<Bytes>(first << 32U | copyWord<std::uint32_t>(from, size - 4)));
    } else if (size != 0) {
      const std::uint64_t first = copyWord<std::uint8_t>(from, 0);
      const std::uint64_t middle = copyWord<std::uint8_t>(from, size / 2);
      const std::uint64_t last = copyWord<std::uint8_t>(from, size - 1);
      search(std::bit_cast<Bytes>(first << 16U | middle << 8U | last | ~std::uint64_t{0xffffff}));
    }
    to_[size] = std::byte{0};
    to_ += size + 1;
  }

  template <class Word>
  [[gnu::always_inline]] Word copyWord(const char* from, std::size_t at) noexcept {
    Word word{};
    std::memcpy(&word, from + at, sizeof word);
    std::memcpy(to_ + at, &word, sizeof word);
    return word;
  }
  [[gnu::always_inline]] void search(Bytes word) noexcept { zeros_ |= word == Bytes{}; }

  std::byte* to_;
  Bytes zeros_{};  // all bits of a byte are set where a word had a NUL
};

/// Copies pieces to `to`, where they take recordedSize bytes; false for text with a NUL inside.
template <class... Pieces>
[[gnu::always_inline]] inline bool copyPieces(std::byte* to, const Pieces&... pieces) noexcept {
  Copier copier(to);
  (copier.copy(pieces), ...);
  return copier.clean();
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
