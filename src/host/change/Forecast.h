#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>

#include "change/Change.h"
#include "data/TreeCursor.h"

namespace Host {

/// What there will be at a path once the earlier members of a change line have acted.
///
/// A line that deletes what is not there, or announces an attribute of what is not there, is
/// refused before any of it is applied. Whether something is there depends on the trees and on what
/// the line itself says before; both are known without applying anything. What the line says is
/// kept by path, so that a question costs the length of its path.
class Forecast {
 public:
  /// `cursor` is moved about.
  explicit Forecast(TreeCursor& cursor) : cursor_(cursor) {}

  bool exists(const TreePath& path);
  /// Whether there is the object whose attribute or entry the path names.
  bool objectExists(const TreePath& path);

  void erased(const TreePath& path);
  void written(const Edit& edit, bool replaced);

 private:
  struct Known {
    std::optional<bool> there = {};  // none: as the trees say
    bool emptied = false;            // below it is nothing but what is known
    std::size_t erased = 0;          // entries of a list that were in the trees
    std::map<std::string, Known> below = {};
  };

  Known& reach(Known& from, const OwnedStep& step);
  void note(Known& known, const Datum& datum);
  bool inTrees(const TreePath& path);
  bool hasEntries(const TreePath& path, std::size_t erased);

  TreeCursor& cursor_;
  Known root_;
};

}  // namespace Host
