#include "state/JournalReader.h"

#include <charconv>

#include "state/Checksum.h"

namespace Host {
namespace {

constexpr std::size_t kChecksumLength = 8;

std::uint32_t checksumOf(std::string_view number, std::string_view line) {
  return checksum(line, checksum(number));
}

/// The record at the start of `text`; none when there is no good one.
std::optional<JournalRecord> recordAt(std::string_view text) {
  JournalRecord record{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), record.number);
  const auto digits = static_cast<std::size_t>(end - text.data());
  const std::size_t begin = digits + kChecksumLength + 2;
  if (error != std::errc() || text.size() < begin || text[digits] != ' ' ||
      text[begin - 1] != ' ') {
    return std::nullopt;
  }
  const std::size_t lineEnd = text.find('\n', begin);
  if (lineEnd == std::string_view::npos) {
    return std::nullopt;
  }
  record.line = text.substr(begin, lineEnd - begin);
  const std::uint32_t sum = checksumOf(text.substr(0, digits), record.line);
  return text.substr(digits + 1, kChecksumLength) == checksumText(sum) ? std::optional(record)
                                                                       : std::nullopt;
}

}  // namespace

void appendRecord(std::string& out, std::uint64_t number, std::string_view line) {
  const std::string text = std::to_string(number);
  out.append(text).append(" ").append(checksumText(checksumOf(text, line))).append(" ");
  out.append(line).append("\n");
}

std::optional<JournalRecord> JournalReader::next() {
  auto record = recordAt(text_.substr(at_));
  if (record) {
    at_ = static_cast<std::size_t>(record->line.data() - text_.data()) + record->line.size() + 1;
  }
  return record;
}

bool JournalReader::hasMore() const {
  // At every place: what is bad may be the end of the line before it.
  for (std::size_t at = at_; at < text_.size(); ++at) {
    if (recordAt(text_.substr(at))) {
      return true;
    }
  }
  return false;
}

}  // namespace Host
