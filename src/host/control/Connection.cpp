#include "control/Connection.h"

#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "protocol/SocketPath.h"
#include "text/Concat.h"

namespace Host {
namespace {

/// Why nobody answered at `socket`, and what to do, for the error that connecting gave.
std::string noAgent(const std::string& socket, int error) {
  const std::string none = concat({"no agent at ", socket, ": "});
  const std::string start = concat({"start one with \"vpm agent --config DOC --listen ", socket,
                                    "\", or say with --socket where it listens"});
  switch (error) {
    case ENOENT:
      return concat({none, "there is no such socket; ", start});
    case ECONNREFUSED:
      return concat({none,
                     std::filesystem::is_socket(socket)
                         ? "nobody listens there any more, the agent has ended; "
                         : "that is no socket; ",
                     start});
    case EACCES:
      return concat({"the socket ", socket,
                     " is not yours to open; run this as the user who runs the agent"});
    default:
      return concat({none, std::strerror(error), "; ", start});
  }
}

Descriptor connectedTo(const std::string& socket) {
  const sockaddr_un address = socketAddress(socket);
  Descriptor descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (::connect(descriptor.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) !=
      0) {
    throw std::runtime_error(noAgent(socket, errno));
  }
  return descriptor;
}

}  // namespace

Connection::Connection(const std::string& asked)
    : socket_(socketPath(asked)),
      descriptor_(connectedTo(socket_)),
      said_(descriptor_.number(), "the agent") {}

bool Connection::pump(int other) {
  std::array<pollfd, 2> wanted{{{descriptor_.number(), POLLIN, 0}, {other, POLLIN, 0}}};
  if (unsent() != 0) {
    wanted[0].events |= POLLOUT;
  }
  while (::poll(wanted.data(), wanted.size(), -1) < 0) {
    if (errno != EINTR) {
      gone(std::strerror(errno));
    }
  }
  if ((wanted[0].revents & POLLOUT) != 0) {
    write();
  }
  if ((wanted[0].revents & (POLLIN | POLLHUP | POLLERR)) != 0) {
    read();
  }
  return wanted[1].revents != 0;
}

std::string_view Connection::receive() {
  for (;;) {
    if (const auto line = ready()) {
      return *line;
    }
    pump();
  }
}

void Connection::write() {
  const ssize_t sent =
      ::send(descriptor_.number(), unsent_.data() + sent_, unsent(), MSG_NOSIGNAL | MSG_DONTWAIT);
  if (sent >= 0) {
    sent_ += static_cast<std::size_t>(sent);
  } else if (errno == EPIPE) {
    // The agent hears nothing any more, but may have said why: that is read first.
    sent_ = unsent_.size();
  } else if (errno != EAGAIN && errno != EINTR) {
    gone(std::strerror(errno));
  }
  if (unsent() == 0) {
    unsent_.clear();
    sent_ = 0;
  }
}

void Connection::read() {
  try {
    said_.fill();
  } catch (const std::runtime_error& error) {
    gone(error.what());
  }
  // Half a line is no answer.
  if (said_.over()) {
    gone("it has ended, or has closed the connection");
  }
}

void Connection::gone(const char* why) const {
  throw std::runtime_error(concat({"the agent at ", socket_, " is gone: ", why,
                                   "; look at what it wrote to its standard error"}));
}

}  // namespace Host
