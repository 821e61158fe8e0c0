#pragma once

#include <cstddef>
#include <string_view>

#include "text/JsonWriter.h"

namespace Host {

/// An answer on one line: {"line": N, ...}. Its members are written to `json`; `end` makes the line
/// whole and hands it to the sink.
class Reply {
 public:
  Reply(ByteSink& sink, std::size_t line);

  JsonWriter& json() { return json_; }
  void end();
  /// The member "error", and the end.
  void error(std::string_view message);

 private:
  JsonWriter json_;
};

}  // namespace Host
