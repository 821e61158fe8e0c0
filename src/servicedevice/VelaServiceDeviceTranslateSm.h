#pragma once

/// The front door of the service-device tree: its four state machines and their factories.

#include "servicedevice/ServiceDeviceTranslateRootSm.h"
