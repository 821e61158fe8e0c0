#pragma once

#include <sys/types.h>

#include <string>

#include "protocol/Descriptor.h"

namespace Host {

/// A Unix socket that listens at a path, which its user alone can open from the first instant on.
///
/// What an agent that has died left at the path gives way; where one lives, it stays. Agents that
/// start at the same moment take turns by a lock on the folder, which goes with whoever holds it.
class Listener {
 public:
  /// Raises OutputError: something lives at the path, or it cannot be used.
  explicit Listener(std::string path);
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;
  /// Removes the socket from its path, unless somebody has put something else there.
  ~Listener();

  const std::string& path() const { return path_; }
  int descriptor() const { return socket_.number(); }
  /// The next connection, which does not block. None when there is none: errno says why.
  Descriptor accept() const;

 private:
  void makeRoom();
  void bind();
  [[noreturn]] void fail(std::string_view what) const;

  std::string path_;
  Descriptor socket_;
  dev_t device_ = 0;  // of what we have put at the path
  ino_t inode_ = 0;
};

}  // namespace Host
