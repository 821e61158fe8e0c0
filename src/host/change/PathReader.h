#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "data/Content.h"
#include "data/ScalarText.h"
#include "data/TreePath.h"

namespace Host {

/// Reads instance identifiers (RFC 7951, section 6.11) as strictly as documents are read.
///
/// The first name has its module in front, the others may have it. An entry of a list is named by
/// its keys, in any order, an entry of a leaf-list by [.='value']. Keys stand in single or double
/// quotes, and a quote of that kind inside the key stands twice. The quotes may be left out where
/// the key holds no ']' and does not begin or end with a blank. Only the last step may mean a whole
/// list.
class PathReader {
 public:
  /// `content`: what a path may lead to. Changes are for configuration alone.
  explicit PathReader(Content content) : content_(content) {}

  /// Reads `text` into `path`; false when it is wrong: then see below.
  bool read(std::string_view text, TreePath& path);

  const std::string& why() const { return why_; }
  /// What is wrong, in bytes of the text.
  std::size_t offset() const { return offset_; }
  std::size_t length() const { return length_; }

 private:
  struct Key {
    std::string_view name;
    std::string_view text;  // between the quotes, as it stands
    char doubled = '\0';    // a quote that stands twice in it where it is meant once
  };

  bool step(TreePath& path);
  const Node* node(const TreePath& path);
  bool predicates(TreePath& path);
  bool predicate(Key& key);
  bool keyText(Key& key);
  std::string_view valueOf(const Key& key);
  bool assign(const Node& node, const Key& key, Kel::AnyValue& value, std::size_t& seen);
  bool isComplete(const Node& node, std::string_view name, std::size_t seen);

  bool fail(std::string_view where, std::string why);
  char here() const { return at_ < text_.size() ? text_[at_] : '\0'; }
  std::string_view name(std::string_view ends);
  std::string_view rest() const { return text_.substr(at_, 1); }
  void skipBlanks();

  const Content content_;
  std::string_view text_;
  std::size_t at_ = 0;
  std::string undoubled_;
  std::string why_;
  std::size_t offset_ = 0;
  std::size_t length_ = 0;
  ScalarReader scalars_;
};

}  // namespace Host
