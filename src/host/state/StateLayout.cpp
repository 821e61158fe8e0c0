#include "state/StateLayout.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <optional>

#include "state/StateError.h"
#include "text/Concat.h"

namespace Host {
namespace {

constexpr std::string_view kSnapshot = "snapshot-";
constexpr std::string_view kJournal = "journal-";

std::string created(std::string folder, Files& files) {
  try {
    files.makeFolder(folder);
  } catch (const OutputError& error) {
    throw StateError(error.what());
  }
  return folder;
}

std::vector<std::string> namesIn(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (std::filesystem::directory_iterator at(folder, error), end; !error && at != end;
       at.increment(error)) {
    names.push_back(at->path().filename().string());
  }
  if (error) {
    throw StateError(concat({folder, ": cannot be read: ", error.message()}));
  }
  return names;
}

/// The number in a name such as journal-12; none when it is another name.
std::optional<std::size_t> generationOf(std::string_view name, std::string_view kind) {
  std::size_t generation = 0;
  if (!name.starts_with(kind)) {
    return std::nullopt;
  }
  name.remove_prefix(kind.size());
  const char* const end = name.data() + name.size();
  const auto [at, error] = std::from_chars(name.data(), end, generation);
  return error == std::errc() && at == end ? std::optional(generation) : std::nullopt;
}

}  // namespace

StateLayout::StateLayout(std::string folder, Files& files)
    : folder_(created(std::move(folder), files)), files_(files), lock_(path("lock")) {
  for (const std::string& name : namesIn(folder_)) {
    if (const auto snapshot = generationOf(name, kSnapshot)) {
      snapshot_ = std::max(snapshot_, *snapshot);
    } else if (const auto journal = generationOf(name, kJournal)) {
      journals_.push_back(*journal);
    }
  }
  std::ranges::sort(journals_);
  std::erase_if(journals_, [&](std::size_t journal) { return journal < snapshot_; });
  highest_ = std::max(snapshot_, journals_.empty() ? 0 : journals_.back());
}

std::string StateLayout::path(std::string_view name) const { return concat({folder_, "/", name}); }

std::string StateLayout::snapshot(std::size_t generation) const {
  return path(concat({kSnapshot, std::to_string(generation)}));
}

std::string StateLayout::journal(std::size_t generation) const {
  return path(concat({kJournal, std::to_string(generation)}));
}

void StateLayout::addJournal(std::size_t generation) {
  journals_.push_back(generation);
  highest_ = generation;
}

void StateLayout::tidy() {
  for (const std::string& name : namesIn(folder_)) {
    const auto snapshot = generationOf(name, kSnapshot);
    const auto journal = generationOf(name, kJournal);
    if (name.ends_with(".new") || snapshot.value_or(snapshot_) < snapshot_ ||
        journal.value_or(snapshot_) < snapshot_) {
      files_.remove(path(name));
    }
  }
  std::erase_if(journals_, [&](std::size_t journal) { return journal < snapshot_; });
}

}  // namespace Host
