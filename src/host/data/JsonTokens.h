#pragma once

#include <simdjson.h>

#include <string_view>

#include "data/ScalarText.h"

namespace Host {

/// What the parser finds, as pieces of the text that it reads. Where the parser stumbles,
/// simdjson::simdjson_error comes out.
class JsonTokens {
 public:
  /// The padding that the parser wants lies behind `text`.
  explicit JsonTokens(std::string_view text) : text_(text) {}

  JsonScalar scalarOf(simdjson::ondemand::value& value) const;
  /// The name of a member, without its quotes.
  /// Deliberate: escapes in a name are not resolved; no name needs one.
  std::string_view nameOf(simdjson::simdjson_result<simdjson::ondemand::field>& field) const;
  std::size_t offsetOf(std::string_view token) const {
    return static_cast<std::size_t>(token.data() - text_.data());
  }

  static JsonKind kindOf(simdjson::ondemand::json_type type);
  [[noreturn]] static void stumble() { throw simdjson::simdjson_error(simdjson::TAPE_ERROR); }

 private:
  std::string_view inside(const char* begin) const;
  bool isBeforeColon(const char* quote) const;

  std::string_view text_;
};

inline constexpr std::string_view kJsonBlanks = " \t\r\n";

/// Without the blanks behind it.
inline std::string_view trimmed(std::string_view token) {
  return token.substr(0, token.find_last_not_of(kJsonBlanks) + 1);
}

/// With the quotes around it.
inline std::string_view quoted(std::string_view inside) {
  return {inside.data() - 1, inside.size() + 2};
}

/// How many bytes a message about `token` underlines: of an object or array its bracket.
inline std::size_t underlined(std::string_view token) {
  return token.starts_with('{') || token.starts_with('[') ? 1 : trimmed(token).size();
}

template <class T>
T take(simdjson::simdjson_result<T> result) {
  T taken;
  if (const auto error = std::move(result).get(taken)) {
    throw simdjson::simdjson_error(error);
  }
  return taken;
}

}  // namespace Host
