// The agent is linked to the library: the factories are functions like all others.
#include "factories.h"

Factories factories() {
  return {&VelaPolicyMonitor::policyTranslateRootSmFactory,
          &VelaPolicyMonitor::serviceDeviceTranslateRootSmFactory};
}
