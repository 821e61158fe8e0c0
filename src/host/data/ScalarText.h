#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "data/Schema.h"

namespace Host {

/// What a JSON value is at first sight.
enum class JsonKind : std::uint8_t { object, array, text, number, boolean, null };

/// "an object", "text": for messages.
std::string_view nameOf(JsonKind kind);

/// A scalar as it stands in a document.
struct JsonScalar {
  JsonKind kind;
  std::string_view raw;  ///< of text: what is between the quotes, escapes not yet resolved
};

/// Reads scalars into values of the model. Keeps its buffers, so that a million scalars need no
/// memory of their own.
class ScalarReader {
 public:
  /// Reads `scalar` as a value of the leaf or leaf-list `node` into `value`, an object of
  /// `node.type`. False leaves `value` and says in `why` what was found and what was expected.
  bool read(const Node& node, const JsonScalar& scalar, void* value);
  /// Reads plain text, such as a key of a path, as a value of `node`.
  bool readPlain(const Node& node, std::string_view text, void* value);
  const std::string& why() const { return why_; }

 private:
  bool readText(const Node& node, std::string_view raw, void* value);
  bool wrongKind(const Node& node, const JsonScalar& scalar);

  std::string why_;
  std::string unescaped_;
};

}  // namespace Host
