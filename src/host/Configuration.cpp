#include "host/Configuration.h"

#include "host/Concat.h"
#include "host/DocumentReader.h"
#include "host/EntityFiller.h"

namespace Host {

bool readConfiguration(const std::vector<std::string>& documents, const Trees& trees,
                       Report& report, Progress& progress) {
  for (const std::string& document : documents) {
    if (report.room() == 0) {
      break;
    }
    std::string why;
    const auto source = SourceText::read(document, why);
    if (source == nullptr) {
      progress.end();
      report.problem(document, why);
      continue;
    }
    progress.begin(concat({"reading ", source->name()}), source->text().size());
    EntityFiller filler(trees);
    const auto faults = DocumentReader(report.room()).read(*source, filler, &progress.done());
    if (!faults.empty()) {
      progress.end();
      report.faults(*source, faults);
    }
  }
  return report.errors() == 0;
}

}  // namespace Host
