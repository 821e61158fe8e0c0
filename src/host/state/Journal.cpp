#include "state/Journal.h"

#include <unistd.h>

#include <utility>

#include "state/JournalReader.h"

namespace Host {

Journal::Journal(Files& files, std::string file, std::size_t size)
    : files_(files), file_(std::move(file)), descriptor_(files.open(file_)), size_(size) {}

Journal::~Journal() { ::close(descriptor_); }

void Journal::append(std::uint64_t number, std::string_view line) {
  record_.clear();
  appendRecord(record_, number, line);
  try {
    files_.write(descriptor_, file_, record_);
  } catch (const OutputError&) {
    sound_ = false;
    files_.cut(descriptor_, file_, size_);
    sound_ = true;
    throw;
  }
  size_ += record_.size();
  dirty_ = true;
}

void Journal::sync() {
  if (std::exchange(dirty_, false)) {
    files_.sync(descriptor_, file_);
  }
}

}  // namespace Host
