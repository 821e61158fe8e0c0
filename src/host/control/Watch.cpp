#include "control/Watch.h"

#include "control/AgentAnswer.h"
#include "control/AskedPath.h"
#include "control/ChangeText.h"
#include "control/Interruption.h"
#include "control/RequestLine.h"
#include "text/Concat.h"
#include "text/ExitCode.h"

namespace Host {
namespace {

/// One line of the agent for a person.
std::string changeLine(const AgentAnswer& answer, bool color) {
  if (boolIn(answer.members, "synchronized")) {
    return "-- this is what there is; changes follow --\n";
  }
  std::string text;
  double time = 0;
  if (answer.members["time"].get(time) == simdjson::SUCCESS) {
    appendTimeOfDay(text, time);
    text += ' ';
  }
  appendChange(text, answer.members, color);
  return text + '\n';
}

}  // namespace

int watch(const WatchRequest& request, const RunOptions& options, const Console& console) {
  Report report(console.err, options.color);
  TreePath path;
  if (!request.path.empty() && !readAskedPath(request.path, path, report)) {
    return kWrongInput;
  }
  const Interruption interruption;
  Connection connection(request.socket);
  RequestLine line("watch");
  line.optional("path", request.path);
  connection.send(line.done());
  AnswerReader reader;
  for (;;) {
    std::string printed;  // many changes at a time, when they come so
    while (const auto said = connection.ready()) {
      const AgentAnswer answer = reader.read(*said);
      if (answer.error) {
        console.out.write(printed);
        throw std::runtime_error(*answer.error);
      }
      printed += request.json ? concat({answer.text, "\n"}) : changeLine(answer, options.outColor);
    }
    if (!printed.empty()) {
      console.out.write(printed);
    }
    if (connection.pump(interruption.descriptor())) {
      return kDone;
    }
  }
}

}  // namespace Host
