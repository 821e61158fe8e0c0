#pragma once

#include <filesystem>

#include "tracing/TraceSource.h"

namespace Host {

/// The folder of a trace, as Lumo::TraceFile writes it, or one segment of it with the metadata
/// beside it. Files are opened anew for every look: a new process may have replaced them.
class TraceFolder : public TraceSource {
 public:
  explicit TraceFolder(std::filesystem::path path);

  std::string metadataName() const override { return (folder_ / "metadata").string(); }
  std::string metadata() const override;
  std::vector<Packet> packets() const override;
  bool read(Packet& packet, std::string& records) const override;
  std::unique_ptr<TraceSource> previous() const override;

 private:
  std::filesystem::path folder_;
  std::string only_;  // the name of the one segment; empty: all
};

}  // namespace Host
