#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "state/Files.h"

namespace Host {

/// The journal that is being written: a file of records. Failures are raised as OutputError.
class Journal {
 public:
  /// Goes on behind the `size` bytes that are in the file, which is created if need be.
  Journal(Files& files, std::string file, std::size_t size);
  ~Journal();
  Journal(const Journal&) = delete;
  Journal& operator=(const Journal&) = delete;

  /// Upon failure nothing of the record is left in the file; see `sound`.
  void append(std::uint64_t number, std::string_view line);
  /// Puts on disk what was appended since the last call, whether it succeeded or not.
  void sync();
  /// False when part of a record is left in the file all the same: nothing may follow it.
  bool sound() const { return sound_; }
  std::size_t size() const { return size_; }

 private:
  Files& files_;
  const std::string file_;
  const int descriptor_;
  std::size_t size_;
  bool dirty_ = false;
  bool sound_ = true;
  std::string record_;
};

}  // namespace Host
