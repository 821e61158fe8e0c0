#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "change/Change.h"
#include "text/SyntaxCheck.h"

namespace Host {

class ChangeWalk;

/// Reads change lines: checks members, paths, types and values, everything but what depends on the
/// state that the line meets. Keeps its memory from line to line.
class ChangeReader {
 public:
  ChangeReader();
  ChangeReader(const ChangeReader&) = delete;
  ChangeReader& operator=(const ChangeReader&) = delete;
  ~ChangeReader();

  /// Reads `line`, behind which lie SourceText::kPadding readable bytes, into `change`. The faults
  /// are sorted by their place, which is counted from the start of the line; none: all is well.
  std::vector<Fault> read(std::string_view line, Change& change);

 private:
  std::unique_ptr<ChangeWalk> walk_;
};

}  // namespace Host
