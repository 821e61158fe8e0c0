#pragma once

#include <simdjson.h>

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "control/Connection.h"

namespace Host {

/// One line that the agent has said, taken apart. Valid until the next one is read.
struct AgentAnswer {
  std::string_view text;  ///< the line as it came
  simdjson::dom::object members;
  std::size_t line = 0;              ///< which line it answers
  std::optional<std::string> error;  ///< why that could not be done
};

/// Takes apart what an agent says. Raises std::runtime_error when it is not what agents say.
class AnswerReader {
 public:
  /// `line` has SourceText::kPadding readable bytes behind it.
  AgentAnswer read(std::string_view line);

 private:
  simdjson::dom::parser parser_;
};

/// The agent could not do what it was asked for.
class Refusal : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Asks an agent for one thing after the other.
class Requests {
 public:
  explicit Requests(const std::string& socket) : connection_(socket) {}

  /// Sends a request, one line with its end, and waits for the answer. Raises Refusal when it is
  /// an error.
  AgentAnswer ask(std::string_view request);

 private:
  Connection connection_;
  AnswerReader reader_;
};

// Of an answer's JSON. What is not there, or of another type, is empty, 0 or false.

simdjson::dom::object noMembers();
std::string_view textIn(const simdjson::dom::object& object, std::string_view name);
std::uint64_t numberIn(const simdjson::dom::object& object, std::string_view name);
bool boolIn(const simdjson::dom::object& object, std::string_view name);
simdjson::dom::object objectIn(const simdjson::dom::object& object, std::string_view name);
simdjson::dom::array arrayIn(const simdjson::dom::object& object, std::string_view name);

}  // namespace Host
