#pragma once

/// The front door of the policy tree: its six state machines and their factories.

#include "common/VelaTranslateSmCommon.h"
#include "policy/Conversions.h"
#include "policy/PolicyTranslateRootSm.h"
