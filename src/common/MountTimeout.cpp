#include "common/MountTimeout.h"

namespace VelaPolicyMonitor {
namespace {

const Kel::LogHandle kMountTimeout(
    "ZARN_MOUNT_TIMEOUT", 3, "%s is unable to mount from %s %s.",
    "A mount request to synchronize state between Zarn and switch has timed out. The services that "
    "depend on the state can be dysfunctional.",
    Kel::LogHandle::contactSupport);

}  // namespace

const Kel::LogHandle& mountTimeout() { return kMountTimeout; }

}  // namespace VelaPolicyMonitor
