#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "Kel/Text.h"

namespace VelaPolicyMonitor {

/// How often each handler has run, and for how long, while Pario::measuring() was on. For the
/// thread of the event loop.
class HandlerTimes {
 public:
  struct Entry {
    std::string_view className;  ///< "VelaPolicyMonitor::PolicyTranslateRootSm"
    std::string_view form;       ///< "handlePolicySet(const String&)"
    std::uint64_t calls = 0;
    /// Without the handlers that ran inside of it: all entries together are the time of all runs.
    Kel::Seconds seconds = 0;
  };
  /// The handlers that have run, by class and form.
  static std::vector<Entry> all();
  /// Begins anew.
  static void forget() noexcept;

  /// One run of a handler. Deliberate: nothing is set before `begin`, so that a run that nobody
  /// measures costs nothing. Runs end in the reverse order of their beginnings.
  class Run {
   public:
    void begin(const char* scope, const char* form) noexcept;
    void end() noexcept;

   private:
    const char* scope_;
    const char* form_;  // null: it is not measured
    Run* outer_;
    std::uint64_t begin_;
    std::uint64_t inside_;  // nanoseconds in runs inside of this one
  };
};

}  // namespace VelaPolicyMonitor
