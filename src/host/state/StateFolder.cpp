#include "state/StateFolder.h"

#include <algorithm>
#include <filesystem>

#include "change/ChangeWriter.h"
#include "state/Snapshot.h"
#include "state/StateError.h"
#include "state/StateLoader.h"
#include "text/Concat.h"

namespace Host {
namespace {

/// 0 when there is none, or nobody knows.
std::size_t fileSize(const std::string& file) {
  std::error_code error;
  const auto size = std::filesystem::file_size(file, error);
  return error ? 0 : static_cast<std::size_t>(size);
}

bool editsNothing(const Change& change) {
  return change.deletes.empty() && change.replaces.empty() && change.updates.empty();
}

}  // namespace

StateFolder::StateFolder(std::string folder, Say say, Settings settings, Files& files)
    : say_(std::move(say)), settings_(settings), files_(files), layout_(std::move(folder), files) {
  for (const std::size_t journal : layout_.journals()) {
    if (!hasState() && fileSize(layout_.journal(journal)) != 0) {
      throw StateError(concat({layout_.journal(journal),
                               ": a journal without a snapshot; put the folder back from a copy, "
                               "or name an empty folder to begin anew"}));
    }
  }
}

void StateFolder::load(const Trees& trees) {
  StateLoader loader(layout_, files_, say_);
  loader.load(trees);
  last_ = loader.last();
  snapshotBytes_ = loader.snapshotBytes();
  olderBytes_ = loader.journalBytes() - loader.lastJournalBytes();
  journal_ = std::make_unique<Journal>(files_, layout_.journal(layout_.journals().back()),
                                       loader.lastJournalBytes());
}

void StateFolder::create(const Trees& trees) {
  documentsAre(trees);
  newJournal();
  writeSnapshot(trees);
  snapshotDone();
}

void StateFolder::loadDocuments(const Trees& trees) const {
  readDocument(layout_.documents(), trees, Content::configuration);
}

void StateFolder::documentsAre(const Trees& documents) {
  writeDocument(files_, layout_.documents(), documents, Content::configuration);
}

std::optional<std::string> StateFolder::enter(const Change& change, Kel::Seconds time) {
  if (editsNothing(change)) {
    return std::nullopt;
  }
  if (!broken_.empty()) {
    return concat({"not applied: changes cannot be kept at the moment (", broken_,
                   "); they are accepted again when a snapshot has succeeded, which the agent goes "
                   "on trying"});
  }
  line_.clear();
  JsonWriter json(line_, Layout::compact);
  ChangeWriter(json).lineApplied(change, time);
  std::string_view line = line_.text();
  line.remove_suffix(1);
  try {
    journal_->append(last_ + 1, line);
  } catch (const OutputError& error) {
    broken_ = journal_->sound() ? "" : error.what();
    return concat({"not applied, since it could not be kept: ", error.what()});
  }
  ++last_;
  return std::nullopt;
}

std::optional<std::string> StateFolder::sync() {
  try {
    journal_->sync();
  } catch (const OutputError& error) {
    broken_ = error.what();
    say_(concat({broken_, "; changes are refused until a snapshot has succeeded"}));
    return concat({"applied, but it may be lost when the agent ends: ", broken_});
  }
  return std::nullopt;
}

bool StateFolder::isDue() const {
  const std::size_t bytes = olderBytes_ + journal_->size();
  const bool wanted = !broken_.empty() || bytes > std::max(settings_.leastJournal, snapshotBytes_);
  return wanted && !child_.running() && Clock::now() >= notBefore_;
}

std::optional<std::chrono::milliseconds> StateFolder::patience() const {
  constexpr std::chrono::milliseconds kLookAtChild(50);
  return child_.running()  ? std::optional(kLookAtChild)
         : broken_.empty() ? std::nullopt
                           : std::optional(settings_.pause);
}

void StateFolder::tend(const Trees& trees) {
  try {
    if (const auto failure = child_.outcome()) {
      failure->empty() ? snapshotDone() : snapshotFailed(*failure);
    } else if (isDue()) {
      newJournal();
      if (settings_.fork) {
        child_.start([&] { writeSnapshot(trees); });
      } else {
        writeSnapshot(trees);
        snapshotDone();
      }
    }
  } catch (const OutputError& error) {
    snapshotFailed(error.what());
  }
}

void StateFolder::end(const Trees& trees) {
  sync();
  child_.stop();
  if (broken_.empty() && olderBytes_ + journal_->size() == 0) {
    return;
  }
  try {
    newJournal();
    writeSnapshot(trees);
    snapshotDone();
  } catch (const OutputError& error) {
    snapshotFailed(error.what());
  }
}

/// What is entered from here on is not in the snapshot that is written next.
void StateFolder::newJournal() {
  cures_ = !broken_.empty();
  if (journal_ != nullptr && journal_->sound() && journal_->size() == 0 &&
      layout_.journals().back() != layout_.snapshot()) {
    return;  // a snapshot that has failed has left it
  }
  const std::size_t generation = layout_.nextGeneration();
  auto journal = std::make_unique<Journal>(files_, layout_.journal(generation), 0);
  files_.syncFolder(layout_.folder());
  layout_.addJournal(generation);
  olderBytes_ += journal_ == nullptr ? 0 : journal_->size();
  journal_ = std::move(journal);
}

void StateFolder::writeSnapshot(const Trees& trees) const {
  Host::writeSnapshot(files_, layout_.snapshot(layout_.journals().back()), trees, last_);
}

void StateFolder::snapshotDone() {
  layout_.snapshotIs(layout_.journals().back());
  snapshotBytes_ = snapshotSize(layout_.snapshot(layout_.snapshot()));
  olderBytes_ = 0;
  if (cures_) {
    say_(concat({layout_.folder(), ": a snapshot has succeeded; changes are accepted again"}));
    broken_.clear();
  }
  try {
    layout_.tidy();
  } catch (const OutputError& error) {
    say_(error.what());
  }
}

void StateFolder::snapshotFailed(std::string_view why) {
  notBefore_ = Clock::now() + settings_.pause;
  say_(concat({layout_.folder(), ": a snapshot has failed, the journal goes on: ", why}));
}

}  // namespace Host
