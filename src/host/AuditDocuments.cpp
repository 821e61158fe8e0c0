#include "host/AuditDocuments.h"

#include <optional>

#include "host/Audit.h"
#include "host/Configuration.h"
#include "host/ExitCode.h"
#include "host/JsonWriter.h"
#include "host/OutputFile.h"

namespace Host {

bool writeDifferences(JsonWriter& json, const std::vector<Difference>& differences) {
  bool alarming = false;
  json.openObject();
  json.name("equal");
  json.boolean(differences.empty());
  json.name("differences");
  json.openArray();
  for (const Difference& difference : differences) {
    alarming = alarming || isAlarming(difference.kind);
    json.openObject();
    json.name("path");
    json.text(difference.path);
    json.name("class");
    json.text(nameOf(difference.kind));
    json.name("why");
    json.text(difference.why);
    json.closeObject();
  }
  json.closeArray();
  json.closeObject();
  return alarming;
}

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
