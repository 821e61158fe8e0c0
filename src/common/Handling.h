#pragma once

#include <cstdint>

#include "Pario/Pario.h"
#include "common/HandlerTimes.h"
#include "common/TracePlace.h"
#include "common/TranslateSm.h"

namespace VelaPolicyMonitor {

/// What the trace lines of one class of state machines, written in one file, have in common.
struct TraceScope {
  Pario::Source source;
  const char* leave;  ///< the last piece of an exit line: "return", or " return" with a blank

  /// `scope` is what stands before the handler's form: "void Namespace::Class::".
  consteval TraceScope(const char* scope, const char* exit, const char* file = __builtin_FILE())
      : source{"VelaPolicyMonitor", scope, file}, leave(exit) {}
};

/// The first literal of a trace line, and where in the source the line is written.
struct Lead {
  const char* text;
  std::uint32_t line;

  consteval Lead(const char* literal = "", std::uint32_t atLine = __builtin_LINE())  // NOLINT
      : text(literal), line(atLine) {}
};

/// One run of a handler: while it lives the state machine is busy, and its lines are traced to both
/// facilities. Every handler that traces opens with one:
///
///   const Handling run{*this, kTrace, "handleOrigin(const String&)"};
///   run.enter(" Rule priority: ", priority(), " policy: ", name);
///   …
///   run.leave();
///
/// The form is a literal and never split over lines, so that a trace line is found in the source by
/// searching for it. A line consists of the scope, the form and the pieces with nothing between.
/// A handler that ends by an exception writes no exit line.
///
/// The lines belong to where the machine stands (TracePlace); those of a keyed handler of an upper
/// machine to the key, which is named as OnDevice, OnVrf or OnRule.
///
/// While the run-time of handlers is measured (Pario::measuringIs), so is this one.
class Handling {
 public:
  // Inline, so that what it holds lies in registers, and nowhere as long as nobody listens.
  template <class Sm>
  [[gnu::always_inline]] Handling(Sm& sm, const TraceScope& scope, const char* form) noexcept
      : busy_(sm), scope_(scope), form_(form), place_(sm.tracePlace()) {
    if (event_.isOpen() && Pario::measuring()) [[unlikely]] {
      measured_ = HandlerTimes::begin(scope.source.scope, form);
    }
  }
  template <class Sm, class Part>
  [[gnu::always_inline]] Handling(Sm& sm, const TraceScope& scope, const char* form,
                                  const Part& part) noexcept
      : Handling(sm, scope, form) {
    if (event_.isOpen()) {
      part_ = part.bits();
    }
  }

  Handling(const Handling&) = delete;
  Handling& operator=(const Handling&) = delete;
  [[gnu::always_inline]] ~Handling() noexcept(false) {
    if (event_.isOpen() && measured_) [[unlikely]] {
      HandlerTimes::end();
    }
  }

  /// The entry line, level 8.
  template <class... Pieces>
  [[gnu::always_inline]] void enter(Lead lead = {}, const Pieces&... pieces) const {
    line(8, lead, pieces...);
  }
  /// A decision to add or remove, level 6.
  template <class... Pieces>
  [[gnu::always_inline]] void act(Lead lead, const Pieces&... pieces) const {
    line(6, lead, pieces...);
  }
  /// A decision at a level of its own.
  template <class... Pieces>
  [[gnu::always_inline]] void decide(unsigned level, Lead lead, const Pieces&... pieces) const {
    line(level, lead, pieces...);
  }
  /// Whether anybody listens to decisions of this level.
  [[gnu::always_inline]] static bool listens(unsigned level) noexcept { return Pario::on(level); }
  /// The exit line, level 7.
  [[gnu::always_inline]] void leave(std::uint32_t atLine = __builtin_LINE()) const {
    if (Pario::on(7)) {
      Pario::write({scope_.source, form_, {7, atLine}, place()}, Pario::Literal{scope_.leave});
    }
  }

 private:
  template <class... Pieces>
  [[gnu::always_inline]] void line(unsigned level, const Lead& lead,
                                   const Pieces&... pieces) const {
    if (Pario::on(level)) {
      Pario::write({scope_.source, form_, {level, lead.line}, place()}, Pario::Literal{lead.text},
                   pieces...);
    }
  }

  Pario::Place place() const noexcept { return place_.bits() | part_; }

  Busy busy_;
  Pario::Event event_;
  const TraceScope& scope_;
  const char* form_;
  const TracePlace& place_;
  Pario::Place part_ = 0;
  bool measured_ = false;
};

}  // namespace VelaPolicyMonitor
