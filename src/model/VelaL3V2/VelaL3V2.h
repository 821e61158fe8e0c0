#pragma once

/// The front door of the version-2 configuration: both trees.

#include "VelaL3V2/ServiceDeviceSourceConfig.h"
#include "VelaL3V2/VelaPolicySourceConfig.h"
