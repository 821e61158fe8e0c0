#include "text/Progress.h"

#include <ostream>

namespace Host {
namespace {

constexpr std::chrono::seconds kPatience{1};
constexpr std::chrono::milliseconds kInterval{200};
constexpr const char* kClearLine = "\r\033[K";

}  // namespace

Progress::Progress(std::ostream& err, bool on) : err_(err) {
  if (on) {
    thread_ = std::thread([this] { show(); });
  }
}

void Progress::end() {
  if (!thread_.joinable()) {
    return;
  }
  {
    const std::lock_guard lock(mutex_);
    over_ = true;
  }
  wake_.notify_one();
  thread_.join();
  if (shown_) {
    err_ << kClearLine << std::flush;
  }
}

void Progress::begin(std::string what, std::size_t total) {
  const std::lock_guard lock(mutex_);
  what_ = std::move(what);
  total_ = total;
  done_ = 0;
}

void Progress::show() {
  std::unique_lock lock(mutex_);
  const auto over = [this] { return over_; };
  if (wake_.wait_for(lock, kPatience, over)) {
    return;
  }
  do {
    draw();
  } while (!wake_.wait_for(lock, kInterval, over));
}

void Progress::draw() {
  const auto tenths = std::chrono::duration_cast<std::chrono::milliseconds>(
                          std::chrono::steady_clock::now() - start_)
                          .count() /
                      100;
  err_ << kClearLine << "vpm: " << what_;
  if (total_ != 0) {
    err_ << ' ' << done_ * 100 / total_ << " %";
  }
  err_ << " (" << tenths / 10 << '.' << tenths % 10 << " s)" << std::flush;
  shown_ = true;
}

}  // namespace Host
