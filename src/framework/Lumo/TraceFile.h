#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string>

#include "Lumo/Metadata.h"
#include "Lumo/Packet.h"
#include "Lumo/Segments.h"
#include "Lumo/Site.h"
#include "Lumo/WriterLock.h"

namespace [[using gnu: visibility("default")]] Lumo {

/// A ring of records in memory that outlives its process.
///
/// **What it is for.** A fault in a switch is reported an hour after it happened, and nobody can
/// make it happen again. So the trace is always on, and it must cost nothing worth mentioning and
/// be readable whatever the process died of.
///
/// **Layout.** The ring is `count` segments of `size` bytes. With a directory each is a file
/// segment-NNNN that is mapped into memory; beside them lies a file `metadata`. Together they are a
/// trace in Common Trace Format 1.8, and any reader of that format takes the directory as it lies:
///
///   babeltrace2 /run/vela/trace
///
/// Without a directory the segments are memory without a name, byte for byte the same.
///
/// A segment is one packet of a stream of its own: a header (PacketHeader), then records without
/// gaps. One packet per stream is what makes a ring possible, because readers want the packets of a
/// stream in order, and here the order of the files says nothing; readers merge streams by time.
/// When the current segment is full the next one, the oldest, is taken over.
///
/// A record is the number of its *site*, a stamp, the printed time, what it is about and the values
/// (Site.h says how they lie). The texts belong to the site and stand in `metadata` only. Values
/// are raw: a prefix is copied as its 18 bytes and becomes text when somebody reads the trace.
///
/// **Nothing torn, at any instant.** The mapping belongs to the kernel's page cache: what was
/// stored is in the file when the process is gone (only a crash of the machine loses it). So the
/// order of the stores is all that matters. A record is stored behind the valid content first; then
/// the end time of the packet; then its content size, with release order. Death before the last
/// store leaves the packet as it was, with an end time that is a little late, which is allowed.
/// Taking over a segment goes the same way backwards: content size := the header alone, then end,
/// begin, sequence. At every instant each packet is valid, and its times contain its records.
///
/// A site's description must be in `metadata` before its first record is in a segment, as a reader
/// refuses a trace with an unknown number in it. The new `metadata` is written aside and renamed
/// over the old one. When that fails (full disk) records of the new sites are dropped, and it is
/// tried again when the next segment begins. Space for segments is reserved when the ring is
/// opened.
///
/// **Time.** A stamp is nanoseconds since 1970, strictly increasing over the whole ring: it is the
/// time of the event, or one more than the last stamp if that is not less. So several records of
/// one event need one reading of the clock, a clock that goes back does no harm, and merging the
/// segments by stamp gives the order of writing. Segments that were not used yet have the stamps 0,
/// 1, 2, …, because readers refuse two packets with the same times. The *printed* time is stored
/// beside it as it is, for the reader that prints the same line that the text trace prints.
///
/// **Drops.** A record that is larger than a segment, of a site without metadata, or from a signal
/// handler that interrupted a record is dropped and counted; the header of a segment says how many
/// were dropped in its time.
///
/// **Threads and forks.** Any thread may write (WriterLock). A child made by fork shares the pages
/// of its parent's files and must not write there: it starts without a default handle.
class TraceFile {
 public:
  /// A ring in files. See Segments::onDisk. Null upon failure: `why` says the reason.
  static std::unique_ptr<TraceFile> open(const std::string& directory, std::size_t segmentSize,
                                         std::size_t count, std::string& why);
  /// A ring in memory without a name. Null when there is none: `why` says so.
  static std::unique_ptr<TraceFile> inMemory(std::size_t segmentSize, std::size_t count,
                                             std::string& why);
  ~TraceFile();
  TraceFile(const TraceFile&) = delete;
  TraceFile& operator=(const TraceFile&) = delete;

  /// Starts a record of the site with this id, with up to `size` bytes of values and returns the
  /// place for them, or null when it was dropped. `stamp` is the time of the event in nanoseconds
  /// since 1970, `seconds` the time to print; what the bits of `subject` say is the writer's
  /// affair. After a place was returned, exactly one of `finish` and `abandon` must follow, from
  /// the same thread and soon: until then no other record can be written.
  std::byte* begin(std::uint32_t site, std::size_t size, std::uint64_t stamp, double seconds,
                   std::uint64_t subject = 0) noexcept;

  /// Makes the record valid; `end` is behind its last byte.
  void finish(std::byte* end) noexcept {
    seal(end, last_);
    lock_.leave();
  }

  /// Leaves the ring as it was before `begin`.
  void abandon() noexcept { lock_.leave(); }

  /// All of that at once, when nothing is needed for it but to store a few numbers. `copy` is given
  /// the place for the values, `size` bytes, and returns false to leave the ring as it was. False
  /// when nothing was written, for that or any other reason: `begin` decides.
  template <class Copy>
  [[gnu::always_inline]] bool tryRecord(std::uint32_t site, std::size_t size, std::uint64_t stamp,
                                        double seconds, std::uint64_t subject, Copy copy) noexcept {
    if (!lock_.tryEnter()) [[unlikely]] {
      return false;
    }
    bool written = false;
    if (site < published_ && fits(kRecordHeader + size)) [[likely]] {
      stamp = rising(stamp);
      std::byte* const end = at_ + kRecordHeader + size;
      written = copy(open(site, stamp, seconds, subject));
      if (written) [[likely]] {
        seal(end, stamp);
      }
    }
    lock_.leaveOwned();
    return written;
  }

  /// Writes the ring as it is now, with metadata, into `directory`: for a ring without files. A
  /// trace that lies there is moved as by `open`. False upon failure: `why` says the reason.
  bool saveTo(const std::string& directory, std::string& why);

  /// The memory of all segments, in the order of their numbers.
  std::span<const std::byte> memory() const noexcept { return segments_->all(); }
  /// In bytes, header and all.
  std::size_t segmentSize() const noexcept { return segments_->size(); }
  /// Records that were dropped since it was opened.
  std::uint64_t discarded() const noexcept { return discarded_.load(std::memory_order_relaxed); }

 private:
  explicit TraceFile(std::unique_ptr<Segments> segments);
  PacketHeader& packet(std::size_t index) const noexcept;
  // Whether the current segment, if there is one, has room for so many bytes more.
  bool fits(std::size_t bytes) const noexcept {
    return reinterpret_cast<std::uintptr_t>(at_) + bytes <= reinterpret_cast<std::uintptr_t>(end_);
  }
  // What is stored as the stamp of the next record.
  std::uint64_t rising(std::uint64_t stamp) const noexcept {
    return stamp > last_ ? stamp : last_ + 1;
  }
  // Stores what precedes the values; returns their place.
  std::byte* open(std::uint32_t site, std::uint64_t stamp, double seconds,
                  std::uint64_t subject) noexcept {
    last_ = stamp;
    std::byte* const place = at_;
    std::memcpy(place, &site, 4);
    std::memcpy(place + 4, &stamp, 8);
    std::memcpy(place + 12, &seconds, 8);
    std::memcpy(place + 20, &subject, 8);
    return place + kRecordHeader;
  }
  void seal(std::byte* end, std::uint64_t stamp) noexcept {
    PacketHeader& packet = *packet_;
    const auto bytes = static_cast<std::uint64_t>(end - reinterpret_cast<std::byte*>(&packet));
    at_ = end;
    std::atomic_ref(packet.end).store(stamp, std::memory_order_release);
    std::atomic_ref(packet.contentBits).store(bytes * 8, std::memory_order_release);
  }
  bool publish() noexcept;
  bool nextSegment(std::size_t needed, std::uint64_t stamp) noexcept;
  void drop() noexcept;

  std::byte* at_ = nullptr;  // behind the last record of the current segment
  std::byte* end_ = nullptr;
  PacketHeader* packet_ = nullptr;  // of the current segment
  std::uint64_t last_;              // the last stamp
  std::uint32_t published_ = 0;     // sites with a smaller id are in the metadata
  bool publishFailed_ = false;      // not tried again before the next segment
  WriterLock lock_;                 // guards all above
  std::uint64_t sequence_ = 0;
  std::unique_ptr<Segments> segments_;
  Uuid uuid_{};
  std::atomic<std::uint64_t> discarded_{0};
};

}  // namespace Lumo
