#include "text/ByteSink.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace Host {

void DescriptorSink::write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
    if (written >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      throw OutputError(name_ + ": cannot be written: " + std::strerror(errno));
    }
  }
}

}  // namespace Host
