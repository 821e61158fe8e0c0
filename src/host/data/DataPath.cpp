#include "data/DataPath.h"

#include "text/Concat.h"

namespace Host {
namespace {

void appendPredicate(std::string& out, std::string_view name, const Kel::ValueType& type,
                     const void* value) {
  std::string text;
  type.append(text, value);
  const bool single = text.find('\'') == std::string::npos || text.find('"') != std::string::npos;
  const char quote = single ? '\'' : '"';
  out.append("[").append(name).append("=") += quote;
  for (const char byte : text) {
    // In a key that has both kinds of quotes, those of the outer kind stand twice.
    out.append(byte == quote ? 2U : 1U, byte);
  }
  (out += quote) += ']';
}

void appendKeys(std::string& out, const Node& node, const void* key) {
  if (node.kind == Node::Kind::leafList) {
    appendPredicate(out, ".", *node.type, key);
  }
  for (std::size_t i = 0; i < node.keys; ++i) {
    const Node& leaf = *node.children[i];
    // A record is its own key; its leaves lie in it.
    appendPredicate(out, leaf.name, *leaf.type, static_cast<const std::byte*>(key) + leaf.offset);
  }
}

}  // namespace

std::string pathOf(std::span<const Step> steps) {
  std::string path;
  for (const Step& step : steps) {
    path += '/';
    path += step.node->parent == nullptr ? qualifiedName(*step.node) : step.node->name;
    if (step.key != nullptr) {
      appendKeys(path, *step.node, step.key);
    } else if (step.position != 0) {
      path += concat({"[", std::to_string(step.position), "]"});
    }
  }
  return path;
}

}  // namespace Host
