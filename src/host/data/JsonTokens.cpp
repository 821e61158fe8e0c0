#include "data/JsonTokens.h"

#include <algorithm>

#include "text/JsonText.h"

namespace Host {

namespace ondemand = simdjson::ondemand;

JsonKind JsonTokens::kindOf(ondemand::json_type type) {
  switch (type) {
    case ondemand::json_type::object:
      return JsonKind::object;
    case ondemand::json_type::array:
      return JsonKind::array;
    case ondemand::json_type::string:
      return JsonKind::text;
    case ondemand::json_type::number:
      return JsonKind::number;
    case ondemand::json_type::boolean:
      return JsonKind::boolean;
    default:
      return JsonKind::null;
  }
}

JsonScalar JsonTokens::scalarOf(ondemand::value& value) const {
  const JsonKind kind = kindOf(take(value.type()));
  const std::string_view token = value.raw_json_token();
  if (kind == JsonKind::text) {
    const std::string_view content = inside(token.data() + 1);
    // The parser would take it for the name of a member, and go on behind the colon.
    if (isBeforeColon(content.data() + content.size())) {
      stumble();
    }
    return {kind, content};
  }
  const std::string_view raw = trimmed(token);
  // The parser has looked at the first character only.
  if ((kind == JsonKind::number && !isJsonNumber(raw)) ||
      (kind == JsonKind::boolean && raw != "true" && raw != "false") ||
      (kind == JsonKind::null && raw != "null")) {
    stumble();
  }
  return {kind, raw};
}

std::string_view JsonTokens::nameOf(simdjson::simdjson_result<ondemand::field>& field) const {
  return inside(take(field.key()).raw());
}

/// The inside of the JSON text that begins at `begin`, behind its quote.
std::string_view JsonTokens::inside(const char* begin) const {
  const char* const end = text_.data() + text_.size();
  const char* at = begin;
  while (at < end && *at != '"') {
    at += *at == '\\' ? 2 : 1;
  }
  return {begin, static_cast<std::size_t>(std::min(at, end) - begin)};
}

/// Whether a colon follows the text that ends with the quote at `quote`.
bool JsonTokens::isBeforeColon(const char* quote) const {
  const char* const end = text_.data() + text_.size();
  const std::string_view behind(std::min(quote + 1, end), end);
  const std::size_t next = behind.find_first_not_of(kJsonBlanks);
  return next != std::string_view::npos && behind[next] == ':';
}

}  // namespace Host
