#include "control/Show.h"

#include "control/AgentAnswer.h"
#include "control/AskedPath.h"
#include "control/JsonCopy.h"
#include "control/RequestLine.h"
#include "control/TreeText.h"
#include "text/ExitCode.h"

namespace Host {
int show(const ShowRequest& request, const RunOptions& options, const Console& console) {
  Report report(console.err, options.color);
  TreePath path;
  if (!request.path.empty() && !readAskedPath(request.path, path, report)) {
    return kWrongInput;
  }
  RequestLine line("show");
  if (request.path.empty()) {
    const bool usual = !request.v1 && !request.status;
    line.json.name("of");
    line.json.openArray();
    for (const auto& [part, wanted] :
         {std::pair{"v1", request.v1}, {"v2", request.v2 || usual}, {"status", request.status}}) {
      if (wanted) {
        line.json.text(part);
      }
    }
    line.json.closeArray();
  }
  line.optional("path", request.path);

  Requests agent(request.socket);
  const auto data = objectIn(agent.ask(line.done()).members, "data");
  if (request.json) {
    JsonWriter json(console.out, Layout::pretty);
    copyDocument(json, data);
  } else if (data.size() == 0) {
    console.err << "vpm: there is nothing"
                << (request.path.empty() ? "" : " at " + printable(request.path)) << '\n';
  } else {
    TreeText(console.out).write(data);
  }
  return kDone;
}

}  // namespace Host
