#include "tracing/TraceReader.h"

#include <algorithm>
#include <utility>

#include "text/Concat.h"
#include "tracing/TraceError.h"

namespace Host {
TraceReader::TraceReader(std::unique_ptr<TraceSource> source) : source_(std::move(source)) {
  renewMetadata(*source_);
  if (source_->packets().empty()) {
    throw TraceError(concat({source_->metadataName(), ": there are no segments beside it"}));
  }
}

/// Whether they have changed.
bool TraceReader::renewMetadata(const TraceSource& source) {
  std::string text = source.metadata();
  if (metadata_ != nullptr && text == metadataText_) {
    return false;
  }
  auto renewed = std::make_unique<TraceMetadata>(text, source.metadataName());
  metadataText_ = std::move(text);
  earlier_.push_back(std::exchange(metadata_, std::move(renewed)));
  return true;
}

void TraceReader::read(const Each& each) {
  const Lumo::Uuid known = metadata_->uuid();
  if (renewMetadata(*source_) && metadata_->uuid() != known) {
    // Another process writes here now: first what the earlier one has written at last.
    const auto before = source_->previous();
    if (before != nullptr && renewMetadata(*before) && metadata_->uuid() == known) {
      readAll(*before, each);
    }
    renewMetadata(*source_);
    sequence_ = 0;
  }
  readAll(*source_, each);
}

void TraceReader::readAll(const TraceSource& source, const Each& each) {
  // Each failure is a segment of the writer's: it writes as fast as this reads.
  for (int attempt = 0; attempt < 1000 && !readOnce(source, each); ++attempt) {
  }
}

std::vector<TraceSource::Packet> TraceReader::unread(const TraceSource& source) const {
  std::vector<TraceSource::Packet> packets = source.packets();
  std::erase_if(packets, [this](const TraceSource::Packet& packet) {
    return packet.header.sequence == 0 || packet.header.sequence < sequence_ ||
           packet.header.uuid != metadata_->uuid();
  });
  std::ranges::sort(packets, {}, [](const auto& packet) { return packet.header.sequence; });
  return packets;
}

/// False when the ring went on in a way that what was seen of it is no longer true.
bool TraceReader::readOnce(const TraceSource& source, const Each& each) {
  std::vector<TraceSource::Packet> packets = unread(source);
  if (sequence_ != 0 && !packets.empty() && packets.front().header.sequence > sequence_) {
    // Overwritten, or some were taken over while the others were looked at.
    packets = unread(source);
    missed_ += packets.empty() ? 0 : packets.front().header.sequence - sequence_;
  }
  for (TraceSource::Packet& packet : packets) {
    const std::uint64_t sequence = packet.header.sequence;
    const bool goesOn = sequence == sequence_;
    if (sequence_ != 0 && sequence > sequence_ + 1 && &packet != &packets.front()) {
      if (source.isLive()) {
        return false;
      }
      faults_.push_back(concat({packet.name, ": what was written before it is missing: ",
                                std::to_string(sequence - sequence_ - 1), " segments"}));
    }
    std::string records;
    try {
      if (!source.read(packet, records)) {
        return false;
      }
    } catch (const TraceError& error) {
      faults_.emplace_back(error.what());
    }
    if (sequence_ == 0) {
      first_ = sequence;
    }
    const std::size_t from = goesOn ? done_ : 0;
    sequence_ = sequence;
    done_ = records.size();
    deliver(source, packet, std::string_view(records).substr(std::min(from, done_)), each);
  }
  return true;
}

void TraceReader::deliver(const TraceSource& source, const TraceSource::Packet& packet,
                          std::string_view records, const Each& each) {
  const TraceSite* site = nullptr;
  std::uint32_t asked = 0;
  const std::size_t good = Lumo::readRecords(
      records,
      [&](std::uint32_t id) -> const Lumo::Site* {
        asked = id;
        site = siteOf(source, id);
        return site == nullptr ? nullptr : &site->site;
      },
      [&](const Lumo::Record& record) { each(record, *site); });
  if (good != records.size()) {
    const std::size_t at = sizeof(Lumo::PacketHeader) + done_ - records.size() + good;
    faults_.push_back(concat(
        {packet.name, ": byte ", std::to_string(at),
         site == nullptr ? ": a record names the site " : ": a record of site ",
         std::to_string(asked),
         site == nullptr ? concat({", which is not in ", source.metadataName()}) : " is cut off"}));
  }
}

const TraceSite* TraceReader::siteOf(const TraceSource& source, std::uint32_t id) {
  if (id >= metadata_->sites().size()) {
    // A site's description comes before its first record: it is there by now.
    renewMetadata(source);
  }
  return id < metadata_->sites().size() ? &metadata_->sites()[id] : nullptr;
}

}  // namespace Host
