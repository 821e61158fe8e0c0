#pragma once

#include "Brix/Ptr.h"
#include "Kel/Text.h"
#include "monitor/Status.h"

namespace [[using gnu: visibility("default")]] VelaPolicyMonitor {

/// The monitor's record that serves a device; null when there is none.
///
/// A plain device is served by the record under its own name, as it stands. A high-availability
/// pair (component 0 of the name ends with the pair's marker) is served by the record of its first
/// member, else by that of its second; the pair's own name is never looked up. A member's key is
/// the pair's name with the member in the place of component 0; components 1 and 2 are always
/// written, so a name that had only component 0 gains two empty ones.
Brix::Ptr<DevicePolicyList> policyListOf(const Brix::Ptr<Status>& vpmStatus,
                                         const Kel::String& deviceName);

}  // namespace VelaPolicyMonitor
