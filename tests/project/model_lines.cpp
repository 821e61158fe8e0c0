// Prints the data model as the program knows it from the attributes' own descriptors: one line per
// node, in the order of their paths, and one per type whose values have names.
#include <cstdint>
#include <iostream>
#include <map>
#include <string>

#include "data/Schema.h"

namespace {

const char* kindName(Host::Node::Kind kind) {
  using Kind = Host::Node::Kind;
  switch (kind) {
    case Kind::container:
      return "container";
    case Kind::presence:
      return "presence";
    case Kind::list:
    case Kind::records:
    case Kind::mapping:
      return "list";
    case Kind::leafList:
      return "leaf-list";
    case Kind::leaf:
      break;
  }
  return "leaf";
}

std::map<std::string, const Kel::ValueType*> types;

void printNode(const Host::Node& node, const std::string& above) {
  const std::string path =
      above + '/' + (node.parent == nullptr ? Host::qualifiedName(node) : node.name);
  std::cout << path << ' ' << (node.state ? "ro" : "rw") << ' ' << kindName(node.kind);
  if (node.keys > 0 && node.kind != Host::Node::Kind::container) {
    for (std::size_t i = 0; i < node.keys; ++i) {
      std::cout << (i == 0 ? " key=" : ",") << node.children[i]->name;
    }
  }
  if (node.type != nullptr && node.children.empty()) {
    const Kel::ValueType& type = node.also != nullptr ? *node.also : *node.type;
    types.emplace(type.name, &type);
    std::cout << " type=" << type.name;
  }
  std::cout << '\n';
  for (const Host::Node* child : node.children) {
    printNode(*child, path);
  }
}

// A value of one byte that is written as text is an enumeration, or a set of bits: the texts of the
// first ordinals say which, and how they are called.
void printNames(const Kel::ValueType& type) {
  if (type.size != 1 || type.encoding != Kel::Encoding::string) {
    return;
  }
  std::cout << type.name;
  for (std::uint8_t ordinal = 0; ordinal < 4; ++ordinal) {
    std::string text;
    type.append(text, &ordinal);
    std::cout << ' ' << static_cast<unsigned>(ordinal) << "='" << text << '\'';
  }
  std::cout << '\n';
}

}  // namespace

int main() {
  for (const Host::Node* top : Host::Schema::instance().tops()) {
    printNode(*top, "");
  }
  for (const auto& [name, type] : types) {
    printNames(*type);
  }
}
