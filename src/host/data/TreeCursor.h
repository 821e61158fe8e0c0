#pragma once

#include <span>
#include <string>
#include <vector>

#include "data/Touched.h"

namespace Host {

/// A place in the trees from which they are read and written.
///
/// Every write tells the trees' observers at once. What an observer raises does not stop the
/// writer: the write is done by then. The first message is kept. The cursor also notes which
/// policies and VRFs were touched.
class TreeCursor {
 public:
  TreeCursor(const Trees& trees, Touched& touched) : trees_(trees), touched_(touched) {}

  /// Starts anew, and goes along these steps as far as there is something; false when an entry is
  /// missing.
  bool go(std::span<const OwnedStep> steps);
  /// Likewise, and creates what is missing.
  void make(std::span<const OwnedStep> steps);

  /// One level down, to a container, an entry or a presence container; false when it is missing.
  bool enter(const Node& node, const void* key);
  /// Likewise, and creates it; true when it was missing.
  bool create(const Node& node, const void* key);
  void leave() { places_.pop_back(); }

  // Of the object at this place. A key is null where the node has none.
  const void* find(const Node& node, const void* key) const;
  std::size_t size(const Node& node) const { return node.row->size(object()); }
  const Kel::PtrInterface& object() const { return *places_.back().object; }
  void put(const Node& node, const void* key, const void* value);
  void erase(const Node& node, const void* key);
  /// Delivers the notification of a change that is none.
  void publish(const Node& node, const void* key);

  /// How many writes and announcements there were.
  std::size_t writes() const { return writes_; }
  /// What the first observer raised that did so; null when none did.
  const std::string* error() const { return failed_ ? &error_ : nullptr; }
  /// Calls `action`, and keeps what it raises.
  template <class Action>
  void attempt(Action action) {
    try {
      action();
    } catch (const std::exception& error) {
      keep(error.what());
    } catch (...) {
      keep("an exception of an unknown type");
    }
  }

 private:
  struct Place {
    const Node* node;
    Brix::Ptr<Kel::PtrInterface> object;  // observers may delete it while it is being written to
    const void* key;
  };

  void push(const Node& node, const void* key, const void* object);
  void touch();
  TreePath pathTo(std::size_t depth) const;
  void noteRecord(const Node& list, const void* key);
  void notePair(const Node& mapping, const void* key, const void* value);
  void keep(const char* error);

  const Trees& trees_;
  Touched& touched_;
  std::vector<Place> places_;
  Brix::Ptr<Kel::PtrInterface> lastTouched_;
  std::size_t writes_ = 0;
  bool failed_ = false;
  std::string error_;
};

}  // namespace Host
