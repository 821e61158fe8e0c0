#include "policy/PolicyTranslatePerVrfSm.h"

#include "common/Handling.h"
#include "common/Output.h"
#include "policy/Module.h"

namespace VelaPolicyMonitor {
namespace {

using Self = PolicyTranslatePerVrfSm;
using PolicyV1 = VelaL3::VelaPolicyConfig;
using PolicyV2 = VelaL3V2::VelaPolicyConfig;

constexpr TraceScope kTrace{"void VelaPolicyMonitor::PolicyTranslatePerVrfSm::", "return"};

/// Changes below the rule with the lowest priority never mark the cookie.
constexpr auto kUnmarkedPriority = VelaL3::VelaPriority::unchecked(VelaL3::VelaPriority::min);

}  // namespace

constexpr Kel::Dispatch<Self> PolicyTranslatePerVrfSm::policyV1Dispatch{
    Kel::On<Self>::key<PolicyV1::ruleAttr, &Self::handleRule>,
    Kel::On<Self>::change<PolicyV1::timestampAttr, &Self::doUpdate>,
};

PolicyTranslatePerVrfSm::PolicyTranslatePerVrfSm(const L3::VrfName& vrfName,
                                                 const String& netVrfName,
                                                 const Brix::Ptr<const PolicyV1>& policyV1,
                                                 const Brix::Ptr<PolicyV2>& policyV2)
    : vrfName_(vrfName),
      netVrfName_(netVrfName),
      policyV1_(policyV1, *this),
      policyV2_(policyV2),
      initialized_(false),
      initComplete_(false) {
  start(*this);
}

PolicyTranslatePerVrfSm::~PolicyTranslatePerVrfSm() { retire(); }

void PolicyTranslatePerVrfSm::tearDown() noexcept {
  hasNotificationActiveIs(false);
  cleanup();
  kelDoZombieReactors(true);
  policyV1_.activeIs(false);
  perRuleSmDelAll();
}

Brix::Ptr<PolicyTranslatePerVrfSm> PolicyTranslatePerVrfSm::PolicyTranslatePerVrfSmIs(
    const L3::VrfName& vrfName, const String& netVrfName, const Brix::Ptr<const PolicyV1>& policyV1,
    const Brix::Ptr<PolicyV2>& policyV2) {
  return make<Self>(vrfName, netVrfName, policyV1, policyV2);
}

Brix::Ptr<PolicyTranslatePerVrfSm> policyTranslatePerVrfSmFactory(
    const L3::VrfName& vrfName, const String& netVrfName, const Brix::Ptr<const PolicyV1>& policyV1,
    const Brix::Ptr<PolicyV2>& policyV2) {
  return PolicyTranslatePerVrfSm::PolicyTranslatePerVrfSmIs(vrfName, netVrfName, policyV1,
                                                            policyV2);
}

Kel::FwkType PolicyTranslatePerVrfSm::fwkType() const noexcept {
  return fwkTypeOf(PolicyType::perVrf);
}

void PolicyTranslatePerVrfSm::hasNotificationActiveIs(bool on) noexcept { switchParts(*this, on); }

bool PolicyTranslatePerVrfSm::builtFrom(const String& netVrfName,
                                        const Brix::Ptr<const PolicyV1>& policyV1,
                                        const Brix::Ptr<PolicyV2>& policyV2) const noexcept {
  return netVrfName_ == netVrfName && this->policyV1() == policyV1 && policyV2_ == policyV2;
}

void PolicyTranslatePerVrfSm::cookieIs(const Brix::Ptr<UpdateCookie>& cookie) {
  storeAndPublish(*this, cookie_, cookie, cookieAttr.id);
}

void PolicyTranslatePerVrfSm::initializedIs(bool initialized) {
  storeAndPublish(*this, initialized_, initialized, initializedAttr.id);
}

void PolicyTranslatePerVrfSm::initCompleteIs(bool initComplete) {
  storeAndPublish(*this, initComplete_, initComplete, initCompleteAttr.id);
}

Brix::Ptr<PolicyTranslatePerRuleSm> PolicyTranslatePerVrfSm::perRuleSmIs(
    VelaL3::VelaPriority priority, const Brix::Ptr<const VelaL3::VelaRuleConfig>& ruleV1,
    const Brix::Ptr<VelaL3V2::VelaRuleConfig>& ruleV2, const Brix::Ptr<UpdateCookie>& cookie) {
  return Busy::during(*this, [&] {
    const auto before = perRuleSm(priority);
    auto child =
        perRuleSm_.keepOrThrow(*this, "VelaPolicyMonitor::PolicyTranslatePerVrfSm::perRuleSm",
                               priority, ruleV1, ruleV2, cookie);
    if (child && child != before) {
      notifieeList().publish(perRuleSmAttr.id, &priority, valueOf(child));
    }
    return child;
  });
}

Brix::Ptr<PolicyTranslatePerRuleSm> PolicyTranslatePerVrfSm::perRuleSmDel(
    VelaL3::VelaPriority priority) {
  auto gone = perRuleSm_.remove(priority);
  if (gone) {
    notifieeList().publish(perRuleSmAttr.id, &priority);
  }
  return gone;
}

void PolicyTranslatePerVrfSm::perRuleSmDelAll() {
  for (const auto& [priority, child] : perRuleSm()) {
    perRuleSmDel(priority);
  }
}

void PolicyTranslatePerVrfSm::handleInitialized() {
  const Handling run{*this, kTrace, "handleInitialized()"};
  run.enter(" VRF name: ", vrfName());
  // After a clean-up no child shares the previous cookie.
  const Brix::Ptr<UpdateCookie> previous = initialized() ? cookie() : nullptr;
  cookieIs(UpdateCookie::UpdateCookieIs());
  initializedIs(true);
  try {
    handleRule();
  } catch (...) {
    // The children that exist share the previous cookie: what they mark must go on being stamped.
    if (previous) {
      cookieIs(previous);
    }
    throw;
  }
  doUpdate();
  initCompleteIs(true);
  run.leave();
}

void PolicyTranslatePerVrfSm::handleRule(VelaL3::VelaPriority priority) {
  const Handling run{*this, kTrace, "handleRule(VelaL3::VelaPriority)", OnRule{priority.value()}};
  // Deliberate: the label " Rule: " is followed by the name of the VRF.
  run.enter(" Rule: ", vrfName(), " priority: ", priority);
  const VelaL3V2::VelaPriority priorityV2(priority.value());
  if (const auto ruleV1 = policyV1() ? policyV1()->rule(priority) : nullptr) {
    run.act(" VRF name: ", vrfName(), " add priority ", priority);
    const auto ruleV2 = output(policyV2(), "handleRule(VelaL3::VelaPriority)").ruleIs(priorityV2);
    // Deliberate: changes below the rule with the lowest priority never mark the cookie.
    perRuleSmIs(priority, ruleV1, ruleV2, priority == kUnmarkedPriority ? nullptr : cookie());
  } else {
    run.act(" VRF name: ", vrfName(), " remove priority ", priority);
    perRuleSmDel(priority);
    if (policyV2()) {
      policyV2()->ruleDel(priorityV2);
    }
  }
  markUpdated(cookie());
  run.leave();
}

void PolicyTranslatePerVrfSm::handleRule() {
  const Handling run{*this, kTrace, "handleRule()"};
  run.enter(" VRF name: ", vrfName());
  bool deleted = false;
  if (policyV2()) {
    for (const auto& [priorityV2, ruleV2] : policyV2()->rule()) {
      const VelaL3::VelaPriority priority(priorityV2.value());
      if (policyV1() && policyV1()->rule(priority)) {
        continue;
      }
      run.act(" VRF name: ", vrfName(), " remove priority ", priority);
      policyV2()->ruleDel(priorityV2);
      deleted = true;
    }
  }
  if (policyV1()) {
    for (const auto& [priority, ruleV1] : policyV1()->rule()) {
      handleRule(priority);
    }
  }
  if (deleted) {
    markUpdated(cookie());
  }
  run.leave();
}

void PolicyTranslatePerVrfSm::doUpdate() {
  if (!initialized() || !cookie() || !cookie()->updated()) {
    return;
  }
  const Handling run{*this, kTrace, "doUpdate()"};
  run.enter(" VRF name: ", vrfName());
  stamp(output(policyV2(), "doUpdate()"), cookie());
}

// Deliberate: initComplete and the cookie stay as they are.
void PolicyTranslatePerVrfSm::cleanup() {
  const Handling run{*this, kTrace, "cleanup()"};
  run.enter(" VRF name: ", vrfName());
  initializedIs(false);
  perRuleSmDelAll();
  if (policyV2()) {
    policyV2()->ruleDelAll();
  }
  run.leave();
}

}  // namespace VelaPolicyMonitor
