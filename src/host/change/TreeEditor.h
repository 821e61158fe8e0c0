#pragma once

#include "change/Change.h"
#include "data/TreeCursor.h"

namespace Host {

/// Carries out what a change line asks for, step by step, in an order that depends on nothing but
/// the line and the state.
///
/// - An entry is created first and then filled. A pair of a mapping is one write.
/// - To take a leaf away is to write what an absent leaf means: empty text, forward, false. The
///   time of a signal cannot be taken away, only written: it becomes 0.
/// - Where one set of entries gives way to another, first those go that are too many, in the order
///   of their keys, then those come that are new, in the order of the line. What is on both sides
///   is neither written nor announced.
/// - Deliberate: a replace leaves the `timestamp` of a policy or VRF alone unless the value has
/// one.
///   It is a signal and no configuration; removing it would announce the end of a burst in its
///   midst.
class TreeEditor {
 public:
  TreeEditor(const Trees& trees, Touched& touched) : cursor_(trees, touched) {}

  /// What a change deletes, replaces and updates.
  void edit(const Change& change);
  void erase(const TreePath& path);
  void update(const Edit& edit);
  void replace(const Edit& edit);
  /// Of a whole list: the notification of each entry, in the order of their keys. Nothing where
  /// the object is missing whose attribute is meant: nobody could hear it.
  void notify(const TreePath& path);
  /// Writes the time as the signal of each of these that is still there.
  void signal(const Touched& touched, Kel::Seconds time);

  TreeCursor& cursor() { return cursor_; }

 private:
  void fill(const Datum& datum);
  void settle(const Datum& datum);
  void settleMembers(const Node& node, const std::vector<Datum>& parts);
  void settleEntries(const Datum& list);
  void settlePair(const Datum& pair);
  void clear(const Node& child);
  void clearEntries(const Node& list);
  void eraseLeaf(std::span<const OwnedStep> steps);

  TreeCursor cursor_;
};

}  // namespace Host
