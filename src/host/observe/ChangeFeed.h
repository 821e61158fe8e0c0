#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>

#include "observe/Observation.h"

namespace Host {

/// What the library writes, as a stream of events for all who ask for it. Those who ask for the
/// same path share one observation; where nobody asks, nothing is subscribed to.
class ChangeFeed {
 public:
  explicit ChangeFeed(const Trees& trees) : trees_(trees) {}
  ChangeFeed(const ChangeFeed&) = delete;
  ChangeFeed& operator=(const ChangeFeed&) = delete;

  /// Why nothing can be watched at this path; empty when something can.
  static std::string whyNot(const TreePath& path);

  /// Tells `receiver` what there is at and below the path (empty: everywhere) as additions, and
  /// from then on what changes. One receiver watches one path.
  void add(EventReceiver& receiver, const TreePath& path);
  /// No-one else is disturbed; a receiver that watches nothing may be removed as well.
  void remove(EventReceiver& receiver);

  /// How many objects are subscribed to.
  std::size_t objects() const;

 private:
  const Trees& trees_;
  std::map<std::string, std::unique_ptr<Observation>> observations_;  // by path
};

}  // namespace Host
