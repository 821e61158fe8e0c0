#include "state/StateLoader.h"

#include <unistd.h>

#include <algorithm>

#include "change/TreeEditor.h"
#include "state/StateError.h"
#include "text/Concat.h"
#include "text/SourceText.h"

namespace Host {
namespace {

constexpr const char* kHelp =
    ". Changes that were acknowledged would be lost, so nothing was loaded. Put the folder back "
    "from a copy; or, to go on with what stands before that place, cut the file off there and "
    "remove the journals of higher numbers; or, to go on from the documents alone, name an empty "
    "folder.";

std::unique_ptr<SourceText> textOf(const std::string& file) {
  std::string why;
  auto source = SourceText::read(file, why);
  if (source == nullptr) {
    throw StateError(concat({file, ": ", why, kHelp}));
  }
  return source;
}

[[noreturn]] void damaged(const std::string& file, std::size_t offset, std::string_view what) {
  throw StateError(
      concat({file, ": damaged at offset ", std::to_string(offset), ": ", what, kHelp}));
}

}  // namespace

void StateLoader::load(const Trees& trees) {
  const std::string snapshot = layout_.snapshot(layout_.snapshot());
  last_ = readSnapshot(snapshot, trees);
  snapshotBytes_ = snapshotSize(snapshot);
  const auto& journals = layout_.journals();
  if (journals.empty() || journals.front() != layout_.snapshot()) {
    throw StateError(
        concat({layout_.journal(layout_.snapshot()), ": this journal is missing", kHelp}));
  }
  for (std::size_t i = 0; i < journals.size(); ++i) {
    journal(i, trees);
  }
}

void StateLoader::journal(std::size_t index, const Trees& trees) {
  const std::string file = layout_.journal(layout_.journals()[index]);
  const auto source = textOf(file);
  JournalReader reader(source->text());
  std::size_t offset = 0;
  while (const auto record = reader.next()) {
    if (record->number != last_ + 1) {
      damaged(file, offset,
              concat({"record ", std::to_string(record->number), " follows record ",
                      std::to_string(last_), "; what is between is missing"}));
    }
    apply(file, *record, trees);
    last_ = record->number;
    offset = reader.offset();
  }
  if (!reader.atEnd()) {
    if (reader.hasMore() || hasRecords(index + 1)) {
      damaged(file, offset,
              concat({"what should be record ", std::to_string(last_ + 1),
                      " does not have its checksum, and good records follow"}));
    }
    cut(file, reader, source->text().size());
  }
  lastJournalBytes_ = offset;
  journalBytes_ += offset;
}

bool StateLoader::hasRecords(std::size_t firstJournal) const {
  const auto& journals = layout_.journals();
  return std::any_of(journals.begin() + static_cast<std::ptrdiff_t>(firstJournal), journals.end(),
                     [&](std::size_t generation) {
                       const auto source = textOf(layout_.journal(generation));
                       return JournalReader(source->text()).hasMore();
                     });
}

void StateLoader::apply(const std::string& file, const JournalRecord& record, const Trees& trees) {
  Change change;
  const auto faults = changes_.read(record.line, change);
  if (!faults.empty() || !change.time) {
    throw StateError(
        concat({file, ": record ", std::to_string(record.number),
                " cannot be applied: ", faults.empty() ? "it has no time" : faults.front().message,
                ". Another version of vpm may have written it.", kHelp}));
  }
  Touched touched;
  TreeEditor editor(trees, touched);
  editor.edit(change);
  if (change.signal) {
    const Touched burst = touched;
    editor.signal(burst, *change.time);
  }
}

void StateLoader::cut(const std::string& file, const JournalReader& reader, std::size_t size) {
  try {
    const int descriptor = files_.open(file);
    files_.cut(descriptor, file, reader.offset());
    files_.sync(descriptor, file);
    ::close(descriptor);
  } catch (const OutputError& error) {
    throw StateError(error.what());
  }
  say_(concat({file, ": the last record ",
               reader.isIncomplete() ? "is incomplete" : "does not have its checksum",
               ", as happens when a machine goes down while it is being written; cut off ",
               std::to_string(size - reader.offset()), " bytes at offset ",
               std::to_string(reader.offset())}));
}

}  // namespace Host
