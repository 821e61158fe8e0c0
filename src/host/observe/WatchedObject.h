#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Kel/PtrInterface.h"
#include "observe/Observation.h"

namespace Host {

/// One object that an Observation follows, and those below it. It keeps the object alive, so that
/// the objects of a tree may go in any order.
class WatchedObject : private Brix::Subscriber {
 public:
  /// Follows all that there is below `object`, and tells nobody.
  WatchedObject(Observation& owner, const WatchedObject* parent, const Node& node, std::string step,
                const Kel::PtrInterface& object);
  WatchedObject(const WatchedObject&) = delete;
  WatchedObject& operator=(const WatchedObject&) = delete;
  ~WatchedObject();

  /// What there is at this object and below it, as additions.
  void tellAll(EventReceiver& receiver) const;

 private:
  using Children = std::map<std::string, std::unique_ptr<WatchedObject>>;

  static void notify(const Brix::Publisher& publisher, Subscriber& subscriber, Brix::AttrId id,
                     const void* key, const void* value);
  void changed(const Node& child, const void* key);
  void leafChanged(const Node& leaf);
  void objectChanged(const Node& child, const void* key);
  void memberChanged(const Node& list, const void* key);

  bool isFollowed(const Node& child, const void* key) const;
  void follow(const Node& child);
  WatchedObject& follow(const Node& child, std::string step, const void* object);
  void tellGone() const;
  void tellTargetGone() const;

  /// Whether it stands at the path of the observation or below it.
  bool isTold() const { return depth_ >= owner_.path_.size(); }
  /// The step of the observation's path that leads on from here; null: the path is behind us.
  const OwnedStep* next() const { return isTold() ? nullptr : &owner_.path_[depth_]; }
  std::string path() const;
  std::string pathTo(const Node& child, const void* key) const;

  Observation& owner_;
  const WatchedObject* const parent_;
  const Node& node_;
  const std::string step_;
  const std::size_t depth_;
  const Brix::Ptr<const Kel::PtrInterface> object_;
  Children children_;
  std::vector<std::pair<const Node*, std::string>> leaves_;  // as they were told last
};

}  // namespace Host
