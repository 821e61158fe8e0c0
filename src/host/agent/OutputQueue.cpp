#include "agent/OutputQueue.h"

#include <sys/socket.h>

#include <cerrno>

namespace Host {

bool OutputQueue::sendTo(int socket) {
  constexpr std::size_t kMuch = 1U << 20U;
  while (sent_ < bytes_.size()) {
    const ssize_t sent =
        ::send(socket, bytes_.data() + sent_, bytes_.size() - sent_, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0 && errno != EINTR) {
      break;
    }
    sent_ += sent < 0 ? 0 : static_cast<std::size_t>(sent);
  }
  const bool alive = sent_ == bytes_.size() || errno == EAGAIN;
  if (!alive) {
    sent_ = bytes_.size();
  }
  if (sent_ == bytes_.size()) {
    sent_ = 0;
    bytes_.capacity() > kMuch ? std::string().swap(bytes_) : bytes_.clear();
  } else if (sent_ > kMuch && sent_ > bytes_.size() / 2) {
    bytes_.erase(0, sent_);
    sent_ = 0;
  }
  return alive;
}

}  // namespace Host
