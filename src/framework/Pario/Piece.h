#pragma once

#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

#include "Kel/Text.h"
#include "Kel/TextTrace.h"

namespace [[using gnu: visibility("default")]] Pario {

/// Literal text that is not a literal at the place of the call, for instance from a table of
/// messages. Like a literal it belongs to the site, so it must live as long as the process.
struct Literal {
  const char* text;
};

namespace Impl {

/// What a literal is passed on as: its place among the pieces. It takes no register; the texts of
/// all literals go with the line (LineOf).
struct Fixed {};

template <class T>
inline constexpr bool isLiteral = std::same_as<T, Literal> || std::same_as<T, Fixed>;
template <std::size_t N>
inline constexpr bool isLiteral<char[N]> = true;

/// A name type that wraps the framework's string.
template <class T>
concept WrappedString = requires(const T& value) {
  { value.stringValue() } -> std::same_as<const Kel::String&>;
};
template <class T>
concept TextLike = std::convertible_to<const T&, std::string_view> || WrappedString<T>;

template <TextLike T>
std::string_view textView(const T& value) noexcept {
  if constexpr (WrappedString<T>) {
    return value.stringValue().view();
  } else {
    return value;
  }
}

/// How a piece goes on from the place of the call: literals as Fixed, every text as a view, small
/// values in registers, the rest by reference. So calls that differ only in the lengths of their
/// literals or in their types of text share one function.
template <class T>
using Passed = std::conditional_t<
    isLiteral<T>, Fixed,
    std::conditional_t<
        TextLike<T>, std::string_view,
        std::conditional_t<std::is_trivially_copyable_v<T> && sizeof(T) <= 8, T, const T&>>>;

template <class T>
Passed<T> pass(const T& piece) noexcept {
  if constexpr (isLiteral<T>) {
    return {};
  } else if constexpr (TextLike<T>) {
    return textView(piece);
  } else {
    return piece;
  }
}

/// Appends the printed form, control bytes of values escaped. `literal` is the next literal.
template <class T>
void appendPiece(std::string& out, [[maybe_unused]] const char* const*& literal, const T& piece) {
  if constexpr (isLiteral<T>) {
    out += *literal++;
  } else if constexpr (TextLike<T>) {
    Kel::TextTrace::appendEscaped(out, textView(piece));
  } else {
    const std::size_t from = out.size();
    Kel::appendValue(out, piece);
    Kel::TextTrace::escapeFrom(out, from);
  }
}

}  // namespace Impl
}  // namespace Pario
