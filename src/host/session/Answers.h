#pragma once

#include <cstddef>
#include <string_view>

#include "session/Session.h"
#include "text/ByteSink.h"

namespace Host {

class JsonWriter;

/// Writes the answers of a run: one JSON object per line of text.
class Answers {
 public:
  Answers(ByteSink& sink, const Trees& trees, const Session& session)
      : sink_(sink), trees_(trees), session_(session) {}

  void error(std::size_t line, std::string_view message);
  void answer(std::size_t line, const Change::Show& show);
  /// The last one: all of version 2 and of the monitor's records.
  void end();

  /// Whether an error was answered, or an audit has found what should not be.
  bool anythingWrong() const { return wrong_; }

 private:
  void members(JsonWriter& json, const Change::Show& show);
  void containers(JsonWriter& json, std::string_view member, std::string_view module);

  void audit(JsonWriter& json);

  ByteSink& sink_;
  const Trees& trees_;
  const Session& session_;
  bool wrong_ = false;
};

}  // namespace Host
