#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "data/TreePath.h"
#include "observe/Event.h"

namespace Host {

class WatchedObject;

/// Follows what the library writes at and below one path, for any number of receivers.
///
/// Every object on the way to the path and below it is subscribed to, what is added later as well;
/// what is beside the path is not looked at. When something above the path is removed, what was at
/// the path is told to be removed. A leaf that is written with the value it has is no change.
class Observation {
 public:
  /// An empty path: everything.
  Observation(const Trees& trees, const TreePath& path);
  Observation(const Observation&) = delete;
  Observation& operator=(const Observation&) = delete;
  ~Observation();

  void add(EventReceiver& receiver) { receivers_.push_back(&receiver); }
  void remove(EventReceiver& receiver) { std::erase(receivers_, &receiver); }
  bool empty() const { return receivers_.empty(); }

  /// Tells what there is as additions, from the top down, sorted.
  void tellAll(EventReceiver& receiver) const;
  /// How many objects are subscribed to.
  std::size_t objects() const { return objects_; }

  /// Whether the library writes this node, or something below it.
  static bool isWritten(const Node& node);

 private:
  friend class WatchedObject;

  void tell(const Event& event) const {
    for (EventReceiver* const receiver : receivers_) {
      receiver->event(event);
    }
  }

  const TreePath path_;
  std::size_t objects_ = 0;
  std::vector<EventReceiver*> receivers_;
  std::vector<std::unique_ptr<WatchedObject>> tops_;
};

}  // namespace Host
