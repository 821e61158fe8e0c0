#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "model/reference/Collection.h"

namespace Reference {

/// Where a place begins.
enum class From : std::uint8_t {
  policyV1,
  serviceV1,
  status,
  policyV2,
  serviceV2,
  kept,  ///< an entity that was kept, in the tree or no longer
  policyRoot,
  serviceRoot,
  held,  ///< a machine that somebody holds, child or no longer
};

/// An entity or a machine, found anew whenever it is asked for. An entity's steps are attribute and
/// key (empty for a single one), a machine's the keys of children ("match" for the single one).
struct Place {
  From from = From::policyV1;
  std::size_t slot = 0;
  std::vector<std::pair<int, Text>> steps;
  const char* type = "";  ///< what is kept in the slot has to be of this type
};

/// One thing that happens to a world. What does not fit the world that it meets does nothing, so
/// that any operation can be left out of any list.
struct Operation {
  enum class Verb : std::uint8_t {
    // To entities; with `create`, those on the way are made when they are missing.
    put,     ///< an entry, a member, a single one
    write,   ///< a value
    name,    ///< a name in a record
    erase,   ///< what is under the key
    clear,   ///< all that the attribute holds
    notify,  ///< deliver a notification again
    keep,    ///< in a slot, whatever becomes of it
    forget,
    observe,  ///< when `id` is told of (0: anything), do `nested`, `times` times
    unobserve,
    raise,  ///< of what an observer does: it raises Refused, unless that ends the process
    lose,   ///< the trace's sink fails for the next `times` lines
    // To machines.
    call,  ///< `value` is the form, `key` the argument
    suspend,
    resume,
    mark,
    unmark,
    childDel,
    childDelAll,
    cookieIs,       ///< a new one
    initializedIs,  ///< `value` is true or false
    initCompleteIs,
    hold,
    release,
    listen,  ///< as a notifiee of the old style, who raises Refused `times` times; `create`: visit
             ///< at once
    unlisten,
    // To the two roots.
    start,  ///< `value`: "", or which argument is null: "version 1", "status", or "version 2",
            ///< which
            ///< is status, too: nothing is ever added then
    stop,
  };

  Verb verb = Verb::put;
  Place at;
  int id = 0;
  Text key;
  Text value;
  bool create = false;
  std::size_t slot = 0;
  int times = 0;
  std::vector<Operation> nested;
};

/// What is looked at besides the lines of the text trace.
struct Seen {
  bool journal = false;  ///< notifications of version 2 and of the records
  bool binary = false;   ///< the binary trace
};

inline constexpr std::size_t kSlots = 3;

/// What observers raise.
struct Refused {};

/// An operation in one line; what is nested follows, indented.
Text textOf(const Operation& operation);
/// The same as a line of changes, as vpm replays it; empty when there is none.
Text changeLineOf(const Operation& operation);

}  // namespace Reference
