#pragma once

#include <deque>
#include <map>
#include <string_view>
#include <tuple>

#include "model/reference/Operation.h"

namespace Reference {

/// How often each trace site and each branch without one was come by: class, form, level (0 for a
/// branch), first piece.
using Hits = std::map<std::tuple<const char*, const char*, int, const char*>, long>;

/// What all objects of one reference world share: the clock, and what was seen of them.
struct World {
  bool journal = false;  ///< log the notifications of version 2 and of the records as well
  Text time;             ///< what the clock says
  Text log;              ///< trace lines and, with the journal, notifications, in order
  Hits hits;
  std::map<std::string_view, long> live;  ///< machines and cookies by type
  int losing = 0;                         ///< how many of the next trace lines the sink loses
  long lost = 0;                          ///< how many it has lost
  int sealed = 0;                         ///< within how much that no exception may leave
  std::deque<bool> refusals;  ///< whether each who was to raise Refused has done so, in order

  bool ended = false;  ///< whether the process has ended: nothing that happens then counts
  Text message;        ///< what it has said about that, among other things

  void line(std::string_view text) {
    if (!ended) {
      log.append(text).append("\n");
    }
  }
  void refuse(bool evenIfThatEnds) {
    refusals.push_back(sealed == 0 || evenIfThatEnds);
    if (refusals.back()) {
      throw Refused();
    }
  }
  void end(const Text& said) {
    if (!ended) {
      ended = true;
      message = said;
    }
  }
};

}  // namespace Reference
