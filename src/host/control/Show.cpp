#include "control/Show.h"

#include <algorithm>

#include "control/AgentAnswer.h"
#include "control/AskedPath.h"
#include "control/JsonCopy.h"
#include "control/RequestLine.h"
#include "control/TreeText.h"
#include "text/ExitCode.h"

namespace Host {
namespace {

/// The part of the data that a path is of, if nobody has said which parts to show.
std::string_view partOf(const TreePath& path) {
  const std::string_view module = path.empty() ? "" : path.front().node->module;
  return module == "vela-l3" ? "v1" : module == "vela-policy-monitor" ? "status" : "v2";
}

}  // namespace

int show(const ShowRequest& request, const RunOptions& options, const Console& console) {
  Report report(console.err, options.color);
  TreePath path;
  if (!request.path.empty() && !readAskedPath(request.path, path, report)) {
    return kWrongInput;
  }
  const std::string_view usual = request.v1 || request.v2 || request.status ? "" : partOf(path);
  RequestLine line("show");
  line.json.name("of");
  line.json.openArray();
  for (const auto& [part, wanted] :
       {std::pair{"v1", request.v1}, {"v2", request.v2}, {"status", request.status}}) {
    if (wanted || usual == part) {
      line.json.text(part);
    }
  }
  line.json.closeArray();
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
