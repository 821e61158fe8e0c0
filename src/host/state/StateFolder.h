#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "data/Trees.h"
#include "session/Ledger.h"
#include "state/Journal.h"
#include "state/SnapshotChild.h"
#include "state/StateLayout.h"

namespace Host {

/// A folder from which an agent that was killed goes on as if nothing had happened.
///
/// What an agent has acknowledged is on disk. The folder holds, for a generation G,
///
///   snapshot-G/     version 1 with the monitor's records, version 2, and a manifest: one state
///   journal-G       the change lines that were accepted since, one record each
///   documents.json  what the documents of --config said when they were read last
///   lock            held by the agent that works on the folder
///
/// - *Ahead of the change.* A line is written to the journal when it has passed its check and
/// before
///   it is applied. If it cannot be written (the disk is full), what was written of it is cut off
///   again and the line is refused: it is neither in memory nor on disk, the client knows, and the
///   next line is tried as if nothing had happened. Writing behind the change would leave changes
///   in memory that every restart loses.
///
/// - *One sync for many.* Written is not on disk. The agent applies what its clients have sent
///   within one turn of its loop, then calls `sync` once, and only then answers. So a client's
///   answer waits for the disk, but clients do not wait for each other.
///
/// - *A sync that fails* leaves lines that are applied and perhaps on disk; nobody can tell, since
///   the system may drop what it could not write and report that once. So that journal is not
///   trusted any more: the lines of the turn are answered with an error that says so, further
///   changes are refused, and a snapshot is tried until one succeeds. It holds all that is in
///   memory, and with its journal everything goes on. The agent answers questions all the while.
///
/// - *A snapshot* is due when the journal has become longer than the snapshot, so that in the long
///   run everything is written twice, and a restart reads no more than twice the state. The journal
///   of the next generation is begun, and then a child process, which has a copy of the memory as
///   it was at that moment, writes the snapshot, while the agent goes on. The snapshot is written
///   under another name; each file, then the folder, is synced; the rename makes it valid at once.
///   What is older is removed after that. Whenever this stops, the newest snapshot and all journals
///   from its generation on are the state.
///
/// - *A restart* loads version 1 and the records of the newest snapshot, applies the journals to
///   them, and loads version 2 as the snapshot has it. All of this before the trees are started:
///   what version 2 lacks or has too much, the library finds out as it starts. Of a line, only what
///   it changed in version 1 and the records counts; `control` and `notify` were for the trees of
///   that time.
///
/// - *Records* carry a checksum and numbers without a gap, across journals. What does not fit at
///   the very end was being written when the machine went down: it is cut off, and said. If a good
///   record comes behind, it is damage and no tear, and nothing is thrown away: see StateError.
class StateFolder : public Ledger {
 public:
  /// Told what a person should know.
  using Say = std::function<void(const std::string& message)>;

  struct Settings {
    /// A journal shorter than this is none to be rid of.
    std::size_t leastJournal = std::size_t{4} << 20U;
    /// How long to wait before a snapshot is tried again.
    std::chrono::milliseconds pause{5000};
    /// Whether snapshots are written by a child process.
    bool fork = true;
  };

  /// Creates the folder if there is none, locks it, and finds out what is in it. Raises StateError.
  StateFolder(std::string folder, Say say) : StateFolder(std::move(folder), std::move(say), {}) {}
  StateFolder(std::string folder, Say say, Settings settings, Files& files = Files::ofTheSystem());

  /// Whether there is a state to go on from.
  bool hasState() const { return layout_.snapshot() != 0; }
  /// Loads it into fresh trees that nobody watches yet; lines can be entered from here on. Raises
  /// StateError.
  void load(const Trees& trees);
  /// Without a state, these trees become the first one; lines can be entered from here on. Raises
  /// OutputError.
  void create(const Trees& trees);

  /// Loads what the documents of --config said when they were read last. Raises StateError.
  void loadDocuments(const Trees& trees) const;
  /// The documents were read, and their differences entered. Raises OutputError.
  void documentsAre(const Trees& documents);

  std::optional<std::string> enter(const Change& change, Kel::Seconds time) override;
  /// Puts on disk what was entered; costs nothing when that is nothing. An error is for each of the
  /// lines entered since the last call: they are applied, and may not be on disk.
  std::optional<std::string> sync();

  /// Looks after snapshots; to be called once in a turn of the loop, when all is synced.
  void tend(const Trees& trees);
  /// After how long `tend` may have something to do, even if nothing else happens; none: never.
  std::optional<std::chrono::milliseconds> patience() const;
  /// The agent stops in good order: a last snapshot, so that the next start has no journal to read.
  /// The trees are running still.
  void end(const Trees& trees);

 private:
  using Clock = std::chrono::steady_clock;

  bool isDue() const;
  void newJournal();
  void writeSnapshot(const Trees& trees) const;
  void snapshotDone();
  void snapshotFailed(std::string_view why);

  const Say say_;
  const Settings settings_;
  Files& files_;
  StateLayout layout_;
  std::uint64_t last_ = 0;  // the number of the last record
  std::unique_ptr<Journal> journal_;
  std::size_t olderBytes_ = 0;  // of the journals before that one, back to the snapshot
  std::size_t snapshotBytes_ = 0;
  std::string broken_;  // why the journal is not to be trusted; empty: it is
  bool cures_ = false;  // the snapshot that is being written was begun when it was not
  SnapshotChild child_;
  Clock::time_point notBefore_{};  // for the next snapshot
  TextSink line_;
};

}  // namespace Host
