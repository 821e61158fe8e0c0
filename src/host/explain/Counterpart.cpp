#include "explain/Counterpart.h"

#include <algorithm>
#include <string_view>

#include "text/Concat.h"

namespace Host {
namespace {

constexpr std::string_view kLog = "log";
constexpr std::string_view kLogEnabled = "log-enabled";

/// Whether this is the list of the VRFs of a device: of these alone the names differ.
bool isVrfs(const Node& node) {
  return node.kind == Node::Kind::list && node.parent != nullptr &&
         node.parent->parent != nullptr && node.parent->parent->top != nullptr;
}

const Node* topOf(std::string_view module, std::string_view name) {
  return Schema::instance().top(concat({module, ":", name}));
}

/// The child of `parent` that stands for `node`, which is called `name` there.
const Node* childFor(const Node* parent, const Node& node, std::string_view name) {
  if (parent == nullptr) {
    return nullptr;
  }
  if (isVrfs(node)) {
    const auto at = std::ranges::find(parent->children, Node::Kind::list, &Node::kind);
    return at == parent->children.end() ? nullptr : *at;
  }
  std::size_t hint = 0;
  const Node* const child = parent->child(name, hint);
  return child == nullptr || child->isKey() ? nullptr : child;
}

bool convert(const Kel::ValueType& from, const void* key, const Kel::ValueType& to, void* value) {
  if (from.encoding == Kel::Encoding::record) {
    for (std::size_t i = 0; i < from.fields.size(); ++i) {
      const auto* const source = static_cast<const std::byte*>(key) + from.fields[i].offset;
      if (!convert(from.fields[i].type(), source, to.fields[i].type(),
                   static_cast<std::byte*>(value) + to.fields[i].offset)) {
        return false;
      }
    }
    return true;
  }
  std::string why;
  return to.parse(valueText(from, key), value, why);
}

}  // namespace

const Node* madeFrom(const Node& node1) {
  return node1.top != nullptr ? topOf("vela-l3v2", node1.name)
                              : childFor(madeFrom(*node1.parent), node1,
                                         node1.name == kLog ? kLogEnabled : node1.name);
}

const Node* sourceOf(const Node& node2) {
  return node2.top != nullptr
             ? topOf("vela-l3", node2.name)
             : childFor(sourceOf(*node2.parent), node2,
                        node2.name == kLogEnabled ? kLog : std::string_view(node2.name));
}

OwnedValue sameKey(const Kel::ValueType& from, const void* key, const Kel::ValueType& to) {
  auto value = std::make_shared<Kel::AnyValue>(to);
  return convert(from, key, to, value->get()) ? value : nullptr;
}

std::string valueText(const Kel::ValueType& type, const void* value) {
  std::string text;
  type.append(text, value);
  return text;
}

std::string keyText(const Node& node, const void* key) {
  if (node.kind != Node::Kind::records) {
    return valueText(node.row->key(), key);
  }
  std::string text;
  for (const Node* const leaf : node.children) {
    text += concat({text.empty() ? "" : ", ",
                    valueText(*leaf->type, static_cast<const std::byte*>(key) + leaf->offset)});
  }
  return text;
}

}  // namespace Host
