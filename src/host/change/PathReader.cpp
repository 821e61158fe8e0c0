#include "change/PathReader.h"

#include <algorithm>

#include "data/NodeFaults.h"
#include "text/Concat.h"

namespace Host {
namespace {

constexpr std::string_view kBlanks = " \t";

/// An example of how an entry of `list` is named.
std::string example(const Node& list) {
  if (list.kind == Node::Kind::leafList) {
    return concat({list.name, "[.='...']"});
  }
  std::string text = list.name;
  for (std::size_t i = 0; i < list.keys; ++i) {
    text += concat({"[", list.children[i]->name, "='...']"});
  }
  return text;
}

std::string_view withoutBlanks(std::string_view text) {
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

bool hasEntries(const Node& node) {
  return node.kind == Node::Kind::list || node.kind == Node::Kind::records ||
         node.kind == Node::Kind::mapping || node.kind == Node::Kind::leafList;
}

/// The container that has this name without its module; null when there is none.
const Node* withModule(std::string_view name) {
  const auto& tops = Schema::instance().tops();
  const auto at =
      std::ranges::find_if(tops, [&](const Node* top) { return !top->state && top->name == name; });
  return at == tops.end() ? nullptr : *at;
}

}  // namespace

bool PathReader::read(std::string_view text, TreePath& path) {
  text_ = text;
  at_ = 0;
  path.clear();
  if (here() != '/') {
    return fail(rest(), "a path begins with / and the module, such as /vela-l3:policy-source");
  }
  while (at_ < text_.size()) {
    if (!step(path)) {
      return false;
    }
  }
  return true;
}

bool PathReader::step(TreePath& path) {
  if (here() != '/') {
    return fail(rest(), concat({"found '", rest(), "'; expected / before the next name"}));
  }
  ++at_;
  const Node* const found = node(path);
  if (found == nullptr) {
    return false;
  }
  path.push_back({found});
  return predicates(path);
}

const Node* PathReader::node(const TreePath& path) {
  const std::string_view name = this->name("/[");
  if (name.empty()) {
    fail(rest(), "a name is missing behind this /");
    return nullptr;
  }
  const Node* found = nullptr;
  if (path.empty()) {
    found = Schema::instance().top(name);
    if (found == nullptr) {
      const Node* const meant = withModule(name);
      fail(name, meant == nullptr ? whyNoContainer(name)
                                  : concat({"\"", name, "\" lacks its module; write \"",
                                            qualifiedName(*meant), "\""}));
      return nullptr;
    }
  } else {
    const OwnedStep& above = path.back();
    if (hasEntries(*above.node) && above.key == nullptr) {
      fail(name, concat({"which entry of ", above.node->name, " is meant? Write ",
                         example(*above.node)}));
      return nullptr;
    }
    std::size_t hint = 0;
    found = above.node->children.empty()
                ? nullptr
                : above.node->child(withoutModule(*above.node, name), hint);
    if (found == nullptr) {
      fail(name, above.node->children.empty()
                     ? concat({"there is nothing below ", above.node->name})
                     : whyNoNode(*above.node, name));
      return nullptr;
    }
  }
  if (found->state && content_ == Content::configuration) {
    fail(name, whyReadOnly(*found));
    return nullptr;
  }
  return found;
}

bool PathReader::predicates(TreePath& path) {
  const Node& node = *path.back().node;
  if (here() != '[') {
    return true;
  }
  const std::size_t begin = at_;
  if (!hasEntries(node)) {
    return fail(rest(), concat({node.name, " has no entries; expected no ["}));
  }
  auto value = std::make_shared<Kel::AnyValue>(node.row->key());
  std::size_t seen = 0;
  while (here() == '[') {
    Key key;
    if (!predicate(key) || !assign(node, key, *value, seen)) {
      return false;
    }
  }
  if (!isComplete(node, text_.substr(begin, at_ - begin), seen)) {
    return false;
  }
  path.back().key = std::move(value);
  return true;
}

/// [name='text'], with blanks wherever they do no harm.
bool PathReader::predicate(Key& key) {
  const std::size_t begin = at_++;
  skipBlanks();
  key.name = withoutBlanks(name("=]"));
  if (here() != '=') {
    const bool position =
        !key.name.empty() && key.name.find_first_not_of("0123456789") == std::string_view::npos;
    return fail(text_.substr(begin, std::max<std::size_t>(1, at_ - begin)),
                position ? "an entry is named by its key, not by its position"
                         : "expected a key and its value, such as [name='web']");
  }
  ++at_;
  skipBlanks();
  if (!keyText(key)) {
    return false;
  }
  skipBlanks();
  if (here() != ']') {
    return fail(at_ < text_.size() ? rest() : text_.substr(begin, 1),
                at_ < text_.size()
                    ? concat({"found '", rest(), "' behind the key's value; expected ]"})
                    : "this bracket is not closed; expected ] behind the key's value");
  }
  ++at_;
  return true;
}

bool PathReader::keyText(Key& key) {
  const char quote = here();
  if (quote != '\'' && quote != '"') {
    key.text = withoutBlanks(name("]"));
    return true;
  }
  const std::size_t begin = at_;
  do {
    const std::size_t end = text_.find(quote, at_ + 1);
    if (end == std::string_view::npos) {
      return fail(text_.substr(begin, 1), "this quote is not closed");
    }
    at_ = end + 1;
    key.doubled = here() == quote ? quote : key.doubled;
  } while (here() == quote);
  key.text = text_.substr(begin + 1, at_ - begin - 2);
  return true;
}

std::string_view PathReader::valueOf(const Key& key) {
  if (key.doubled == '\0') {
    return key.text;
  }
  undoubled_.clear();
  for (std::size_t at = 0; at < key.text.size(); ++at) {
    undoubled_ += key.text[at];
    at += key.text[at] == key.doubled ? 1 : 0;
  }
  return undoubled_;
}

bool PathReader::assign(const Node& node, const Key& key, Kel::AnyValue& value, std::size_t& seen) {
  if (node.kind == Node::Kind::leafList) {
    if (key.name != "." || seen != 0) {
      return fail(key.name, concat({"an entry of ", node.name,
                                    " is named by its value alone: ", example(node)}));
    }
    seen = 1;
    return scalars_.readPlain(node, valueOf(key), value.get()) || fail(key.text, scalars_.why());
  }
  std::size_t hint = 0;
  const Node* const leaf = node.child(withoutModule(node, key.name), hint);
  if (leaf == nullptr || !leaf->isKey()) {
    return fail(key.name, leaf == nullptr
                              ? concat({whyNoNode(node, key.name), "; write ", example(node)})
                              : concat({"\"", key.name, "\" is no key of ", node.name, "; write ",
                                        example(node)}));
  }
  if ((seen >> leaf->position & 1U) != 0) {
    return fail(key.name, concat({"the key \"", leaf->name, "\" stands here twice"}));
  }
  seen |= std::size_t{1} << leaf->position;
  void* const place = static_cast<std::byte*>(value.get()) + leaf->offset;
  return scalars_.readPlain(*leaf, valueOf(key), place) || fail(key.text, scalars_.why());
}

bool PathReader::isComplete(const Node& node, std::string_view name, std::size_t seen) {
  for (std::size_t i = 0; i < node.keys; ++i) {
    if ((seen >> i & 1U) == 0) {
      return fail(name, concat({"the key \"", node.children[i]->name, "\" is missing; write ",
                                example(node)}));
    }
  }
  return true;
}

bool PathReader::fail(std::string_view where, std::string why) {
  offset_ = static_cast<std::size_t>(where.data() - text_.data());
  length_ = where.size();
  why_ = std::move(why);
  return false;
}

/// The text up to the first of `ends`.
std::string_view PathReader::name(std::string_view ends) {
  const std::size_t begin = at_;
  at_ = std::min(text_.find_first_of(ends, at_), text_.size());
  return text_.substr(begin, at_ - begin);
}

void PathReader::skipBlanks() {
  at_ = std::min(text_.find_first_not_of(kBlanks, at_), text_.size());
}

}  // namespace Host
