#pragma once

#include <optional>
#include <string>

#include "text/TraceSubject.h"
#include "tracing/Tracing.h"

namespace Host {

class JsonWriter;

/// What a running program traces, and how that is changed while it runs: the answers to "trace".
class TraceSettings {
 public:
  TraceSettings(Tracing& tracing, TraceSubject subject)
      : tracing_(tracing), subject_(std::move(subject)) {}

  /// What is to be different; members without a value stay as they are.
  struct Change {
    std::optional<std::string> levels;  ///< "6-8", "none"
    std::optional<std::string> device;  ///< empty: of all, as with those that follow
    std::optional<std::string> vrf;
    std::optional<std::string> rule;
    std::optional<std::string> handler;
  };
  /// Why it cannot be done, then nothing is; empty when it is done.
  std::string change(const Change& change);

  /// The member "trace": what is set, with the members of a change.
  void write(JsonWriter& json) const;

 private:
  Tracing& tracing_;
  TraceSubject subject_;
};

}  // namespace Host
