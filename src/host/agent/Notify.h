#pragma once

#include <string_view>

namespace Host {

/// Tells the service manager that has started the agent, if there is one, what the agent is doing:
/// "READY=1" and the like, one datagram to the socket that $NOTIFY_SOCKET names. A name that begins
/// with '@' is an abstract one. Nothing depends on whether anybody listens.
void notifyManager(std::string_view state);

}  // namespace Host
