#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "text/ByteSink.h"

namespace Host {

/// What the state asks of the file system, in one place so that tests can let any of it fail.
/// Failures are raised as OutputError, which names the file. Nobody but the user may read what is
/// created.
class Files {
 public:
  Files() = default;
  Files(const Files&) = delete;
  Files& operator=(const Files&) = delete;
  virtual ~Files() = default;

  static Files& ofTheSystem();

  /// Opens a file to write at its end, creates it if need be, and returns its descriptor.
  virtual int open(const std::string& file);
  virtual void write(int descriptor, const std::string& file, std::string_view bytes);
  /// Returns when the file's content is on disk.
  virtual void sync(int descriptor, const std::string& file);
  virtual void cut(int descriptor, const std::string& file, std::size_t size);
  virtual void makeFolder(const std::string& folder);
  /// Returns when the names of the files in it are on disk.
  virtual void syncFolder(const std::string& folder);
  virtual void rename(const std::string& from, const std::string& to);
  /// A file or a folder with all that is in it; it may be missing.
  virtual void remove(const std::string& path);
};

/// A file that is written from its start and is on disk after `finish`. Goes through Files.
class NewFile : public ByteSink {
 public:
  NewFile(Files& files, std::string file);
  ~NewFile() override;

  void write(std::string_view bytes) override;
  void finish() { files_.sync(descriptor_, file_); }

  std::size_t size() const { return size_; }
  std::uint32_t checksum() const { return checksum_; }

 private:
  Files& files_;
  std::string file_;
  int descriptor_ = -1;
  std::size_t size_ = 0;
  std::uint32_t checksum_ = 0;
};

}  // namespace Host
