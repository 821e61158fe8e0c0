#pragma once

#include <functional>
#include <string>

#include "session/Ledger.h"
#include "text/ByteSink.h"

namespace Host {

/// Writes what was applied as a change log, a line at a time and as it is applied. Replayed on the
/// same documents, the log leads to the same state: it has every line that was applied, with the
/// time at which it was, also when a handler raised an error, and no line that was refused.
class Recording : public Ledger {
 public:
  /// Told once why the recording has come to an end before its time.
  using Failed = std::function<void(const std::string& why)>;

  /// A file of this name from an earlier run is kept: it gets "~" behind its name. Raises
  /// OutputError when the file cannot be created.
  Recording(const std::string& file, Failed failed);
  ~Recording() override;

  /// Refuses nothing: what is recorded must not depend on a full disk.
  std::optional<std::string> enter(const Change& change, Kel::Seconds time) override;

 private:
  std::string file_;
  Failed failed_;
  int descriptor_ = -1;
  TextSink line_;
};

}  // namespace Host
