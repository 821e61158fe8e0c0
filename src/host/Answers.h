#pragma once

#include <cstddef>
#include <string_view>

#include "host/ByteSink.h"
#include "host/Change.h"
#include "host/Translation.h"

namespace Host {

/// Writes the answers of a run: one JSON object per line of text.
class Answers {
 public:
  Answers(ByteSink& sink, const Trees& trees, const Translation& translation)
      : sink_(sink), trees_(trees), translation_(translation) {}

  void error(std::size_t line, std::string_view message);
  void answer(std::size_t line, const Change::Show& show);
  /// The last one: all of version 2 and of the monitor's records.
  void end();

  /// Whether an error was answered, or an audit has found what should not be.
  bool anythingWrong() const { return wrong_; }

 private:
  void members(class JsonWriter& json, const Change::Show& show);
  void containers(class JsonWriter& json, std::string_view member, std::string_view module);

  ByteSink& sink_;
  const Trees& trees_;
  const Translation& translation_;
  bool wrong_ = false;
};

}  // namespace Host
