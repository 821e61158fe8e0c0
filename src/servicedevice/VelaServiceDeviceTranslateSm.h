#pragma once

/// The front door of the service-device tree: its four state machines and their factories.

#include "common/VelaTranslateSmCommon.h"
#include "servicedevice/ServiceDeviceTranslateRootSm.h"
