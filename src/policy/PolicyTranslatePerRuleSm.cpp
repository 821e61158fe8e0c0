#include "policy/PolicyTranslatePerRuleSm.h"

#include "common/Handling.h"
#include "common/Output.h"
#include "policy/Module.h"

namespace VelaPolicyMonitor {
namespace {

using Self = PolicyTranslatePerRuleSm;
using RuleV1 = VelaL3::VelaRuleConfig;
using RuleV2 = VelaL3V2::VelaRuleConfig;

constexpr TraceScope kTrace{"void VelaPolicyMonitor::PolicyTranslatePerRuleSm::", "return"};

}  // namespace

constexpr Kel::Dispatch<Self> PolicyTranslatePerRuleSm::ruleV1Dispatch{
    Kel::On<Self>::key<RuleV1::originAttr, &Self::handleOrigin>,
};

PolicyTranslatePerRuleSm::PolicyTranslatePerRuleSm(VelaL3::VelaPriority priority,
                                                   const Brix::Ptr<const RuleV1>& ruleV1,
                                                   const Brix::Ptr<RuleV2>& ruleV2,
                                                   const Brix::Ptr<UpdateCookie>& cookie)
    : priority_(priority),
      ruleV1_(ruleV1, *this),
      ruleV2_(ruleV2),
      cookie_(cookie),
      initialized_(false) {
  start(*this);
}

PolicyTranslatePerRuleSm::~PolicyTranslatePerRuleSm() { retire(); }

void PolicyTranslatePerRuleSm::tearDown() noexcept {
  hasNotificationActiveIs(false);
  cleanup();
  kelDoZombieReactors(true);
  ruleV1_.activeIs(false);
  perOriginSmDelAll();
}

Brix::Ptr<PolicyTranslatePerRuleSm> PolicyTranslatePerRuleSm::PolicyTranslatePerRuleSmIs(
    VelaL3::VelaPriority priority, const Brix::Ptr<const RuleV1>& ruleV1,
    const Brix::Ptr<RuleV2>& ruleV2, const Brix::Ptr<UpdateCookie>& cookie) {
  return make<Self>(priority, ruleV1, ruleV2, cookie);
}

Brix::Ptr<PolicyTranslatePerRuleSm> policyTranslatePerRuleSmFactory(
    VelaL3::VelaPriority priority, const Brix::Ptr<const RuleV1>& ruleV1,
    const Brix::Ptr<RuleV2>& ruleV2, const Brix::Ptr<UpdateCookie>& cookie) {
  return PolicyTranslatePerRuleSm::PolicyTranslatePerRuleSmIs(priority, ruleV1, ruleV2, cookie);
}

Kel::FwkType PolicyTranslatePerRuleSm::fwkType() const noexcept {
  return fwkTypeOf(PolicyType::perRule);
}

void PolicyTranslatePerRuleSm::hasNotificationActiveIs(bool on) noexcept { switchParts(*this, on); }

bool PolicyTranslatePerRuleSm::builtFrom(const Brix::Ptr<const RuleV1>& ruleV1,
                                         const Brix::Ptr<RuleV2>& ruleV2,
                                         const Brix::Ptr<UpdateCookie>& cookie) const noexcept {
  return this->ruleV1() == ruleV1 && ruleV2_ == ruleV2 && cookie_ == cookie;
}

Brix::Ptr<PolicyTranslatePerOriginSm> PolicyTranslatePerRuleSm::perOriginSmIs(
    const String& name, const Brix::Ptr<const VelaL3::VelaRuleOriginConfig>& originV1,
    const Brix::Ptr<VelaL3V2::VelaRuleOriginConfig>& originV2,
    const Brix::Ptr<UpdateCookie>& cookie) {
  return perOriginSm_.keepOrThrow(*this, "VelaPolicyMonitor::PolicyTranslatePerRuleSm::perOriginSm",
                                  name, originV1, originV2, cookie);
}

Brix::Ptr<PolicyTranslatePerOriginSm> PolicyTranslatePerRuleSm::perOriginSmDel(const String& name) {
  return perOriginSm_.remove(name);
}

void PolicyTranslatePerRuleSm::perOriginSmDelAll() { perOriginSm_.removeAll(); }

void PolicyTranslatePerRuleSm::handleInitialized() {
  const Handling run{*this, kTrace, "handleInitialized()"};
  run.enter(" Rule priority: ", priority());
  initialized_ = true;
  handleOrigin();
  run.leave();
}

void PolicyTranslatePerRuleSm::handleOrigin(const String& name) {
  const Handling run{*this, kTrace, "handleOrigin(const String&)"};
  run.enter(" Rule priority: ", priority(), " policy: ", name);
  if (const auto originV1 = ruleV1() ? ruleV1()->origin(name) : nullptr) {
    run.act(" priority: ", priority(), " add policy ", name);
    const auto originV2 = output(ruleV2(), "handleOrigin(const String&)").originIs(name);
    perOriginSmIs(name, originV1, originV2, cookie());
  } else {
    run.act(" priority: ", priority(), " remove policy ", name);
    // The argument may lie in the child.
    const String key = name;  // NOLINT(performance-unnecessary-copy-initialization)
    perOriginSmDel(key);
    if (ruleV2()) {
      ruleV2()->originDel(key);
    }
  }
  markUpdated(cookie());
  run.leave();
}

void PolicyTranslatePerRuleSm::handleOrigin() {
  const Handling run{*this, kTrace, "handleOrigin()"};
  run.enter(" Rule priority: ", priority());
  bool deleted = false;
  if (ruleV2()) {
    for (const auto& [name, originV2] : ruleV2()->origin()) {
      if (ruleV1() && ruleV1()->origin(name)) {
        continue;
      }
      run.act(" priority: ", priority(), " remove policy ", name);
      ruleV2()->originDel(name);
      deleted = true;
    }
  }
  if (ruleV1()) {
    for (const auto& [name, originV1] : ruleV1()->origin()) {
      handleOrigin(name);
    }
  }
  if (deleted) {
    markUpdated(cookie());
  }
  run.leave();
}

// Deliberate: the cookie is not marked; the per-VRF machine deletes the rule itself right after.
void PolicyTranslatePerRuleSm::cleanup() {
  const Handling run{*this, kTrace, "cleanup()"};
  run.enter(" Rule priority: ", priority());
  initialized_ = false;
  perOriginSmDelAll();
  if (ruleV2()) {
    ruleV2()->originDelAll();
  }
  run.leave();
}

}  // namespace VelaPolicyMonitor
