#include "agent/DocumentWatch.h"

#include <sys/epoll.h>
#include <sys/inotify.h>
#include <sys/timerfd.h>

#include <cstring>
#include <deque>
#include <filesystem>
#include <set>

#include "text/Concat.h"

namespace Host {

namespace {

/// The links that are met on the way to a file, and what they lead to, whether it is there or not.
std::vector<std::filesystem::path> wayTo(const std::string& file) {
  constexpr std::size_t kMostLinks = 40;  // as the system itself follows
  std::vector<std::filesystem::path> way;
  std::filesystem::path at = "/";
  const std::filesystem::path whole = std::filesystem::absolute(file).relative_path();
  std::deque<std::filesystem::path> ahead(whole.begin(), whole.end());
  while (!ahead.empty()) {
    const std::filesystem::path part = std::move(ahead.front());
    ahead.pop_front();
    std::error_code none;
    if (part == "..") {
      at = at.parent_path();
    } else if (std::filesystem::is_symlink(at / part, none) && way.size() < kMostLinks) {
      way.push_back(at / part);
      const std::filesystem::path target = std::filesystem::read_symlink(way.back(), none);
      at = target.is_absolute() ? "/" : at;
      const std::filesystem::path rest = target.relative_path();
      ahead.insert(ahead.begin(), rest.begin(), rest.end());
    } else if (!part.empty() && part != ".") {
      at /= part;
    }
  }
  way.push_back(at);
  return way;
}

}  // namespace

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
  if (::read(timer_.number(), &times, sizeof times) == sizeof times) {
    // Before the files are read, so that no later save is missed. If a folder is gone, the reading
    // will say so.
    watch_.follow();
    watch_.saved_ = true;
  }
}

DocumentWatch::DocumentWatch(const std::vector<std::string>& files, Loop& loop)
    : files_(files),
      loop_(loop),
      events_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)),
      quiet_(*this) {
  if (!events_.isOpen()) {
    failWith("folders cannot be watched");
  }
  if (const auto why = follow()) {
    failWith(*why);
  }
  loop_.add(events_.number(), EPOLLIN, *this);
  loop_.add(quiet_.descriptor(), EPOLLIN, quiet_);
}

DocumentWatch::~DocumentWatch() {
  loop_.remove(quiet_.descriptor());
  loop_.remove(events_.number());
}

/// Watches all that is on the way to the files as it is now, and nothing else.
std::optional<std::string> DocumentWatch::follow() {
  decltype(names_) names;
  for (const std::string& file : files_) {
    const auto way = wayTo(file);
    for (const std::filesystem::path& name : way) {
      const std::string folder = name.parent_path().string();
      const int number = ::inotify_add_watch(events_.number(), folder.c_str(),
                                             IN_CLOSE_WRITE | IN_MOVED_TO | IN_CREATE);
      if (number < 0) {
        return concat({"the folder ", folder, " cannot be watched"});
      }
      names.emplace(std::pair(number, name.filename().string()), &name != &way.back());
    }
  }
  std::set<int> needed;
  for (const auto& [name, isLink] : names) {
    needed.insert(name.first);
  }
  for (const auto& [name, isLink] : names_) {
    if (!needed.contains(name.first)) {
      ::inotify_rm_watch(events_.number(), name.first);
    }
  }
  names_ = std::move(names);
  return std::nullopt;
}

void DocumentWatch::ready(std::uint32_t /*events*/) {
  alignas(inotify_event) char bytes[1 << 14];
  ssize_t got = 0;
  while ((got = ::read(events_.number(), bytes, sizeof bytes)) > 0) {
    for (const char* at = bytes; at < bytes + got;) {
      inotify_event event{};
      std::memcpy(&event, at, sizeof event);
      const bool lost = (event.mask & IN_Q_OVERFLOW) != 0;
      const auto named = event.len > 0 ? names_.find({event.wd, at + sizeof event}) : names_.end();
      // A file that has just been made is empty; what is saved into it is an event of its own.
      const bool made = (event.mask & IN_CREATE) != 0;
      if (lost || (named != names_.end() && (!made || named->second))) {
        quiet_.begin();
      }
      at += sizeof event + event.len;
    }
  }
}

}  // namespace Host
