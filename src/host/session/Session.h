#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "audit/Audit.h"
#include "change/Change.h"
#include "data/TreeCursor.h"
#include "session/Ledger.h"
#include "session/Statistics.h"
#include "translation/Translation.h"
#include "translation/VirtualClock.h"

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
      : trees_(trees), translation_(translation), clock_(clock), history_(trees) {}

  /// The line's error; none when all went well. A line that cannot be read counts as refused.
  std::optional<std::string> apply(const Change& change);
  void unreadable() { ++statistics_.failed; }
  /// `ledger` is told of every line from now on, after those that were added before.
  void addLedger(Ledger& ledger) { ledgers_.push_back(&ledger); }
  /// Nobody is told of lines any more.
  void dropLedgers() { ledgers_.clear(); }
  /// Compares what the session has come to: see Audit. `only`: of these devices; null: of all.
  std::vector<Difference> audit(const std::set<std::string>* only = nullptr) const {
    return Audit(trees_, history_, translation_.policies(), translation_.serviceDevices())
        .run(only);
  }
  const Statistics& statistics() const { return statistics_; }
  const History& history() const { return history_; }
  const Translation& translation() const { return translation_; }

 private:
  std::optional<std::string> whyRefused(const Change& change, TreeCursor& cursor) const;
  std::optional<std::string> whyNotEntered(const Change& change) const;
  void control(const Change& change, TreeCursor& cursor);

  const Trees& trees_;
  Translation& translation_;
  VirtualClock& clock_;
  History history_;
  std::vector<Ledger*> ledgers_;
  Statistics statistics_;
};

}  // namespace Host
