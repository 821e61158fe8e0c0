#pragma once

#include "tracing/CoreFile.h"
#include "tracing/TraceSource.h"

namespace Host {

/// The ring of a process in its core file: segments and metadata are searched for in its memory,
/// page by page (Lumo/Packet.h says by what they are known). Of several rings the one that was
/// written last.
class TraceCore : public TraceSource {
 public:
  /// Raises TraceError when there is no ring in it, with what was found and where the trace may be.
  explicit TraceCore(const std::string& path);

  std::string metadataName() const override { return path_ + ": metadata"; }
  std::string metadata() const override { return std::string(metadata_); }
  std::vector<Packet> packets() const override { return packets_; }
  bool read(Packet& packet, std::string& records) const override;
  bool isLive() const override { return false; }

 private:
  std::string path_;
  CoreFile core_;
  std::string_view metadata_;
  std::vector<Packet> packets_;
  std::vector<std::string_view> segments_;  // in the order of the packets' places
};

}  // namespace Host
