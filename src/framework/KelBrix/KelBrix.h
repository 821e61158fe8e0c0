#pragma once

/// The front door of the glue for observers of the old style.

#include "KelBrix/LegacyNotifiee.h"
