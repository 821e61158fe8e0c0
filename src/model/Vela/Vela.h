#pragma once

#include "Vela/DeviceName.h"         // IWYU pragma: export
#include "Vela/TrafficInspection.h"  // IWYU pragma: export
