#include "agent/Notify.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cstddef>
#include <cstdlib>

#include "protocol/Descriptor.h"

namespace Host {

void notifyManager(std::string_view state) {
  const char* const named = std::getenv("NOTIFY_SOCKET");
  const std::string_view name = named == nullptr ? "" : named;
  sockaddr_un address{};
  if (name.empty() || name.size() >= sizeof address.sun_path) {
    return;
  }
  address.sun_family = AF_UNIX;
  name.copy(address.sun_path, name.size());
  const bool isAbstract = name.front() == '@';
  if (isAbstract) {
    address.sun_path[0] = '\0';
  }
  // The NUL behind a path belongs to it; behind an abstract name it would be part of the name.
  const std::size_t size = offsetof(sockaddr_un, sun_path) + name.size() + (isAbstract ? 0U : 1U);
  const Descriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  ::sendto(socket.number(), state.data(), state.size(), MSG_NOSIGNAL,
           reinterpret_cast<const sockaddr*>(&address), static_cast<socklen_t>(size));
}

}  // namespace Host
