#include "data/ScalarText.h"

#include "text/Concat.h"
#include "text/JsonText.h"

namespace Host {
namespace {

using Kel::Encoding;

JsonKind kindOf(Encoding encoding) {
  switch (encoding) {
    case Encoding::number:
      return JsonKind::number;
    case Encoding::boolean:
      return JsonKind::boolean;
    case Encoding::record:
      return JsonKind::object;
    default:
      return JsonKind::text;
  }
}

/// Why the text cannot be YANG text; empty when it can. What is no character at all, and control
/// characters but tab and line ends, have no place in it.
std::string_view whyNoText(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (c == 0) {
      return "text must not hold NUL (\\u0000)";
    }
    if (c < 0x20 && c != '\t' && c != '\n' && c != '\r') {
      return "text must not hold control characters but \\t, \\n and \\r";
    }
    const std::string_view three = text.substr(i, 3);
    const bool lastTwo = three == "\xef\xbf\xbe" || three == "\xef\xbf\xbf";
    const bool reserved = three >= "\xef\xb7\x90" && three <= "\xef\xb7\xaf" && three.size() == 3;
    // U+1FFFE, U+1FFFF and so on: the last two of each plane.
    const bool lastTwoOfPlane = c >= 0xf0 && i + 3 < text.size() &&
                                (static_cast<unsigned char>(text[i + 1]) & 0x0fU) == 0x0f &&
                                text[i + 2] == '\xbf' &&
                                (text[i + 3] == '\xbe' || text[i + 3] == '\xbf');
    if (lastTwo || reserved || lastTwoOfPlane) {
      return "text must not hold code points that are no characters, such as U+FFFE";
    }
  }
  return {};
}

}  // namespace

std::string_view nameOf(JsonKind kind) {
  switch (kind) {
    case JsonKind::object:
      return "an object";
    case JsonKind::array:
      return "an array";
    case JsonKind::text:
      return "text";
    case JsonKind::number:
      return "a number";
    case JsonKind::boolean:
      return "true or false";
    default:
      return "null";
  }
}

bool ScalarReader::read(const Node& node, const JsonScalar& scalar, void* value) {
  if (scalar.kind != kindOf(node.type->encoding)) {
    return wrongKind(node, scalar);
  }
  if (scalar.kind == JsonKind::text) {
    return readText(node, scalar.raw, value);
  }
  if (scalar.kind == JsonKind::number &&
      scalar.raw.find_first_of(".eE") != std::string_view::npos) {
    return node.type->parse(wholeDigits(scalar.raw), value, why_);
  }
  return node.type->parse(scalar.raw, value, why_);
}

bool ScalarReader::readText(const Node& node, std::string_view raw, void* value) {
  std::string_view text = raw;
  if (raw.find('\\') != std::string_view::npos) {
    unescaped_.clear();
    if (!appendUnescaped(unescaped_, raw)) {
      why_ = "an escape in this text is none of JSON's";
      return false;
    }
    text = unescaped_;
  }
  return readPlain(node, text, value);
}

bool ScalarReader::readPlain(const Node& node, std::string_view text, void* value) {
  if (const std::string_view fault = whyNoText(text); !fault.empty()) {
    why_ = fault;
    return false;
  }
  if (text.empty() && node.isKey() && node.type->encoding == Encoding::string) {
    why_ = concat({"an empty ", node.name, "; expected at least 1 character"});
    return false;
  }
  if (node.also != nullptr) {
    Kel::AnyValue narrower(*node.also);
    if (!node.also->parse(text, narrower.get(), why_)) {
      return false;
    }
  }
  return node.type->parse(text, value, why_);
}

bool ScalarReader::wrongKind(const Node& node, const JsonScalar& scalar) {
  const Encoding encoding = node.type->encoding;
  why_ = "expected ";
  why_ += nameOf(kindOf(encoding));
  why_ += ", found ";
  why_ += nameOf(scalar.kind);
  const bool quoted = scalar.kind == JsonKind::text;
  if (encoding == Encoding::decimal && scalar.kind == JsonKind::number) {
    why_ += concat({"; a decimal stands in quotes: \"", scalar.raw, "\""});
  } else if (encoding == Encoding::string && scalar.kind == JsonKind::number) {
    why_ += concat({"; text stands in quotes: \"", scalar.raw, "\""});
  } else if (quoted && (encoding == Encoding::number || encoding == Encoding::boolean)) {
    std::string ignored;
    Kel::AnyValue meant(*node.type);
    if (node.type->parse(scalar.raw, meant.get(), ignored)) {
      why_ += concat({"; write ", scalar.raw, " without quotes"});
    }
  }
  return false;
}

}  // namespace Host
