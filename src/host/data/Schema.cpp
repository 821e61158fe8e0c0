#include "data/Schema.h"

#include <algorithm>
#include <map>

namespace Host {
namespace {

bool holds(std::span<const std::string_view> names, std::string_view name) {
  return std::ranges::find(names, name) != names.end();
}

Node::Kind kindOf(const Kel::Row& row) {
  switch (row.kind) {
    case Kel::RowKind::set:
      return row.key().encoding == Kel::Encoding::record ? Node::Kind::records
                                                         : Node::Kind::leafList;
    case Kel::RowKind::map:
      return Node::Kind::mapping;
    case Kel::RowKind::entries:
      return Node::Kind::list;
    case Kel::RowKind::single:
      return Node::Kind::presence;
    default:
      return Node::Kind::leaf;
  }
}

std::string nameOf(const Kel::Row& row) {
  std::string name = kebabCase(row.name);
  constexpr std::string_view kSuffix = "-set";
  if (row.kind == Kel::RowKind::set && name.ends_with(kSuffix)) {
    name.resize(name.size() - kSuffix.size());
  }
  return name;
}

}  // namespace

std::string kebabCase(std::string_view attribute) {
  std::string name;
  for (const char c : attribute) {
    if (c >= 'A' && c <= 'Z') {
      name += '-';
      name += static_cast<char>(c - 'A' + 'a');
    } else {
      name += c;
    }
  }
  return name;
}

std::string qualifiedName(const Node& node) { return std::string(node.module) + ":" + node.name; }

const Node* Node::child(std::string_view wanted, std::size_t& hint) const {
  for (std::size_t i = 0; i < children.size(); ++i) {
    const std::size_t at = (hint + i) % children.size();
    if (children[at]->name == wanted) {
      hint = at + 1;
      return children[at];
    }
  }
  return nullptr;
}

const Schema& Schema::instance() {
  static const Schema schema;
  return schema;
}

Schema::Schema() {
  for (const Container& container : containers()) {
    Node& node = nodes_.emplace_back();
    node.kind = Node::Kind::container;
    node.name = container.name;
    node.module = container.module;
    node.state = container.state;
    node.top = &container;
    tops_.push_back(&node);
    addRows(node, container.type());
  }
  narrowTexts();
}

Node& Schema::add(Node& parent, Node::Kind kind, std::string name) {
  Node& node = nodes_.emplace_back();
  node.kind = kind;
  node.name = std::move(name);
  node.module = parent.module;
  node.state = parent.state;
  node.parent = &parent;
  node.position = parent.children.size();
  parent.children.push_back(&node);
  return node;
}

void Schema::addRows(Node& node, const Kel::TypeDescriptor& type) {
  // Constants have the lowest ids, so that the key of an entry comes first by itself.
  for (const Kel::Row& row : type.rows) {
    if (!holds(unlistedAttributes(), row.name)) {
      addRow(node, row);
    }
  }
}

void Schema::addRow(Node& node, const Kel::Row& row) {
  Node& child = add(node, kindOf(row), nameOf(row));
  child.row = &row;
  child.state = child.state || holds(stateAttributes(), row.name);
  switch (child.kind) {
    case Node::Kind::leaf:
      child.type = &row.value();
      node.keys += row.kind == Kel::RowKind::constant ? 1 : 0;
      break;
    case Node::Kind::leafList:
      child.type = &row.key();
      break;
    case Node::Kind::records:
      child.type = &row.key();
      for (const Kel::Field& field : child.type->fields) {
        Node& leaf = add(child, Node::Kind::leaf, kebabCase(field.name));
        leaf.type = &field.type();
        leaf.offset = field.offset;
      }
      child.keys = child.children.size();
      break;
    case Node::Kind::mapping:
      add(child, Node::Kind::leaf, kebabCase(row.keyName)).type = &row.key();
      add(child, Node::Kind::leaf, kebabCase(row.valueName)).type = &row.value();
      child.keys = 1;
      break;
    default:
      addRows(child, row.target());
  }
}

void Schema::narrowTexts() {
  const Kel::ValueType& text = Kel::valueTypeOf<Kel::String>();
  std::map<std::string_view, const Kel::ValueType*> narrower;
  for (const Node& node : nodes_) {
    if (node.type != nullptr && node.type != &text) {
      narrower.emplace(node.name, node.type);
    }
  }
  for (Node& node : nodes_) {
    const auto at = narrower.find(node.name);
    if (node.type == &text && at != narrower.end()) {
      node.also = at->second;
    }
  }
}

const Node* Schema::top(std::string_view qualified) const {
  const auto at = std::ranges::find_if(tops_, [&](const Node* node) {
    return qualified.size() == node->module.size() + 1 + node->name.size() &&
           qualified.starts_with(node->module) && qualified[node->module.size()] == ':' &&
           qualified.ends_with(node->name);
  });
  return at == tops_.end() ? nullptr : *at;
}

}  // namespace Host
