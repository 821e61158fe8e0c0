#include "agent/Loop.h"

#include <sys/epoll.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "text/Concat.h"

namespace Host {

void failWith(std::string_view what) {
  throw std::runtime_error(concat({what, ": ", std::strerror(errno)}));
}

Loop::Loop() : epoll_(::epoll_create1(EPOLL_CLOEXEC)) {
  if (!epoll_.isOpen()) {
    failWith("the event loop cannot be made");
  }
}

void Loop::add(int descriptor, std::uint32_t events, Source& source) {
  control(EPOLL_CTL_ADD, descriptor, events, &source);
}

void Loop::change(int descriptor, std::uint32_t events, Source& source) {
  control(EPOLL_CTL_MOD, descriptor, events, &source);
}

void Loop::remove(int descriptor) { control(EPOLL_CTL_DEL, descriptor, 0, nullptr); }

void Loop::control(int operation, int descriptor, std::uint32_t events, Source* source) {
  epoll_event event{};
  event.events = events;
  event.data.ptr = source;
  if (::epoll_ctl(epoll_.number(), operation, descriptor, &event) != 0) {
    failWith("the event loop cannot follow a descriptor");
  }
}

void Loop::turn(std::optional<std::chrono::milliseconds> atMost) {
  std::array<epoll_event, 64> events{};
  const int wait = atMost ? static_cast<int>(atMost->count()) : -1;
  const int count = ::epoll_wait(epoll_.number(), events.data(), events.size(), wait);
  if (count < 0 && errno != EINTR) {
    failWith("the event loop cannot wait");
  }
  for (int i = 0; i < count; ++i) {
    const epoll_event& event = events[static_cast<std::size_t>(i)];
    static_cast<Source*>(event.data.ptr)->ready(event.events);
  }
}

}  // namespace Host
