#include "command/AuditDocuments.h"

#include <optional>

#include "audit/Audit.h"
#include "document/Configuration.h"
#include "text/ExitCode.h"
#include "text/JsonWriter.h"
#include "text/OutputFile.h"

namespace Host {

int auditDocuments(const std::vector<std::string>& documents, const RunOptions& options,
                   const Console& console) {
  Report report(console.err, options.color);
  Progress progress(console.err, options.progress);
  const Trees trees;
  if (!readEverything(documents, trees, report, progress)) {
    report.sum("nothing was compared");
    return kWrongInput;
  }
  progress.begin("comparing", 0);
  std::optional<OutputFile> file;
  if (!options.output.empty()) {
    file.emplace(options.output);
  }
  // As if the run that has printed version 2 were still there.
  const Translation::State running{true, true, true};
  const auto differences = Audit(trees, History(trees), running, running).run();
  JsonWriter json(file ? static_cast<ByteSink&>(*file) : console.out, Layout::pretty);
  const bool alarming = writeDifferences(json, differences);
  json.endLine();
  if (file) {
    file->commit();
  }
  return alarming ? kDifferent : kDone;
}

}  // namespace Host
