#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Host {

/// A change line in a journal: "17 5d1c0e2a {...}", where the second word is the checksum of the
/// other two.
struct JournalRecord {
  std::uint64_t number;
  std::string_view line;
};

void appendRecord(std::string& out, std::uint64_t number, std::string_view line);

/// Reads the records of a journal, up to the first that is not good.
class JournalReader {
 public:
  explicit JournalReader(std::string_view text) : text_(text) {}

  std::optional<JournalRecord> next();
  /// How many bytes the good records have; they are all that is there when `next` has ended well.
  std::size_t offset() const { return at_; }
  bool atEnd() const { return at_ == text_.size(); }
  /// Whether there is a good record anywhere behind: what is bad lies in the middle then.
  bool hasMore() const;
  /// Whether what is bad is no whole line.
  bool isIncomplete() const { return text_.find('\n', at_) == std::string_view::npos; }

 private:
  std::string_view text_;
  std::size_t at_ = 0;
};

}  // namespace Host
