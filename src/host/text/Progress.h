#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <iosfwd>
#include <mutex>
#include <string>
#include <thread>

namespace Host {

/// A line on the terminal that tells a person what is being done: how far it is, or how long it has
/// taken. Appears once the work has taken a second, and goes away with this object.
class Progress {
 public:
  /// Shows nothing when `on` is false.
  Progress(std::ostream& err, bool on);
  ~Progress() { end(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// The next piece of work: what it is, and how much of it there is; 0: not known.
  void begin(std::string what, std::size_t total);
  /// How much of the piece of work is done; whoever does it writes here, as often as it likes.
  std::atomic<std::size_t>& done() noexcept { return done_; }
  /// Takes the line away for good, so that something else may be said.
  void end();

 private:
  void show();
  void draw();

  std::ostream& err_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  std::atomic<std::size_t> done_{0};
  std::mutex mutex_;  // of what follows
  std::condition_variable wake_;
  std::string what_;
  std::size_t total_ = 0;
  bool shown_ = false;
  bool over_ = false;
  std::thread thread_;
};

}  // namespace Host
