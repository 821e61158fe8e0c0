#include "protocol/SocketPath.h"

#include <cstdlib>

#include "text/ByteSink.h"
#include "text/Concat.h"

namespace Host {
namespace {

std::string variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

}  // namespace

std::string socketPath(const std::string& asked) {
  if (!asked.empty()) {
    return asked;
  }
  if (std::string own = variable("VPM_SOCKET"); !own.empty()) {
    return own;
  }
  const std::string runtime = variable("XDG_RUNTIME_DIR");
  return concat({runtime.empty() ? "/run" : runtime, "/vpm.sock"});
}

sockaddr_un socketAddress(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  // The last byte stays 0.
  if (path.size() >= sizeof address.sun_path) {
    throw OutputError(
        concat({path, " is too long for a socket: ", std::to_string(path.size()),
                " bytes; expected at most ", std::to_string(sizeof address.sun_path - 1),
                "; choose a shorter folder"}));
  }
  path.copy(address.sun_path, path.size());
  return address;
}

}  // namespace Host
