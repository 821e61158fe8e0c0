#include "control/AgentAnswer.h"

#include "text/Concat.h"
#include "text/SourceText.h"

namespace Host {
namespace {

using namespace std::string_view_literals;

/// The member of this name and type, or `otherwise`.
template <class T>
T memberOr(const simdjson::dom::object& object, std::string_view name, T otherwise) {
  T value = otherwise;
  return object[name].get(value) == simdjson::SUCCESS ? value : otherwise;
}

}  // namespace

AgentAnswer AnswerReader::read(std::string_view line) {
  static_assert(SourceText::kPadding >= simdjson::SIMDJSON_PADDING);
  AgentAnswer answer{line, noMembers(), 0, std::nullopt};
  if (parser_.parse(line.data(), line.size(), false).get(answer.members) != simdjson::SUCCESS) {
    throw std::runtime_error(concat({"the other side of the socket is no agent: it said \"",
                                     line.substr(0, 60), "\"; expected a JSON object"}));
  }
  answer.line = numberIn(answer.members, "line");
  std::string_view error;
  if (answer.members["error"].get(error) == simdjson::SUCCESS) {
    answer.error = error;
  }
  return answer;
}

AgentAnswer Requests::ask(std::string_view request) {
  connection_.send(request);
  const AgentAnswer answer = reader_.read(connection_.receive());
  if (answer.error) {
    throw Refusal(*answer.error);
  }
  return answer;
}

simdjson::dom::object noMembers() {
  static simdjson::dom::parser parser;
  static const simdjson::dom::object none =
      parser.parse(simdjson::padded_string("{}", 2)).get_object();
  return none;
}

std::string_view textIn(const simdjson::dom::object& object, std::string_view name) {
  return memberOr(object, name, ""sv);
}

std::uint64_t numberIn(const simdjson::dom::object& object, std::string_view name) {
  return memberOr<std::uint64_t>(object, name, 0);
}

bool boolIn(const simdjson::dom::object& object, std::string_view name) {
  return memberOr(object, name, false);
}

simdjson::dom::object objectIn(const simdjson::dom::object& object, std::string_view name) {
  return memberOr(object, name, noMembers());
}

simdjson::dom::array arrayIn(const simdjson::dom::object& object, std::string_view name) {
  static simdjson::dom::parser parser;
  static const simdjson::dom::array none =
      parser.parse(simdjson::padded_string("[]", 2)).get_array();
  return memberOr(object, name, none);
}

}  // namespace Host
