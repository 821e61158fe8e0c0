#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "Kel/Text.h"

namespace [[using gnu: visibility("default")]] VelaPolicyMonitor {

/// How often each handler has run, and for how long, while Pario::measuring() was on. For the
/// thread of the event loop.
class HandlerTimes {
 public:
  struct Entry {
    std::string_view className;  ///< "VelaPolicyMonitor::PolicyTranslateRootSm"
    std::string_view form;       ///< "handlePolicySet(const String&)"
    std::uint64_t calls;
    /// Without the handlers that ran inside of it: all entries together are the time of all runs.
    Kel::Seconds seconds;
  };
  /// The handlers that have run, by class and form.
  static std::vector<Entry> all();
  /// Begins anew.
  static void forget() noexcept;

  /// A run of a handler begins, inside of those that have begun and not ended. False when there is
  /// no memory to measure it; otherwise exactly one `end` follows.
  ///
  /// Deliberate: what is known of a run does not lie in the object that stands for it on the stack.
  /// Its address would be handed out, and with it all of that object would have to be in memory,
  /// which costs every handler a dozen stores whether it is measured or not.
  static bool begin(const char* scope, const char* form) noexcept;
  static void end() noexcept;
};

}  // namespace VelaPolicyMonitor
