#pragma once

/// The front door of what all state machines share, and of the names of devices.

#include "Kel/Kel.h"
#include "KelBrix/KelBrix.h"
#include "common/HAPairDeviceId.h"
#include "common/MountTimeout.h"
#include "common/NameEncoder.h"
#include "common/PolicyListLookup.h"
#include "common/UpdateCookie.h"
