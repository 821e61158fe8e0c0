#include "command/ExplainDocuments.h"

#include "control/AskedPath.h"
#include "document/Configuration.h"
#include "explain/Explainer.h"
#include "text/ExitCode.h"
#include "text/JsonWriter.h"
#include "translation/VirtualClock.h"

namespace Host {

int explainDocuments(const ExplainDocumentsRequest& request, const RunOptions& options,
                     const Console& console) {
  Report report(console.err, options.color);
  Progress progress(console.err, options.progress);
  TreePath path;
  if (!readAskedPath(request.path, path, report)) {
    return kWrongInput;
  }
  if (const std::string why = Explainer::whyNot(path); !why.empty()) {
    report.problem("PATH", why);
    return kWrongInput;
  }
  const Trees trees;
  readConfiguration(request.configs, trees, report, progress);
  if (!request.leftOver.empty()) {
    readLeftOver(request.leftOver, trees, report, progress);
  }
  if (report.errors() != 0) {
    report.sum("nothing was explained");
    return kWrongInput;
  }
  progress.begin("translating", 0);
  const VirtualClock clock(0);
  Translation translation(trees);
  translation.start();
  const History history(trees);
  TextSink sink;
  JsonWriter json(sink, Layout::compact);
  write(json, Explainer(trees, translation, history).explain(path));
  json.endLine();
  progress.end();
  simdjson::dom::parser parser;
  const simdjson::dom::element explanation = parser.parse(simdjson::padded_string(sink.text()));
  printExplanation(explanation.get_object(), request.json, console);
  return kDone;
}

}  // namespace Host
