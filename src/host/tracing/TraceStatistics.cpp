#include "tracing/TraceStatistics.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "text/Concat.h"
#include "text/JsonText.h"

namespace Host {
namespace {

std::string right(std::size_t number, std::size_t width) {
  const std::string digits = std::to_string(number);
  return std::string(digits.size() < width ? width - digits.size() : 0, ' ') + digits;
}

void appendNumber(std::string& out, std::string_view name, std::uint64_t number) {
  out += concat({"\"", name, "\":", std::to_string(number), ","});
}

}  // namespace

void TraceStatistics::record(const Lumo::Record& record, const TraceSite& site) {
  first_ = records_++ == 0 ? record.seconds : first_;
  last_ = record.seconds;
  ++counts_[site.site.id];
}

TraceStatistics::Ring TraceStatistics::ring() const {
  Ring ring;
  std::uint64_t newest = 0;
  for (const TraceSource::Packet& packet : reader_.source().packets()) {
    ++ring.segments;
    ring.used += packet.header.sequence == 0 ? 0 : 1;
    ring.bytes = packet.header.packetBits / 8;
    ring.dropped += packet.header.discarded;
    newest = std::max(newest, packet.header.sequence);
  }
  ring.overwritten = newest - ring.used;
  return ring;
}

void TraceStatistics::end() { out_.write(json_ ? asJson(ring()) : asText(ring())); }

std::string TraceStatistics::asText(const Ring& ring) const {
  std::string text = concat({"records      ", std::to_string(records_)});
  if (records_ != 0) {
    text += concat({", printed times ", Kel::textOf(first_), " to ", Kel::textOf(last_)});
  }
  text += concat({"\ndropped      ", std::to_string(ring.dropped), "\nsegments     ",
                  std::to_string(ring.segments), " of ", std::to_string(ring.bytes), " bytes, ",
                  std::to_string(ring.used), " in use", "\noverwritten  ",
                  std::to_string(ring.overwritten), " segments", "\nwritten by   process ",
                  std::to_string(reader_.metadata().processId()), "\n\n   count  level  line\n"});
  std::vector<std::pair<std::size_t, std::uint32_t>> order;
  for (const auto& [id, count] : counts_) {
    order.emplace_back(count, id);
  }
  std::ranges::sort(order, [](const auto& a, const auto& b) {
    return a.first != b.first ? a.first > b.first : a.second < b.second;
  });
  for (const auto& [count, id] : order) {
    const Lumo::Site& site = reader_.metadata().sites()[id].site;
    text += concat({right(count, 8), right(site.level, 7), "  ", site.file, ":",
                    std::to_string(site.line), " ", site.format(), "\n"});
  }
  return text;
}

std::string TraceStatistics::asJson(const Ring& ring) const {
  std::string text = "{";
  appendNumber(text, "records", records_);
  appendNumber(text, "dropped", ring.dropped);
  appendNumber(text, "segments", ring.segments);
  appendNumber(text, "segments-in-use", ring.used);
  appendNumber(text, "segments-overwritten", ring.overwritten);
  appendNumber(text, "segment-bytes", ring.bytes);
  appendNumber(text, "process", static_cast<std::uint64_t>(reader_.metadata().processId()));
  text += "\"sites\":[";
  for (const auto& [id, count] : counts_) {
    const TraceSite& site = reader_.metadata().sites()[id];
    text += text.ends_with('[') ? "{" : ",{";
    appendNumber(text, "records", count);
    appendNumber(text, "level", site.site.level);
    text += "\"file\":";
    appendJsonText(text, site.site.file);
    text += ',';
    appendNumber(text, "line", site.site.line);
    text += "\"format\":";
    appendJsonText(text, site.site.format());
    text += '}';
  }
  return text + "]}\n";
}

}  // namespace Host
