#pragma once

#include <simdjson.h>

#include <cstddef>
#include <string>

#include "data/Schema.h"
#include "text/ByteSink.h"

namespace Host {

/// Writes a document as a tree for people: indented, an entry with its leaves on one line, values
/// without quotes unless they have blanks or nothing in them; nothing wider than a terminal.
///
///   vela-l3v2:policy-source
///     policy-set fw1
///       policy net-red timestamp=12.500000
///         rule 20000
///           origin web action=drop log-enabled=true tags=""
///             match
///               dst-ip 10.1.0.0/16 10.2.0.0/16
///               dst-l4-app 443/6
class TreeText {
 public:
  explicit TreeText(ByteSink& sink) : sink_(sink) {}

  void write(const simdjson::dom::object& document);

 private:
  void object(const simdjson::dom::object& members, const Node* node, std::string_view name,
              std::size_t depth);
  void child(const simdjson::dom::element& value, const Node* node, std::string_view name,
             std::size_t depth);
  void values(const simdjson::dom::array& values, const Node* node, std::string_view name,
              std::size_t depth);

  ByteSink& sink_;
  std::string out_;
};

}  // namespace Host
