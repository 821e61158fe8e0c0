#pragma once

#include "change/Change.h"
#include "text/JsonWriter.h"

namespace Host {

/// Writes changes as change lines: the inverse of ChangeReader, wherever the change came from.
class ChangeWriter {
 public:
  explicit ChangeWriter(JsonWriter& json) : json_(json) {}

  /// The whole change as one line.
  void line(const Change& change);
  /// What the change has done when it was applied at `time`, as one line that does the same: with
  /// this time for its own, and without the answers that it has asked for.
  void lineApplied(const Change& change, Kel::Seconds time);

 private:
  void write(const Change& change, std::optional<Kel::Seconds> time, const Change::Show& asked);
  void paths(std::string_view name, const std::vector<TreePath>& paths);
  void edits(std::string_view name, const std::vector<Edit>& edits);
  void control(const Change& change);
  void show(const Change::Show& asked);
  void datum(const Datum& datum);
  void parts(const Datum& datum);
  void list(const Datum& list);
  void pair(const Datum& pair);
  void keys(const Node& list, const void* key);

  JsonWriter& json_;
};

}  // namespace Host
