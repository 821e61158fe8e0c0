#include "agent/DocumentWatch.h"

#include <sys/epoll.h>
#include <sys/inotify.h>
#include <sys/timerfd.h>

#include <cstring>
#include <filesystem>

#include "text/Concat.h"

namespace Host {

DocumentWatch::Quiet::Quiet(DocumentWatch& watch)
    : watch_(watch), timer_(::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC)) {
  if (!timer_.isOpen()) {
    failWith("a timer cannot be made");
  }
}

/// From now on, or from now on again.
void DocumentWatch::Quiet::begin() const {
  constexpr long kLength = 50'000'000;  // in nanoseconds
  itimerspec once{};
  once.it_value.tv_nsec = kLength;
  ::timerfd_settime(timer_.number(), 0, &once, nullptr);
}

void DocumentWatch::Quiet::ready(std::uint32_t /*events*/) {
  std::uint64_t times = 0;
  watch_.saved_ = ::read(timer_.number(), &times, sizeof times) == sizeof times || watch_.saved_;
}

DocumentWatch::DocumentWatch(const std::vector<std::string>& files, Loop& loop)
    : loop_(loop), events_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)), quiet_(*this) {
  if (!events_.isOpen()) {
    failWith("folders cannot be watched");
  }
  for (const std::string& file : files) {
    std::error_code none;
    const std::filesystem::path real = std::filesystem::canonical(file, none);
    watch(file);
    if (!none && real != std::filesystem::absolute(file)) {
      watch(real);
    }
  }
  loop_.add(events_.number(), EPOLLIN, *this);
  loop_.add(quiet_.descriptor(), EPOLLIN, quiet_);
}

DocumentWatch::~DocumentWatch() {
  loop_.remove(quiet_.descriptor());
  loop_.remove(events_.number());
}

void DocumentWatch::watch(const std::string& file) {
  const std::filesystem::path path(file);
  const std::string folder = path.has_parent_path() ? path.parent_path().string() : ".";
  const int number =
      ::inotify_add_watch(events_.number(), folder.c_str(), IN_CLOSE_WRITE | IN_MOVED_TO);
  if (number < 0) {
    failWith(concat({"the folder ", folder, " cannot be watched"}));
  }
  names_.emplace(number, path.filename().string());
}

void DocumentWatch::ready(std::uint32_t /*events*/) {
  alignas(inotify_event) char bytes[1 << 14];
  ssize_t got = 0;
  while ((got = ::read(events_.number(), bytes, sizeof bytes)) > 0) {
    for (const char* at = bytes; at < bytes + got;) {
      inotify_event event{};
      std::memcpy(&event, at, sizeof event);
      const bool lost = (event.mask & IN_Q_OVERFLOW) != 0;
      if (lost || (event.len > 0 && names_.contains({event.wd, at + sizeof event}))) {
        quiet_.begin();
      }
      at += sizeof event + event.len;
    }
  }
}

}  // namespace Host
