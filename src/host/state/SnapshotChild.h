#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>

namespace Host {

/// Does a piece of work in a child process, on a copy of the memory as it is at that moment.
///
/// The child does its work and nothing else: it keeps no descriptor of the parent's open but
/// standard error, so that no client waits for it, runs no destructor, and ends with the parent.
class SnapshotChild {
 public:
  SnapshotChild() = default;
  SnapshotChild(const SnapshotChild&) = delete;
  SnapshotChild& operator=(const SnapshotChild&) = delete;
  ~SnapshotChild() { stop(); }

  /// What the work raises becomes its outcome. Raises OutputError when there can be no child.
  void start(const std::function<void()>& work);
  bool running() const { return child_ > 0; }
  /// None while the child runs; then, once, why the work failed: empty when it has not.
  std::optional<std::string> outcome();
  /// Ends the child if it runs; its work is left as it is.
  void stop();

 private:
  std::string reap();

  pid_t child_ = -1;
  int pipe_ = -1;
  std::string said_;
};

}  // namespace Host
