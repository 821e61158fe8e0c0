#pragma once

#include <optional>
#include <string>

#include "host/Change.h"
#include "host/TreeCursor.h"
#include "host/Translation.h"
#include "host/VirtualClock.h"

namespace Host {

/// Applies change lines: the writer of version 1 and of the monitor.
///
/// A line is one burst. Whether it fits the state is found out before any of it is applied, so that
/// a refused line leaves no trace. What handlers raise comes too late for that: by then the change
/// that they were told of is made, as the library promises. So the rest of the line is applied all
/// the same, including its signals, and the first thing raised becomes the line's error.
class Session {
 public:
  Session(const Trees& trees, Translation& translation, VirtualClock& clock)
      : trees_(trees), translation_(translation), clock_(clock) {}

  /// The line's error; none when all went well.
  std::optional<std::string> apply(const Change& change);

 private:
  std::optional<std::string> whyRefused(const Change& change, TreeCursor& cursor) const;
  void control(const Change& change, TreeCursor& cursor);

  const Trees& trees_;
  Translation& translation_;
  VirtualClock& clock_;
};

}  // namespace Host
