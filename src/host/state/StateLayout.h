#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "state/Files.h"
#include "state/FolderLock.h"

namespace Host {

/// What is in a state folder, by name; see StateFolder. Holds the folder's lock.
class StateLayout {
 public:
  /// Creates the folder if there is none, and looks what is in it. Raises StateError.
  StateLayout(std::string folder, Files& files);

  const std::string& folder() const { return folder_; }
  std::string documents() const { return path("documents.json"); }
  std::string snapshot(std::size_t generation) const;
  std::string journal(std::size_t generation) const;

  /// The generation of the newest snapshot; 0: there is none.
  std::size_t snapshot() const { return snapshot_; }
  void snapshotIs(std::size_t generation) { snapshot_ = generation; }
  /// The generations of the journals from that one on, in order.
  const std::vector<std::size_t>& journals() const { return journals_; }
  void addJournal(std::size_t generation);
  /// One that no name in the folder has had.
  std::size_t nextGeneration() const { return highest_ + 1; }
  /// Removes what is older than the newest snapshot, and what a crash has left. Raises OutputError.
  void tidy();

 private:
  std::string path(std::string_view name) const;

  const std::string folder_;
  Files& files_;
  const FolderLock lock_;
  std::size_t snapshot_ = 0;
  std::vector<std::size_t> journals_;
  std::size_t highest_ = 0;  // of all generations
};

}  // namespace Host
