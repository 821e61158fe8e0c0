#pragma once

#include <string>

#include "change/Change.h"
#include "data/Trees.h"
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

  /// What a tree does at this moment.
  struct State {
    bool running = false;
    bool listening = false;    ///< false: suspended
    bool initialized = false;  ///< false: cleaned up
  };
  State policies() const;
  State serviceDevices() const;
  /// The root of the policy tree, or of the service-device tree; null when it is not running.
  const Kel::PtrInterface* root(bool ofPolicies) const {
    return ofPolicies ? static_cast<const Kel::PtrInterface*>(policies_.get())
                      : serviceDevices_.get();
  }

  /// Why this cannot be done now; empty when it can.
  std::string whyNot(Verb verb, bool ofPolicies, bool ofServiceDevices) const;
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
