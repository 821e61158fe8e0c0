#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace [[using gnu: visibility("default")]] Lumo {

/// The first bytes of a segment. Exactly the packet header and context that the metadata describes.
struct PacketHeader {
  static constexpr std::uint32_t kMagic = 0xC1FC1FC1;

  std::uint32_t magic;
  std::array<std::uint8_t, 16> uuid;
  std::uint32_t streamId;
  std::uint64_t streamInstance;  ///< the number of the segment
  std::uint64_t begin;           ///< stamp of the first record
  std::uint64_t end;             ///< at least the stamp of the last record
  std::uint64_t contentBits;     ///< what is valid: this header and whole records
  std::uint64_t packetBits;      ///< the size of the segment
  std::uint64_t sequence;        ///< counts the segments in the order of their use; 0: never used
  std::uint64_t discarded;       ///< records dropped while this was the current segment
};
static_assert(sizeof(PacketHeader) == 80 && offsetof(PacketHeader, begin) == 32,
              "no gaps: the metadata describes every byte");

/// What the process has in memory before a copy of the metadata, at the beginning of a page: a core
/// file holds the metadata, and who searches it for the segments, page by page, comes by it.
struct MetadataHeader {
  static constexpr std::uint64_t kMagic = 0x6174'6164'6f6d'754c;  // "Lumodata"

  std::uint64_t magic;
  std::uint64_t bytes;  ///< of the text that follows
};

/// What precedes the values of a record: site (4 bytes), stamp (8), printed time (8, a double),
/// subject (8).
inline constexpr std::size_t kRecordHeader = 28;

}  // namespace Lumo
