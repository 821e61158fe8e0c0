#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "change/ChangeReader.h"
#include "control/AgentAnswer.h"

namespace Host {

/// Sends change lines and pairs them with their answers, in the order of the lines.
///
/// The agent counts the lines of a connection. So that its numbers are those of the log, each line
/// of the log is one line of the connection: a blank one where nothing is asked.
class SentLines {
 public:
  /// With `tries`, each line is sent as a question for what it would change.
  SentLines(Connection& connection, bool tries) : connection_(connection), tries_(tries) {}

  /// Sends the line of this number, with SourceText::kPadding readable bytes behind it.
  void send(std::size_t number, std::string_view line);
  /// Whether it is time to wait for answers.
  bool areMany() const { return open_.size() >= kMostLines || connection_.unsent() >= kMostBytes; }
  bool areNone() const { return open_.empty(); }
  /// The lines without an answer, as text.
  std::string open() const;

  /// The next line's answer; none when it has not come yet. The answer is valid until the next
  /// call.
  std::optional<AgentAnswer> next();

 private:
  static constexpr std::size_t kMostLines = 1024;
  static constexpr std::size_t kMostBytes = 1U << 20U;

  /// A line that was sent.
  struct Open {
    std::size_t number;
    std::optional<std::string> fault;  ///< what is wrong with it, so that nothing was asked
  };

  std::optional<std::string> faultOf(std::string_view line);

  Connection& connection_;
  bool tries_;
  std::deque<Open> open_;
  ChangeReader changes_;
  AnswerReader answers_;
};

}  // namespace Host
