#include "state/FolderLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "state/StateError.h"
#include "text/ByteSink.h"
#include "text/Concat.h"

namespace Host {
namespace {

std::string holderOf(int descriptor) {
  char text[32];
  const ssize_t length = ::pread(descriptor, text, sizeof text, 0);
  return length > 0 ? concat({"process ", {text, static_cast<std::size_t>(length)}})
                    : "another process";
}

}  // namespace

FolderLock::FolderLock(const std::string& file)
    : descriptor_(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
  if (descriptor_ < 0) {
    throw StateError(concat({file, ": cannot be opened: ", std::strerror(errno)}));
  }
  if (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
    const std::string holder = holderOf(descriptor_);
    ::close(descriptor_);
    throw StateError(concat(
        {file, ": ", holder, " works on this folder; stop it first, or name another folder"}));
  }
  // Deliberate: the number is for the message above alone; a full disk must not stop an agent.
  const std::string self = std::to_string(::getpid());
  if (::ftruncate(descriptor_, 0) == 0) {
    (void)!::pwrite(descriptor_, self.data(), self.size(), 0);
  }
}

FolderLock::~FolderLock() { ::close(descriptor_); }

}  // namespace Host
