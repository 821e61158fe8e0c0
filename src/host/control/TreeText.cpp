#include "control/TreeText.h"

#include "text/Concat.h"
#include "text/LineFiller.h"
#include "text/Report.h"

namespace Host {
namespace {

using simdjson::dom::array;
using simdjson::dom::element;

constexpr std::size_t kPiece = 1U << 16U;

/// A scalar for people.
std::string scalarText(const element& value) {
  std::string_view text;
  if (value.get(text) != simdjson::SUCCESS) {
    return simdjson::minify(value);
  }
  const bool bare = !text.empty() && text.find_first_of(" \"=,") == std::string_view::npos;
  return bare ? printable(text) : concat({"\"", printable(text), "\""});
}

/// A record or a pair as one word: 443/6, 10.1.0.1-10.1.0.9, red=net-red.
std::string recordText(const element& record, const Node* node) {
  std::string text;
  const simdjson::dom::object members = record.get_object();  // lives as long as the loop
  for (const auto& [name, value] : members) {
    if (!text.empty()) {
      const bool pair = node != nullptr && node->kind == Node::Kind::mapping;
      text += pair ? "=" : name == "last" ? "-" : "/";
    }
    text += scalarText(value);
  }
  return text;
}

bool isEntryOf(const Node* node) { return node != nullptr && node->kind == Node::Kind::list; }

}  // namespace

void TreeText::write(const simdjson::dom::object& document) {
  for (const auto& [name, value] : document) {
    object(value.get_object(), Schema::instance().top(name), name, 0);
  }
  sink_.write(out_);
  out_.clear();
}

void TreeText::object(const simdjson::dom::object& members, const Node* node, std::string_view name,
                      std::size_t depth) {
  LineFiller line(out_, 2 * depth, 2 * depth + 4);
  line.word(name);
  std::size_t hint = 0;
  for (const auto& [leaf, value] : members) {
    if (!value.is_object() && !value.is_array()) {
      const Node* const known = node == nullptr ? nullptr : node->child(leaf, hint);
      const bool key = known != nullptr && known->isKey();
      line.word(key ? scalarText(value) : concat({leaf, "=", scalarText(value)}));
    }
  }
  line.end();
  hint = 0;
  for (const auto& [below, value] : members) {
    if (value.is_object() || value.is_array()) {
      child(value, node == nullptr ? nullptr : node->child(below, hint), below, depth + 1);
    }
  }
  if (out_.size() > kPiece) {
    sink_.write(out_);
    out_.clear();
  }
}

void TreeText::child(const element& value, const Node* node, std::string_view name,
                     std::size_t depth) {
  if (value.is_object()) {
    object(value.get_object(), node, name, depth);
  } else if (isEntryOf(node)) {
    for (const element entry : value.get_array()) {
      object(entry.get_object(), node, name, depth);
    }
  } else {
    values(value.get_array(), node, name, depth);
  }
}

void TreeText::values(const array& values, const Node* node, std::string_view name,
                      std::size_t depth) {
  LineFiller line(out_, 2 * depth, 2 * depth + name.size() + 1);
  line.word(name);
  for (const element entry : values) {
    line.word(entry.is_object() ? recordText(entry, node) : scalarText(entry));
  }
  line.end();
}

}  // namespace Host
