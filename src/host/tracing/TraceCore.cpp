#include "tracing/TraceCore.h"

#include <algorithm>
#include <cstring>
#include <map>

#include "Lumo/Segments.h"
#include "text/Concat.h"
#include "tracing/TraceError.h"
#include "tracing/TraceMetadata.h"

namespace Host {
namespace {

using Lumo::MetadataHeader;
using Lumo::PacketHeader;

constexpr std::size_t kPage = Lumo::Segments::kSmallest;

template <class Header>
bool takeHeader(std::string_view bytes, Header& header) {
  if (bytes.size() < sizeof header) {
    return false;
  }
  std::memcpy(&header, bytes.data(), sizeof header);
  return header.magic == Header::kMagic;
}

/// Whether a header that has the right beginning is that of a segment.
bool isSegment(const PacketHeader& header) {
  const std::uint64_t size = header.packetBits / 8;
  return size >= kPage && size <= Lumo::Segments::kLargest && size % kPage == 0 &&
         header.contentBits >= sizeof header * 8 && header.contentBits <= header.packetBits;
}

struct Segment {
  PacketHeader header;
  std::string_view bytes;
};

struct Ring {
  std::string_view metadata;
  std::vector<Segment> segments;

  bool isWhole() const { return !metadata.empty() && !segments.empty(); }
  std::uint64_t lastStamp() const {
    return std::ranges::max(segments, {}, [](const Segment& segment) { return segment.header.end; })
        .header.end;
  }
};

using Rings = std::map<Lumo::Uuid, Ring>;

Rings search(const CoreFile& core, const std::string& metadataName) {
  Rings found;
  for (std::string_view area : core.areas()) {
    while (!area.empty()) {
      std::size_t size = kPage;
      PacketHeader packet{};
      MetadataHeader metadata{};
      if (takeHeader(area, packet) && isSegment(packet)) {
        size = packet.packetBits / 8;
        found[packet.uuid].segments.push_back({packet, area.substr(0, size)});
      } else if (takeHeader(area, metadata) && metadata.bytes <= area.size() - sizeof metadata) {
        const std::string_view text = area.substr(sizeof metadata, metadata.bytes);
        Ring& ring = found[TraceMetadata(text, metadataName).uuid()];
        // Two copies, when the process ended while it replaced one: the longer has more sites.
        if (text.size() > ring.metadata.size()) {
          ring.metadata = text;
        }
      }
      area.remove_prefix(std::min(size, area.size()));
    }
  }
  return found;
}

std::string whyNone(const std::string& path, const CoreFile& core, bool isHalf) {
  std::string why = path + ": there is no trace in this core file";
  const std::vector<std::string>& files = core.mappedFiles();
  const auto segment = std::ranges::find_if(files, [](const std::string& name) {
    return name.find("/segment-0000") != std::string::npos;
  });
  if (core.missing() != 0) {
    why += concat({", of which ", std::to_string(core.missing()),
                   " bytes were cut off; expected a whole one (ulimit -c, or the limits of what "
                   "collects the cores)"});
  } else if (segment == files.end()) {
    why += isHalf ? ", only a part of one; parts of the memory were left out"
                  : "; the process wrote none";
  }
  if (segment != files.end()) {
    const std::string folder = segment->substr(0, segment->rfind('/'));
    why +=
        ". It was in files, which a core leaves out unless bit 3 is set in "
        "/proc/PID/coredump_filter (0x3b, not 0x33). They have it still: vpm trace ";
    why += concat({folder, ", or ", folder, ".previous if another process has traced there since"});
  }
  return why;
}

}  // namespace

TraceCore::TraceCore(const std::string& path) : path_(path), core_(path) {
  const Rings found = search(core_, metadataName());
  const Ring* latest = nullptr;
  for (const auto& [uuid, ring] : found) {
    if (ring.isWhole() && (latest == nullptr || ring.lastStamp() > latest->lastStamp())) {
      latest = &ring;
    }
  }
  if (latest == nullptr) {
    throw TraceError(whyNone(path_, core_, !found.empty()));
  }
  metadata_ = latest->metadata;
  for (const Segment& segment : latest->segments) {
    const std::string name =
        concat({path_, ": segment ", std::to_string(segment.header.streamInstance)});
    packets_.push_back({name, packets_.size(), segment.header});
    segments_.push_back(segment.bytes);
  }
}

bool TraceCore::read(Packet& packet, std::string& records) const {
  const std::string_view segment = segments_[packet.place];
  const std::uint64_t content = packet.header.contentBits / 8;
  records = segment.substr(sizeof packet.header, content - sizeof packet.header);
  if (segment.size() < content) {
    throw TraceError(
        concat({packet.name, ": the core file was cut off; its last records are missing"}));
  }
  return true;
}

}  // namespace Host
