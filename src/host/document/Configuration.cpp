#include "document/Configuration.h"

#include "data/EntityFiller.h"
#include "document/DocumentReader.h"
#include "text/Concat.h"

namespace Host {
namespace {

void fill(const SourceText& source, Content content, const Trees& trees, Report& report,
          Progress& progress) {
  progress.begin(concat({"reading ", source.name()}), source.text().size());
  EntityFiller filler(trees);
  const auto faults = DocumentReader(report.room(), content).read(source, filler, &progress.done());
  if (!faults.empty()) {
    progress.end();
    report.faults(source, faults);
  }
}

void read(const std::string& document, Content content, const Trees& trees, Report& report,
          Progress& progress) {
  std::string why;
  progress.begin(concat({"reading ", document}), 0);  // a pipe may take its time
  const auto source = SourceText::read(document, why);
  if (source == nullptr) {
    progress.end();
    report.problem(document, why);
    return;
  }
  fill(*source, content, trees, report, progress);
}

bool readAll(const std::vector<std::string>& documents, Content content, const Trees& trees,
             Report& report, Progress& progress) {
  for (const std::string& document : documents) {
    if (report.room() == 0) {
      break;
    }
    read(document, content, trees, report, progress);
  }
  return report.errors() == 0;
}

}  // namespace

bool readConfiguration(const std::vector<std::string>& documents, const Trees& trees,
                       Report& report, Progress& progress) {
  return readAll(documents, Content::configuration, trees, report, progress);
}

bool readConfiguration(const SourceText& source, const Trees& trees, Report& report,
                       Progress& progress) {
  fill(source, Content::configuration, trees, report, progress);
  return report.errors() == 0;
}

bool readEverything(const std::vector<std::string>& documents, const Trees& trees, Report& report,
                    Progress& progress) {
  return readAll(documents, Content::everything, trees, report, progress);
}

bool readLeftOver(const std::string& document, const Trees& trees, Report& report,
                  Progress& progress) {
  if (report.room() != 0) {
    read(document, Content::leftOver, trees, report, progress);
  }
  return report.errors() == 0;
}

}  // namespace Host
