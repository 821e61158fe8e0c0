#pragma once

#include <optional>
#include <string>

#include "change/Change.h"

namespace Host {

/// Keeps what is applied.
class Ledger {
 public:
  Ledger() = default;
  Ledger(const Ledger&) = delete;
  Ledger& operator=(const Ledger&) = delete;
  virtual ~Ledger() = default;

  /// A line has passed its check and is about to be applied at `time`. An error refuses it after
  /// all: it is not applied, and is answered with that.
  virtual std::optional<std::string> enter(const Change& change, Kel::Seconds time) = 0;
};

}  // namespace Host
