#pragma once

#include <set>
#include <string>
#include <vector>

#include "change/Change.h"
#include "data/Trees.h"

namespace Host {

/// The devices that a change line can have an effect on.
class Reach {
 public:
  /// As version 1 and the monitor are before the line is applied.
  Reach(const Trees& trees, const Change& change);

  bool isEverything() const { return everything_; }
  /// By name, where not everything is meant.
  const std::set<std::string>& devices() const { return devices_; }
  /// What the library can write because of the line; a path without steps: everything.
  std::vector<TreePath> written() const;

 private:
  void add(const TreePath& path);
  void addServed(const std::string& record);

  const Trees& trees_;
  bool everything_ = false;
  std::set<std::string> devices_;
};

}  // namespace Host
