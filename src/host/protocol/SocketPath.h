#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <string>

namespace Host {

/// Where the agent listens and its clients look for it: `asked` unless it is empty, else
/// $VPM_SOCKET, else $XDG_RUNTIME_DIR/vpm.sock, else /run/vpm.sock. An empty variable is none.
std::string socketPath(const std::string& asked);

/// The address of the socket at `path`. Raises OutputError when the path is too long for one.
sockaddr_un socketAddress(const std::string& path);

}  // namespace Host
