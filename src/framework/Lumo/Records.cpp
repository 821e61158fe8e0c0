#include "Lumo/Records.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "Lumo/Packet.h"

namespace Lumo {
namespace {

/// Takes bytes off the front of a packet's content; nothing once there are too few.
class Cursor {
 public:
  explicit Cursor(std::string_view content) : rest_(content) {}

  std::size_t left() const { return rest_.size(); }

  template <class T>
  bool take(T& value) {
    std::string_view bytes;
    if (!take(sizeof(T), bytes)) {
      return false;
    }
    std::memcpy(&value, bytes.data(), sizeof(T));
    return true;
  }

  bool take(const ValueType& type, std::string_view& bytes) {
    if (type.kind != Kind::text) {
      return take(type.size, bytes);
    }
    const std::size_t length = rest_.find('\0');
    if (length == std::string_view::npos) {
      return false;
    }
    bytes = rest_.substr(0, length);
    rest_.remove_prefix(length + 1);
    return true;
  }

 private:
  bool take(std::size_t size, std::string_view& bytes) {
    if (rest_.size() < size) {
      return false;
    }
    bytes = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return true;
  }

  std::string_view rest_;
};

bool readRecord(Cursor& cursor, const std::function<const Site*(std::uint32_t)>& siteOf,
                Record& record) {
  std::uint32_t id = 0;
  if (!cursor.take(id) || !cursor.take(record.stamp) || !cursor.take(record.seconds) ||
      !cursor.take(record.subject)) {
    return false;
  }
  record.site = siteOf(id);
  if (record.site == nullptr) {
    return false;
  }
  record.values.clear();
  for (const Piece& piece : record.site->pieces) {
    if (piece.value != nullptr) {
      std::string_view bytes;
      if (!cursor.take(*piece.value, bytes)) {
        return false;
      }
      record.values.push_back({piece.value, bytes});
    }
  }
  return true;
}

}  // namespace

std::size_t readRecords(std::string_view records,
                        const std::function<const Site*(std::uint32_t)>& siteOf,
                        const std::function<void(const Record&)>& each) {
  Cursor cursor(records);
  Record record{};
  std::size_t left = cursor.left();
  while (left != 0 && readRecord(cursor, siteOf, record)) {
    each(record);
    left = cursor.left();
  }
  return records.size() - left;
}

bool forEachRecord(std::span<const std::byte> memory, std::size_t segmentSize,
                   const std::function<const Site*(std::uint32_t)>& siteOf,
                   const std::function<void(const Record&)>& each) {
  std::vector<std::pair<std::uint64_t, std::string_view>> packets;  // sequence and content
  for (; memory.size() >= segmentSize; memory = memory.subspan(segmentSize)) {
    PacketHeader header{};
    std::memcpy(&header, memory.data(), sizeof header);
    const std::uint64_t bytes = header.contentBits / 8;
    if (header.magic != PacketHeader::kMagic || bytes < sizeof header || bytes > segmentSize) {
      return false;
    }
    const std::string_view content(reinterpret_cast<const char*>(memory.data()), bytes);
    packets.emplace_back(header.sequence, content.substr(sizeof header));
  }
  std::sort(packets.begin(), packets.end());

  bool whole = true;
  for (const auto& [sequence, content] : packets) {
    whole = readRecords(content, siteOf, each) == content.size() && whole;
  }
  return whole;
}

}  // namespace Lumo
