#pragma once

#include "change/Change.h"

namespace Host {

/// What has changed between two states of the configuration, as one change for a third one: the
/// state that runs, which may have been changed otherwise.
///
/// The change has only what differs between the two. What is not there any more, or is already as
/// it should be, is left out, so that the change always fits. An entry that has been deleted from
/// the running state comes back whole when something in it has changed. What a new entry does not
/// say is not written. The monitor's records come first, so that a new device finds its own.
///
/// Deliberate: a signal's time that is in the first state and not in the second is left as it is,
/// like in a replacement (see TreeEditor).
class TreeComparison {
 public:
  TreeComparison(const Trees& before, const Trees& after, const Trees& running)
      : before_(before), after_(after), running_(running) {}

  Change run();

 private:
  /// One object in the three states; it is in the first two, and may be missing in the third.
  struct Three {
    const Kel::PtrInterface& before;
    const Kel::PtrInterface& after;
    const Kel::PtrInterface* running;
  };

  void members(const Node& node, const Three& three);
  void member(const Node& child, const Three& three);
  void leaf(const Node& leaf, const Three& three);
  void entries(const Node& list, const Three& three);
  void entry(const Node& node, const void* key, const Three& three);
  void changed(const OwnedStep& step, Datum value);

  const Trees& before_;
  const Trees& after_;
  const Trees& running_;
  TreePath path_;  // to the object that is being compared
  Change change_;
};

}  // namespace Host
