#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>

namespace [[using gnu: visibility("default")]] Lumo {

/// The memory of a ring: `count` segments of `size` bytes behind one another, each the image of a
/// file when there is a directory.
///
/// **What a core file holds of it.** Memory without a name, and the metadata, always. Files that
/// are mapped are left out (their content outlives the process anyway), unless bit 3 is set in
/// /proc/PID/coredump_filter, or they were deleted. The filter is the process's own affair, so that
/// nothing is done about it here.
class Segments {
 public:
  /// Limits of size (a multiple of 4096) and count.
  static constexpr std::size_t kSmallest = 4096, kLargest = std::size_t{1} << 30;
  static constexpr std::size_t kFewest = 2, kMost = 4096;

  /// Files segment-0000 … in `directory`, which is created when missing. What an earlier process
  /// left there is moved to `directory`.previous, whose own trace is deleted. The space on disk is
  /// reserved. Null when something fails: `why` says what.
  static std::unique_ptr<Segments> onDisk(const std::string& directory, std::size_t size,
                                          std::size_t count, std::string& why);
  /// Memory without a name. Null when there is none: `why` says so.
  static std::unique_ptr<Segments> inMemory(std::size_t size, std::size_t count, std::string& why);

  ~Segments();
  Segments(const Segments&) = delete;
  Segments& operator=(const Segments&) = delete;

  std::size_t size() const noexcept { return size_; }
  std::size_t count() const noexcept { return count_; }
  std::byte* at(std::size_t index) const noexcept { return memory_ + index * size_; }
  std::span<std::byte> all() const noexcept { return {memory_, size_ * count_}; }

  /// Keeps a copy of `text` in memory, behind a MetadataHeader, and puts it into the directory, if
  /// there is one, as `metadata`, whole or not at all.
  bool publishMetadata(const std::string& text) noexcept;

 private:
  Segments(std::size_t size, std::size_t count) : size_(size), count_(count) {}
  bool openDirectory(const std::string& directory, std::string& why);
  bool mapFile(std::size_t index, std::string& why);
  bool keepMetadata(const std::string& text) noexcept;

  std::size_t size_;
  std::size_t count_;
  std::byte* memory_ = nullptr;
  std::span<std::byte> metadata_;  // header and text; empty before the first are published
  int directory_ = -1;  // open and locked for as long as this process writes here; -1: none
};

/// Writes `bytes` as the file `name` of the open directory, replacing it as a whole or not at all.
bool replaceFile(int directory, const char* name, std::span<const std::byte> bytes) noexcept;

}  // namespace Lumo
