#include "command/Translate.h"

#include <optional>

#include "data/TreeWriter.h"
#include "document/Configuration.h"
#include "policy/VelaPolicyTranslateSm.h"
#include "servicedevice/VelaServiceDeviceTranslateSm.h"
#include "text/ExitCode.h"
#include "text/OutputFile.h"
#include "tracing/Tracing.h"
#include "translation/VirtualClock.h"

namespace Host {
namespace {

void print(const Trees& trees, ByteSink& sink) {
  JsonWriter json(sink, Layout::pretty);
  json.openObject();
  for (const Node* const top : Schema::instance().tops()) {
    if (top->module != "vela-l3") {
      TreeWriter(json).container(*top, trees);
    }
  }
  json.closeObject();
  json.endLine();
}

}  // namespace

int translate(const std::vector<std::string>& documents, Kel::Seconds time,
              const RunOptions& options, const Console& console) {
  Report report(console.err, options.color);
  Progress progress(console.err, options.progress);
  const Trees trees;
  if (!readConfiguration(documents, trees, report, progress)) {
    report.sum("nothing was translated");
    return kWrongInput;
  }

  progress.begin("translating", 0);
  std::optional<OutputFile> file;
  if (!options.output.empty()) {
    file.emplace(options.output);
  }
  Tracing trace(options);
  const VirtualClock clock(time);
  const auto policies =
      VelaPolicyMonitor::policyTranslateRootSmFactory(trees.policyV1, trees.policyV2, trees.status);
  const auto serviceDevices = VelaPolicyMonitor::serviceDeviceTranslateRootSmFactory(
      trees.serviceDeviceV1, trees.serviceDeviceV2, trees.status);
  trace.end();  // how the trees are taken down again is no part of a translation

  progress.begin("printing", 0);
  if (file) {
    print(trees, *file);
    file->commit();
  } else {
    print(trees, console.out);
  }
  trace.check();
  return kDone;
}

}  // namespace Host
