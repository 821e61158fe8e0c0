#pragma once

#include <set>

#include "host/TreePath.h"

namespace Host {

/// The policies and VRFs of version 1 in which a burst of changes has changed something.
///
/// They are those list entries that carry the signal of version 1, a `timestamp`. They are kept by
/// their keys, in the order of the trees and then of the keys, so that the same burst ends with the
/// same signals in the same order, however it came about.
class Touched {
 public:
  /// Whether the entries of this list carry the signal.
  static const Node* signalOf(const Node& list);

  void add(const TreePath& entry) { entries_.insert(entry); }
  void clear() { entries_.clear(); }
  auto begin() const { return entries_.begin(); }
  auto end() const { return entries_.end(); }

 private:
  struct Below {
    bool operator()(const TreePath& a, const TreePath& b) const;
  };

  std::set<TreePath, Below> entries_;
};

}  // namespace Host
