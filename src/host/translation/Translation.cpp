#include "translation/Translation.h"

#include "text/Concat.h"

namespace Host {
namespace {

/// What every root does alike.
template <class Root>
void control(Root& root, Verb verb) {
  switch (verb) {
    case Verb::suspend:
      return root.hasNotificationActiveIs(false);
    case Verb::resume:
      return root.hasNotificationActiveIs(true);
    case Verb::cleanup:
      return root.cleanup();
    default:
      return root.handleInitialized();
  }
}

template <class Root>
Translation::State stateOf(const Brix::Ptr<Root>& root) {
  return root == nullptr
             ? Translation::State{}
             : Translation::State{true, root->hasNotificationActive(), root->initialized()};
}

std::string whyNotOne(Verb verb, bool running, std::string_view tree) {
  if (verb == Verb::start) {
    return running ? concat({"the ", tree, " tree is running; it cannot be started again"}) : "";
  }
  return running ? "" : concat({"the ", tree, " tree is not running; start it first"});
}

}  // namespace

Translation::State Translation::policies() const { return stateOf(policies_); }
Translation::State Translation::serviceDevices() const { return stateOf(serviceDevices_); }

std::string Translation::whyNot(Verb verb, bool ofPolicies, bool ofServiceDevices) const {
  const std::string why = ofPolicies ? whyNotOne(verb, policies().running, "policy") : "";
  return why.empty() && ofServiceDevices
             ? whyNotOne(verb, serviceDevices().running, "service-device")
             : why;
}

void Translation::controlPolicies(Verb verb) {
  if (verb == Verb::start) {
    policies_ = VelaPolicyMonitor::policyTranslateRootSmFactory(trees_.policyV1, trees_.policyV2,
                                                                trees_.status);
  } else if (verb == Verb::stop) {
    policies_ = nullptr;
  } else {
    control(*policies_, verb);
  }
}

void Translation::controlServiceDevices(Verb verb) {
  if (verb == Verb::start) {
    serviceDevices_ = VelaPolicyMonitor::serviceDeviceTranslateRootSmFactory(
        trees_.serviceDeviceV1, trees_.serviceDeviceV2, trees_.status);
  } else if (verb == Verb::stop) {
    serviceDevices_ = nullptr;
  } else {
    control(*serviceDevices_, verb);
  }
}

void Translation::start() {
  controlPolicies(Verb::start);
  controlServiceDevices(Verb::start);
}

void Translation::stop() {
  controlPolicies(Verb::stop);
  controlServiceDevices(Verb::stop);
}

}  // namespace Host
