#pragma once

#include <string>

namespace Host {

/// Keeps a second agent away from a folder, for as long as this lives or until the process ends.
class FolderLock {
 public:
  /// Raises StateError when another process has the lock, which is named.
  explicit FolderLock(const std::string& file);
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  int descriptor_;
};

}  // namespace Host
