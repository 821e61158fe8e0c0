#pragma once

#include <optional>
#include <string>

#include "session/Session.h"

namespace Host {

/// What an agent runs: both state machines on the trees, and the session that changes them, by the
/// real clock.
///
/// Deliberate: the framework's clock stands still while a line is applied, at a time in whole
/// microseconds, as times are printed. So what is made of a line depends on the line, on the state,
/// and on one time that can be written down.
class Engine {
 public:
  explicit Engine(const Trees& trees);

  /// Starts both trees, now.
  void start();
  /// Applies a change line, now. Its error; none when all went well.
  std::optional<std::string> apply(const Change& change);
  void unreadable() { session_.unreadable(); }
  /// `ledger` is told of what is applied from now on.
  void addLedger(Ledger& ledger) { session_.addLedger(ledger); }
  /// Nobody is told any more.
  void dropLedgers() { session_.dropLedgers(); }

  const Trees& trees() const { return trees_; }
  const Session& session() const { return session_; }
  /// When something was done last, or now.
  Kel::Seconds time() const { return clock_.time(); }
  /// How often something was applied.
  std::size_t generation() const { return generation_; }

 private:
  const Trees& trees_;
  VirtualClock clock_;
  Translation translation_;
  Session session_;
  std::size_t generation_ = 0;
};

}  // namespace Host
