#include "control/Explain.h"

#include "control/AgentAnswer.h"
#include "control/AskedPath.h"
#include "control/ExplanationText.h"
#include "control/JsonCopy.h"
#include "control/RequestLine.h"
#include "text/ExitCode.h"

namespace Host {

int explainAgent(const ExplainRequest& request, const RunOptions& options, const Console& console) {
  Report report(console.err, options.color);
  TreePath path;
  if (!readAskedPath(request.path, path, report)) {
    return kWrongInput;
  }
  RequestLine line("explain");
  line.member("path", request.path);
  Requests agent(request.socket);
  printExplanation(objectIn(agent.ask(line.done()).members, "explain"), request.json, console);
  return kDone;
}

void printExplanation(const simdjson::dom::object& explanation, bool json, const Console& console) {
  if (json) {
    JsonWriter writer(console.out, Layout::pretty);
    copyObject(writer, explanation);
  } else {
    console.out.write(explanationText(explanation));
  }
}

}  // namespace Host
