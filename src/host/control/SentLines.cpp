#include "control/SentLines.h"

#include "text/Concat.h"
#include "text/LineReader.h"
#include "text/Report.h"

namespace Host {

void SentLines::send(std::size_t number, std::string_view line) {
  if (isBlank(line)) {
    connection_.send("\n");
    return;
  }
  open_.push_back({number, faultOf(line)});
  if (open_.back().fault) {
    connection_.send("\n");
  } else if (tries_) {
    connection_.send(concat({R"({"request":"try","change":)", line, "}\n"}));
  } else {
    connection_.send(line);
    connection_.send("\n");
  }
}

/// Why a line must not be sent as it is; none for one that can be left to the agent.
std::optional<std::string> SentLines::faultOf(std::string_view line) {
  // In a log there are no requests: one that holds "stop" must not end the agent. The name may hide
  // behind escapes.
  if (!tries_ && line.find("request") == std::string_view::npos &&
      line.find('\\') == std::string_view::npos) {
    return std::nullopt;
  }
  Change change;
  const std::vector<Fault> faults = changes_.read(line, change);
  if (faults.empty()) {
    return std::nullopt;
  }
  return inLine(line, faults.front());
}

std::optional<AgentAnswer> SentLines::next() {
  if (open_.empty()) {
    return std::nullopt;
  }
  const Open first = open_.front();
  if (first.fault) {
    open_.pop_front();
    return AgentAnswer{"", noMembers(), first.number, first.fault};
  }
  const auto said = connection_.ready();
  if (!said) {
    return std::nullopt;
  }
  AgentAnswer answer = answers_.read(*said);
  if (answer.line != first.number) {
    throw std::runtime_error(concat({"the agent answered line ", std::to_string(answer.line),
                                     "; expected an answer to line ", std::to_string(first.number),
                                     "; what became of it and of the lines behind it is not "
                                     "known"}));
  }
  open_.pop_front();
  return answer;
}

std::string SentLines::open() const {
  const std::string first = std::to_string(open_.front().number);
  return open_.size() == 1 ? concat({"line ", first})
                           : concat({"lines ", first, " to ", std::to_string(open_.back().number)});
}

}  // namespace Host
