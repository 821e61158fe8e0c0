#include "data/NodeFaults.h"

#include "text/Concat.h"
#include "text/Suggest.h"

namespace Host {
namespace {

std::string inQuotes(std::string_view name) {
  constexpr std::size_t kMost = 80;
  return concat({"\"", name.substr(0, kMost), name.size() > kMost ? "...\"" : "\""});
}

/// The containers that a document may hold.
std::vector<const Node*> configured() {
  std::vector<const Node*> nodes;
  for (const Node* const top : Schema::instance().tops()) {
    if (!top->state) {
      nodes.push_back(top);
    }
  }
  return nodes;
}

template <class Names>
std::string joined(const Names& names) {
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i) {
    text += i == 0 ? "" : i + 1 == names.size() ? " or " : ", ";
    text += names[i];
  }
  return text;
}

}  // namespace

std::string whyNoContainer(std::string_view name) {
  std::vector<std::string> qualified;
  for (const Node* const top : configured()) {
    qualified.push_back(qualifiedName(*top));
    if (top->name == name) {
      return concat({inQuotes(name), " lacks its module at the top of a document; write \"",
                     qualified.back(), "\""});
    }
  }
  return concat({"there is no container ", inQuotes(name), "; expected ", joined(qualified),
                 didYouMean(name, {qualified.begin(), qualified.end()})});
}

std::string whyNoNode(const Node& parent, std::string_view name) {
  if (const std::size_t colon = name.find(':'); colon != std::string_view::npos) {
    std::size_t hint = 0;
    if (parent.child(name.substr(colon + 1), hint) != nullptr) {
      return concat({inQuotes(name), " names the wrong module; here it is ", parent.module});
    }
  }
  std::vector<std::string_view> names;
  for (const Node* const child : parent.children) {
    if (!child->state || parent.state) {
      names.push_back(child->name);
    }
  }
  const std::string meant = didYouMean(name, names);
  return concat({inQuotes(name), " is unknown in ", parent.name,
                 meant.empty() ? concat({"; expected ", joined(names)}) : meant});
}

std::string whyState(const Node& top) {
  return concat({"\"", qualifiedName(top),
                 "\" is state that the translation alone writes; leave it out of the document"});
}

std::string whyNotLeftOver(std::string_view name) {
  std::vector<std::string> left;
  for (const Node* const top : Schema::instance().tops()) {
    if (top->state) {
      left.push_back(qualifiedName(*top));
    }
  }
  return concat({inQuotes(name), " is no state of version 2; expected ", joined(left),
                 ", as a run has printed them"});
}

std::string whyReadOnly(const Node& node) {
  return concat(
      {"\"", node.parent == nullptr ? qualifiedName(node) : node.name,
       "\" is state that the translation alone writes; it cannot be changed from outside"});
}

std::string_view withoutModule(const Node& parent, std::string_view name) {
  const std::size_t length = parent.module.size();
  return name.size() > length && name.starts_with(parent.module) && name[length] == ':'
             ? name.substr(length + 1)
             : name;
}

}  // namespace Host
