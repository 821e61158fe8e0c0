#pragma once

#include "policy/VelaPolicyTranslateSm.h"
#include "servicedevice/VelaServiceDeviceTranslateSm.h"

/// The library's two entry points, wherever the agent has them from.
struct Factories {
  decltype(&VelaPolicyMonitor::policyTranslateRootSmFactory) policy;
  decltype(&VelaPolicyMonitor::serviceDeviceTranslateRootSmFactory) serviceDevice;
};

/// An agent has one of the two sources: with linked.cpp it is linked to the library, as nearly all
/// are; with loaded.cpp it loads the library at run time.
Factories factories();
