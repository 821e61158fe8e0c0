#pragma once

/// The front door of the version-1 configuration: both trees.

#include "VelaL3/ServiceDeviceSourceConfig.h"
#include "VelaL3/VelaPolicySourceConfig.h"
