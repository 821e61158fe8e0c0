#pragma once

#include <string>

#include "host/Change.h"
#include "host/Trees.h"
#include "policy/VelaPolicyTranslateSm.h"
#include "servicedevice/VelaServiceDeviceTranslateSm.h"

namespace Host {

/// The two root state machines, each there or not.
class Translation {
 public:
  explicit Translation(const Trees& trees) : trees_(trees) {}
  Translation(const Translation&) = delete;
  Translation& operator=(const Translation&) = delete;
  /// The policy tree goes first.
  ~Translation() { stop(); }

  bool runsPolicies() const { return policies_ != nullptr; }
  bool runsServiceDevices() const { return serviceDevices_ != nullptr; }

  /// Why this cannot be done now; empty when it can.
  std::string whyNot(Verb verb, bool policies, bool serviceDevices) const;
  /// Does it: the policy tree first. Raises what handlers raise.
  void controlPolicies(Verb verb);
  void controlServiceDevices(Verb verb);
  void start();
  void stop();

 private:
  const Trees& trees_;
  Brix::Ptr<VelaPolicyMonitor::PolicyTranslateRootSm> policies_;
  Brix::Ptr<VelaPolicyMonitor::ServiceDeviceTranslateRootSm> serviceDevices_;
};

}  // namespace Host
