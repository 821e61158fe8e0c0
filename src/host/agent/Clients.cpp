#include "agent/Clients.h"

#include <sys/epoll.h>

#include <algorithm>
#include <cerrno>

namespace Host {

Clients::Clients(const Listener& listener, Loop& loop) : listener_(listener), loop_(loop) {
  loop_.add(listener_.descriptor(), EPOLLIN, *this);
}

Clients::~Clients() {
  all_.clear();
  loop_.remove(listener_.descriptor());
}

void Clients::ready(std::uint32_t /*events*/) {
  for (;;) {
    Descriptor socket = listener_.accept();
    if (socket.isOpen()) {
      all_.emplace_back(std::move(socket), loop_);
    } else if (errno != ECONNABORTED && errno != EINTR) {
      break;
    }
  }
  if (errno == EMFILE || errno == ENFILE) {
    full_ = true;  // who wants in is served when somebody has left
    loop_.change(listener_.descriptor(), 0, *this);
  }
}

void Clients::work(Answerer& answerer) {
  // Each keeps the others waiting, and all together whoever comes.
  constexpr std::chrono::microseconds kMost = std::chrono::milliseconds(10);
  constexpr std::chrono::microseconds kTurn = std::chrono::milliseconds(40);
  const auto slice = std::min(kMost, kTurn / std::max<std::ptrdiff_t>(1, std::ssize(all_)));
  for (Client& each : all_) {
    each.work(answerer, slice);
  }
}

void Clients::send(Answerer& answerer) {
  for (Client& each : all_) {
    each.send();
  }
  letGo(answerer);
}

/// Of those who have done.
void Clients::letGo(Answerer& answerer) {
  const std::size_t gone = all_.remove_if([&](Client& each) {
    const bool over = each.isOver();
    if (over) {
      answerer.gone(each);
    }
    return over;
  });
  if (full_ && gone != 0) {
    full_ = false;
    loop_.change(listener_.descriptor(), EPOLLIN, *this);
  }
}

void Clients::farewell(Answerer& answerer) {
  constexpr auto kPatience = std::chrono::seconds(1);
  const auto end = std::chrono::steady_clock::now() + kPatience;
  for (;;) {
    for (Client& each : all_) {
      each.finish();
    }
    send(answerer);
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    if (all_.empty() || left.count() <= 0) {
      return;
    }
    loop_.turn(left);
  }
}

bool Clients::isBusy() const { return std::ranges::any_of(all_, &Client::isBusy); }

std::size_t Clients::waitingInput() const {
  std::size_t bytes = 0;
  for (const Client& each : all_) {
    bytes += each.waitingInput();
  }
  return bytes;
}

std::size_t Clients::waitingOutput() const {
  std::size_t bytes = 0;
  for (const Client& each : all_) {
    bytes += each.waitingOutput();
  }
  return bytes;
}

}  // namespace Host
