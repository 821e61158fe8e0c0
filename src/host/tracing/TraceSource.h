#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "Lumo/Packet.h"

namespace Host {

/// Where a trace lies: its metadata and its packets, one per segment of the ring.
///
/// The process that writes the trace may be doing so at this moment. It takes a segment over by
/// setting the size of its content back, then counting its sequence up, and only then writing
/// records; so content that was copied between two looks at the same sequence is whole.
class TraceSource {
 public:
  /// A segment as it was when it was looked at.
  struct Packet {
    std::string name;  ///< for messages: "trace/segment-0003"
    std::size_t place = 0;
    Lumo::PacketHeader header{};
  };

  /// That of a trace's folder, of one of its segments, or of a core file. Raises TraceError.
  static std::unique_ptr<TraceSource> at(const std::string& path);

  TraceSource() = default;
  TraceSource(const TraceSource&) = delete;
  TraceSource& operator=(const TraceSource&) = delete;
  virtual ~TraceSource() = default;

  /// For messages.
  virtual std::string metadataName() const = 0;
  /// Raises TraceError when there is none.
  virtual std::string metadata() const = 0;
  /// All that are packets. Raises TraceError for what lies there and is none.
  virtual std::vector<Packet> packets() const = 0;
  /// The records in `packet`, whose header becomes the present one. False when it was taken over
  /// since it was looked at. Raises TraceError, with what there is in `records`, when it is shorter
  /// than its header says.
  virtual bool read(Packet& packet, std::string& records) const = 0;
  /// Whether there may be more the next time that somebody looks.
  virtual bool isLive() const { return true; }
  /// Where the trace was moved when another process began a new one here; null when nowhere.
  virtual std::unique_ptr<TraceSource> previous() const { return nullptr; }
};

}  // namespace Host
