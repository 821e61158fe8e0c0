#include "Lumo/TraceFile.h"

#include <sys/random.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

#include "Lumo/DefaultHandle.h"

namespace Lumo {

namespace {

Uuid randomUuid() {
  Uuid uuid{};
  if (getrandom(uuid.data(), uuid.size(), 0) != static_cast<ssize_t>(uuid.size())) {
    const auto process = static_cast<std::uint32_t>(getpid());  // told apart at least by process
    std::memcpy(uuid.data(), &process, sizeof process);
  }
  uuid[6] = static_cast<std::uint8_t>((uuid[6] & 0x0fU) | 0x40U);  // version 4: random
  uuid[8] = static_cast<std::uint8_t>((uuid[8] & 0x3fU) | 0x80U);
  return uuid;
}

void storeReleased(std::uint64_t& place, std::uint64_t value) noexcept {
  std::atomic_ref(place).store(value, std::memory_order_release);
}

}  // namespace

TraceFile::TraceFile(std::unique_ptr<Segments> segments)
    : last_(segments->count()), segments_(std::move(segments)), uuid_(randomUuid()) {
  for (std::size_t i = 0; i < segments_->count(); ++i) {
    auto* const header = ::new (segments_->at(i)) PacketHeader{};
    header->magic = PacketHeader::kMagic;
    header->uuid = uuid_;
    header->streamInstance = i;
    header->begin = header->end = i;
    header->contentBits = sizeof(PacketHeader) * 8;
    header->packetBits = segments_->size() * 8;
  }
}

TraceFile::~TraceFile() { Impl::forgetHandle(this); }

std::unique_ptr<TraceFile> TraceFile::open(const std::string& directory, std::size_t segmentSize,
                                           std::size_t count, std::string& why) {
  std::unique_ptr<Segments> segments = Segments::onDisk(directory, segmentSize, count, why);
  if (segments == nullptr) {
    return nullptr;
  }
  std::unique_ptr<TraceFile> file(new TraceFile(std::move(segments)));
  if (!file->publish()) {
    why = "cannot write " + directory + "/metadata: " + std::strerror(errno);
    return nullptr;
  }
  return file;
}

std::unique_ptr<TraceFile> TraceFile::inMemory(std::size_t segmentSize, std::size_t count,
                                               std::string& why) {
  std::unique_ptr<Segments> segments = Segments::inMemory(segmentSize, count, why);
  return segments == nullptr ? nullptr
                             : std::unique_ptr<TraceFile>(new TraceFile(std::move(segments)));
}

PacketHeader& TraceFile::packet(std::size_t index) const noexcept {
  return *std::launder(reinterpret_cast<PacketHeader*>(segments_->at(index)));
}

std::byte* TraceFile::begin(std::uint32_t site, std::size_t size, std::uint64_t stamp,
                            double seconds, std::uint64_t subject) noexcept {
  if (!lock_.enter()) {
    drop();
    return nullptr;
  }
  const std::size_t needed = kRecordHeader + size;
  stamp = rising(stamp);
  if ((site >= published_ && !publish()) || (!fits(needed) && !nextSegment(needed, stamp))) {
    drop();
    lock_.leave();
    return nullptr;
  }
  return open(site, stamp, seconds, subject);
}

bool TraceFile::publish() noexcept {
  if (publishFailed_) {
    return false;
  }
  publishFailed_ = true;
  try {
    const std::uint32_t sites = siteCount();
    if (segments_->publishMetadata(metadataText(uuid_, sites))) {
      published_ = sites;
      publishFailed_ = false;
    }
  } catch (const std::bad_alloc&) {  // NOLINT(bugprone-empty-catch)
    // Deliberate: as with a full disk, records of new sites are dropped until there is room.
  }
  return !publishFailed_;
}

bool TraceFile::nextSegment(std::size_t needed, std::uint64_t stamp) noexcept {
  if (sizeof(PacketHeader) + needed > segments_->size()) {
    return false;
  }
  publishFailed_ = false;
  PacketHeader& next = packet(static_cast<std::size_t>(sequence_ % segments_->count()));
  storeReleased(next.contentBits, sizeof(PacketHeader) * 8);
  storeReleased(next.end, stamp);
  storeReleased(next.begin, stamp);
  storeReleased(next.discarded, 0);
  // An exchange, because nothing may pass it in either direction: a reader of a live trace that
  // sees one of the records that follow also sees that the segment was taken over.
  std::atomic_ref(next.sequence).exchange(++sequence_, std::memory_order_acq_rel);
  packet_ = &next;
  at_ = reinterpret_cast<std::byte*>(&next) + sizeof(PacketHeader);
  end_ = reinterpret_cast<std::byte*>(&next) + segments_->size();
  return true;
}

void TraceFile::drop() noexcept {
  discarded_.fetch_add(1, std::memory_order_relaxed);
  if (packet_ != nullptr) {
    std::atomic_ref(packet_->discarded).fetch_add(1, std::memory_order_relaxed);
  }
}

bool TraceFile::saveTo(const std::string& directory, std::string& why) {
  const std::unique_ptr<Segments> target =
      Segments::onDisk(directory, segments_->size(), segments_->count(), why);
  if (target == nullptr) {
    return false;
  }
  if (!lock_.enter()) {
    why = "the trace cannot be saved from inside one of its own records";
    return false;
  }
  std::memcpy(target->all().data(), memory().data(), memory().size());
  lock_.leave();
  if (!target->publishMetadata(metadataText(uuid_, siteCount()))) {
    why = "cannot write " + directory + "/metadata: " + std::strerror(errno);
    return false;
  }
  return true;
}

}  // namespace Lumo
