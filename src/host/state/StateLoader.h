#pragma once

#include <cstdint>
#include <functional>

#include "change/ChangeReader.h"
#include "data/Trees.h"
#include "state/JournalReader.h"
#include "state/Snapshot.h"
#include "state/StateLayout.h"

namespace Host {

/// Loads the state of a folder: the newest snapshot, and the journals from its generation on. A
/// torn end of the last record is cut off; what is damaged otherwise is left as it is.
class StateLoader {
 public:
  using Say = std::function<void(const std::string& message)>;

  StateLoader(const StateLayout& layout, Files& files, const Say& say)
      : layout_(layout), files_(files), say_(say) {}

  /// Into fresh trees. Raises StateError.
  void load(const Trees& trees);

  /// The number of the last record.
  std::uint64_t last() const { return last_; }
  std::size_t snapshotBytes() const { return snapshotBytes_; }
  /// Of all journals, and of the last one.
  std::size_t journalBytes() const { return journalBytes_; }
  std::size_t lastJournalBytes() const { return lastJournalBytes_; }

 private:
  void journal(std::size_t index, const Trees& trees);
  void apply(const std::string& file, const JournalRecord& record, const Trees& trees);
  bool hasRecords(std::size_t firstJournal) const;
  void cut(const std::string& file, const JournalReader& reader, std::size_t size);

  const StateLayout& layout_;
  Files& files_;
  const Say& say_;
  ChangeReader changes_;
  std::uint64_t last_ = 0;
  std::size_t snapshotBytes_ = 0;
  std::size_t journalBytes_ = 0;
  std::size_t lastJournalBytes_ = 0;
};

}  // namespace Host
