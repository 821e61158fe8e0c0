#pragma once

#include <set>
#include <string>
#include <vector>

#include "data/TreePath.h"

namespace Host {

/// What a burst of changes has touched.
///
/// First of all, the policies and VRFs of version 1 in which it has changed something: they are
/// those list entries that carry the signal of version 1, a `timestamp`. They are kept by their
/// keys, in the order of the trees and then of the keys, so that the same burst ends with the same
/// signals in the same order, however it came about.
class Touched {
 public:
  /// Whether the entries of this list carry the signal.
  static const Node* signalOf(const Node& list);

  /// A pair of a mapping that was written, as text: of which record, and what it maps to what.
  struct Pair {
    std::string record;
    std::string key;
    std::string value;
  };

  void add(const TreePath& entry) { entries_.insert(entry); }
  /// The signal itself was written by hand.
  void addSignal(const TreePath& entry) { signals_.insert(entry); }
  void addPair(Pair pair) { pairs_.push_back(std::move(pair)); }
  /// An entry of the monitor came or went.
  void addRecord(std::string record) { records_.push_back(std::move(record)); }

  bool isSignalled(const TreePath& entry) const { return signals_.contains(entry); }
  const std::vector<Pair>& pairs() const { return pairs_; }
  const std::vector<std::string>& records() const { return records_; }
  auto begin() const { return entries_.begin(); }
  auto end() const { return entries_.end(); }

  struct Below {
    bool operator()(const TreePath& a, const TreePath& b) const;
  };

 private:
  std::set<TreePath, Below> entries_;
  std::set<TreePath, Below> signals_;
  std::vector<Pair> pairs_;
  std::vector<std::string> records_;
};

}  // namespace Host
