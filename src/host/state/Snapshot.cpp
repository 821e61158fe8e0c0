#include "state/Snapshot.h"

#include <filesystem>
#include <sstream>

#include "data/EntityFiller.h"
#include "data/TreeWriter.h"
#include "document/DocumentReader.h"
#include "state/Checksum.h"
#include "state/StateError.h"
#include "text/Concat.h"

namespace Host {
namespace {

struct Part {
  const char* name;
  Content content;
};
constexpr Part kParts[] = {{"configuration.json", Content::configuration},
                           {"version2.json", Content::leftOver}};
constexpr const char* kManifest = "manifest";

constexpr const char* kHelp =
    ". Put the folder back from a copy; or, to go on from the documents alone, name an empty "
    "folder.";

void write(ByteSink& sink, const Trees& trees, Content content) {
  JsonWriter json(sink, Layout::compact);
  json.openObject();
  for (const Node* const top : Schema::instance().tops()) {
    if (top->state == (content == Content::leftOver)) {
      TreeWriter(json, content).container(*top, trees);
    }
  }
  json.closeObject();
  json.endLine();
}

std::unique_ptr<SourceText> textOf(const std::string& file) {
  std::string why;
  auto source = SourceText::read(file, why);
  if (source == nullptr) {
    throw StateError(concat({file, ": ", why, kHelp}));
  }
  return source;
}

void fill(const SourceText& source, const Trees& trees, Content content) {
  EntityFiller filler(trees);
  const auto faults = DocumentReader(1, content).read(source, filler);
  if (!faults.empty()) {
    const Fault& fault = faults.front();
    const auto line = std::to_string(source.placeOf(fault.offset).line);
    const auto column = std::to_string(source.placeOf(fault.offset).column);
    throw StateError(concat({source.name(), ":", line, ":", column, ": ", fault.message,
                             ". Another version of vpm may have written it.", kHelp}));
  }
}

}  // namespace

void writeSnapshot(Files& files, const std::string& folder, const Trees& trees,
                   std::uint64_t through) {
  const std::string aside = concat({folder, ".new"});
  files.remove(aside);  // a crash may have left one
  files.makeFolder(aside);
  std::ostringstream manifest;
  manifest << "through " << through << '\n';
  for (const Part& part : kParts) {
    NewFile file(files, concat({aside, "/", part.name}));
    write(file, trees, part.content);
    file.finish();
    manifest << part.name << ' ' << file.size() << ' ' << checksumText(file.checksum()) << '\n';
  }
  NewFile file(files, concat({aside, "/", kManifest}));
  file.write(manifest.str());
  file.finish();
  files.syncFolder(aside);
  files.rename(aside, folder);
  files.syncFolder(std::filesystem::path(folder).parent_path().string());
}

std::uint64_t readSnapshot(const std::string& folder, const Trees& trees) {
  const auto text = textOf(concat({folder, "/", kManifest}));
  std::istringstream manifest{std::string(text->text())};
  std::string word;
  std::uint64_t through = 0;
  manifest >> word >> through;
  for (const Part& part : kParts) {
    std::string name;
    std::size_t size = 0;
    std::string sum;
    manifest >> name >> size >> sum;
    if (!manifest || word != "through" || name != part.name) {
      throw StateError(concat({text->name(), ": this is no manifest of a snapshot", kHelp}));
    }
    const auto source = textOf(concat({folder, "/", part.name}));
    const std::string found = checksumText(checksum(source->text()));
    if (size != source->text().size() || sum != found) {
      throw StateError(
          concat({source->name(), ": the file is damaged: it has ",
                  std::to_string(source->text().size()), " bytes with the checksum ", found,
                  "; the manifest has ", std::to_string(size), " and ", sum, kHelp}));
    }
    fill(*source, trees, part.content);
  }
  return through;
}

std::size_t snapshotSize(const std::string& folder) {
  std::size_t bytes = 0;
  for (const Part& part : kParts) {
    std::error_code error;
    const auto size = std::filesystem::file_size(concat({folder, "/", part.name}), error);
    bytes += error ? 0 : static_cast<std::size_t>(size);
  }
  return bytes;
}

void writeDocument(Files& files, const std::string& file, const Trees& trees, Content content) {
  const std::string aside = concat({file, ".new"});
  NewFile sink(files, aside);
  write(sink, trees, content);
  sink.finish();
  files.rename(aside, file);
  files.syncFolder(std::filesystem::path(file).parent_path().string());
}

void readDocument(const std::string& file, const Trees& trees, Content content) {
  fill(*textOf(file), trees, content);
}

}  // namespace Host
