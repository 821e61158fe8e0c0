#include "agent/Listener.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <thread>

#include "protocol/SocketPath.h"
#include "text/ByteSink.h"
#include "text/Concat.h"

namespace Host {
namespace {

/// Holds the lock on the folder of `path`, as far as it can be had: whoever holds it for longer
/// than a start takes is no agent, and is not waited for.
Descriptor lockFolderOf(const std::string& path) {
  constexpr auto kPatience = std::chrono::seconds(1);
  const std::filesystem::path folder = std::filesystem::path(path).parent_path();
  Descriptor lock(
      ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (lock.isOpen() && ::flock(lock.number(), LOCK_EX | LOCK_NB) != 0 &&
         std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return lock;
}

Descriptor streamSocket() {
  return Descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

}  // namespace

Listener::Listener(std::string path) : path_(std::move(path)) {
  const Descriptor lock = lockFolderOf(path_);
  makeRoom();
  bind();
}

Listener::~Listener() {
  struct stat now {};
  if (::lstat(path_.c_str(), &now) == 0 && now.st_dev == device_ && now.st_ino == inode_) {
    ::unlink(path_.c_str());
  }
}

/// Takes a socket away that nobody listens at.
void Listener::makeRoom() {
  struct stat found {};
  if (::lstat(path_.c_str(), &found) != 0) {
    return;  // most probably there is nothing; if it is something else, to bind will say so
  }
  if (!S_ISSOCK(found.st_mode)) {
    throw OutputError(concat({path_,
                              " is there and is no socket; remove it, or name another path "
                              "with --listen"}));
  }
  const sockaddr_un address = socketAddress(path_);
  const Descriptor probe = streamSocket();
  if (::connect(probe.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 ||
      errno == EAGAIN) {
    throw OutputError(concat({path_,
                              ": an agent listens here already; stop it with \"vpm ctl "
                              "--socket ",
                              path_,
                              " stop\", or name another path with "
                              "--listen"}));
  }
  if (errno != ECONNREFUSED) {
    fail("what is at this path cannot be asked whether it lives");
  }
  if (::unlink(path_.c_str()) != 0) {
    fail("the socket that an earlier agent has left cannot be removed");
  }
}

void Listener::bind() {
  constexpr mode_t kOwnerAlone = 0177;
  const sockaddr_un address = socketAddress(path_);
  socket_ = streamSocket();
  const mode_t before = ::umask(kOwnerAlone);
  const int bound =
      ::bind(socket_.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
  const int why = errno;
  ::umask(before);
  errno = why;
  struct stat made {};
  if (bound != 0) {
    fail("the socket cannot be made");
  }
  if (::listen(socket_.number(), SOMAXCONN) != 0 || ::lstat(path_.c_str(), &made) != 0) {
    fail("the socket cannot be listened at");
  }
  device_ = made.st_dev;
  inode_ = made.st_ino;
}

Descriptor Listener::accept() const {
  return Descriptor(::accept4(socket_.number(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
}

void Listener::fail(std::string_view what) const {
  throw OutputError(concat({path_, ": ", what, ": ", std::strerror(errno)}));
}

}  // namespace Host
