#include "policy/PolicyTranslatePerOriginSm.h"

#include "common/Handling.h"
#include "common/Output.h"
#include "policy/Conversions.h"
#include "policy/Module.h"

namespace VelaPolicyMonitor {
namespace {

using Self = PolicyTranslatePerOriginSm;
using OriginV1 = VelaL3::VelaRuleOriginConfig;
using OriginV2 = VelaL3V2::VelaRuleOriginConfig;

constexpr TraceScope kTrace{"void VelaPolicyMonitor::PolicyTranslatePerOriginSm::", " return"};

}  // namespace

constexpr Kel::Dispatch<Self> PolicyTranslatePerOriginSm::originPolicyV1Dispatch{
    Kel::On<Self>::change<OriginV1::tagsAttr, &Self::handleTags>,
    Kel::On<Self>::key<OriginV1::policyModifierSetAttr, &Self::handleModifier>,
    Kel::On<Self>::change<OriginV1::matchAttr, &Self::handleMatch>,
    Kel::On<Self>::change<OriginV1::actionAttr, &Self::handleAction>,
    Kel::On<Self>::change<OriginV1::logAttr, &Self::handleLog>,
};

PolicyTranslatePerOriginSm::PolicyTranslatePerOriginSm(
    const String& name, const Brix::Ptr<const OriginV1>& originPolicyV1,
    const Brix::Ptr<OriginV2>& originPolicyV2, const Brix::Ptr<UpdateCookie>& cookie)
    : policyName_(name),
      originPolicyV1_(originPolicyV1, *this),
      originPolicyV2_(originPolicyV2),
      cookie_(cookie),
      initialized_(false) {
  start(*this);
}

PolicyTranslatePerOriginSm::~PolicyTranslatePerOriginSm() { retire(); }

void PolicyTranslatePerOriginSm::tearDown() noexcept {
  hasNotificationActiveIs(false);
  cleanup();
  kelDoZombieReactors(true);
  originPolicyV1_.activeIs(false);
  matchSmDel();
}

Brix::Ptr<PolicyTranslatePerOriginSm> PolicyTranslatePerOriginSm::PolicyTranslatePerOriginSmIs(
    const String& name, const Brix::Ptr<const OriginV1>& originPolicyV1,
    const Brix::Ptr<OriginV2>& originPolicyV2, const Brix::Ptr<UpdateCookie>& cookie) {
  return make<Self>(name, originPolicyV1, originPolicyV2, cookie);
}

Brix::Ptr<PolicyTranslatePerOriginSm> policyTranslatePerOriginSmFactory(
    const String& name, const Brix::Ptr<const OriginV1>& originPolicyV1,
    const Brix::Ptr<OriginV2>& originPolicyV2, const Brix::Ptr<UpdateCookie>& cookie) {
  return PolicyTranslatePerOriginSm::PolicyTranslatePerOriginSmIs(name, originPolicyV1,
                                                                  originPolicyV2, cookie);
}

Kel::FwkType PolicyTranslatePerOriginSm::fwkType() const noexcept {
  return fwkTypeOf(PolicyType::perOrigin);
}

void PolicyTranslatePerOriginSm::hasNotificationActiveIs(bool on) noexcept {
  switchParts(*this, on);
}

bool PolicyTranslatePerOriginSm::builtFrom(const Brix::Ptr<const OriginV1>& originPolicyV1,
                                           const Brix::Ptr<OriginV2>& originPolicyV2,
                                           const Brix::Ptr<UpdateCookie>& cookie) const noexcept {
  return this->originPolicyV1() == originPolicyV1 && originPolicyV2_ == originPolicyV2 &&
         cookie_ == cookie;
}

Brix::Ptr<PolicyTranslateMatchSm> PolicyTranslatePerOriginSm::matchSmIs(
    const Brix::Ptr<const VelaL3::VelaMatchConfig>& matchV1,
    const Brix::Ptr<VelaL3V2::VelaMatchConfig>& matchV2, const Brix::Ptr<UpdateCookie>& cookie) {
  return Busy::during(*this, [&] {
    if (matchSm() && matchSm()->builtFrom(matchV1, matchV2, cookie)) {
      return matchSm();
    }
    const TracePlace::Making making(tracePlace());
    auto made = PolicyTranslateMatchSm::PolicyTranslateMatchSmIs(matchV1, matchV2, cookie);
    // Deliberate: the one that gives way is released without being switched off first.
    matchSm_.exchange(made);
    made->hasNotificationActiveIs(true);
    return made;
  });
}

void PolicyTranslatePerOriginSm::matchSmDel() {
  if (const auto gone = matchSm_.exchange(nullptr)) {
    gone->hasNotificationActiveIs(false);
  }
}

void PolicyTranslatePerOriginSm::handleInitialized() {
  const Handling run{*this, kTrace, "handleInitialized()"};
  run.enter(" policy: ", policyName());
  initialized_ = true;
  handleModifier();
  handleMatch();
  handleTags();
  handleAction();
  handleLog();
  run.leave();
}

void PolicyTranslatePerOriginSm::handleTags() {
  if (!initialized() || !originPolicyV1()) {
    return;
  }
  const Handling run{*this, kTrace, "handleTags()"};
  run.enter(" policy: ", policyName());
  output(originPolicyV2(), "handleTags()").tagsIs(originPolicyV1()->tags());
  markUpdated(cookie());
  run.leave();
}

void PolicyTranslatePerOriginSm::handleModifier(VelaL3::VelaPolicyModifier modifier) {
  if (!initialized()) {
    return;
  }
  const Handling run{*this, kTrace, "handleModifier(VelaL3::VelaPolicyModifier)"};
  run.enter(" policy: ", policyName(), " modifier: ", modifier);
  if (originPolicyV1() && originPolicyV1()->policyModifierSet(modifier)) {
    run.act(" policy: ", policyName(), " add modifier ", modifier);
    output(originPolicyV2(), "handleModifier(VelaL3::VelaPolicyModifier)")
        .policyModifierSetIs(toVelaL3V2PolicyModifier(modifier));
  } else {
    run.act(" policy: ", policyName(), " remove modifier ", modifier);
    const auto modifierV2 = toVelaL3V2PolicyModifier(modifier);
    if (originPolicyV2()) {
      originPolicyV2()->policyModifierSetDel(modifierV2);
    }
  }
  markUpdated(cookie());
  run.leave();
}

void PolicyTranslatePerOriginSm::handleModifier() {
  if (!initialized()) {
    return;
  }
  const Handling run{*this, kTrace, "handleModifier()"};
  run.enter(" policy: ", policyName());
  bool removed = false;
  if (originPolicyV2()) {
    for (const VelaL3V2::VelaPolicyModifier modifierV2 : originPolicyV2()->policyModifierSet()) {
      const VelaL3::VelaPolicyModifier modifier = toVelaL3V1PolicyModifier(modifierV2);
      if (originPolicyV1() && originPolicyV1()->policyModifierSet(modifier)) {
        continue;
      }
      run.act(" policy: ", policyName(), " remove modifier ", modifier);
      originPolicyV2()->policyModifierSetDel(modifierV2);
      removed = true;
    }
  }
  if (originPolicyV1()) {
    for (const VelaL3::VelaPolicyModifier modifier : originPolicyV1()->policyModifierSet()) {
      output(originPolicyV2(), "handleModifier()")
          .policyModifierSetIs(toVelaL3V2PolicyModifier(modifier));
    }
  }
  // Deliberate: additions alone do not mark the cookie here, as they do in the keyed handler.
  if (removed) {
    markUpdated(cookie());
  }
  run.leave();
}

void PolicyTranslatePerOriginSm::handleMatch() {
  if (!initialized()) {
    return;
  }
  const Handling run{*this, kTrace, "handleMatch()"};
  run.enter(" policy: ", policyName());
  // Deliberate: when the version-1 match has gone, the version-2 match and its machine stay until
  // clean-up.
  if (const auto matchV1 = originPolicyV1() ? originPolicyV1()->match() : nullptr) {
    const auto matchV2 = output(originPolicyV2(), "handleMatch()").matchIs();
    matchSmIs(matchV1, matchV2, cookie());
  }
  run.leave();
}

void PolicyTranslatePerOriginSm::handleAction() {
  if (!initialized() || !originPolicyV1()) {
    return;
  }
  const Handling run{*this, kTrace, "handleAction()"};
  const VelaL3::VelaAction action = originPolicyV1()->action();
  run.enter(" policy: ", policyName(), " action: ", action);
  output(originPolicyV2(), "handleAction()").actionIs(toVelaL3V2Action(action));
  markUpdated(cookie());
  run.leave();
}

void PolicyTranslatePerOriginSm::handleLog() {
  if (!initialized() || !originPolicyV1()) {
    return;
  }
  const Handling run{*this, kTrace, "handleLog()"};
  const bool log = originPolicyV1()->log();
  run.enter(" policy: ", policyName(), " policyV1Log: ", log);
  output(originPolicyV2(), "handleLog()").logEnabledIs(log);
  markUpdated(cookie());
  run.leave();
}

// Deliberate: action, log flag, tags and modifiers stay as they are, and the cookie is not marked.
void PolicyTranslatePerOriginSm::cleanup() {
  const Handling run{*this, kTrace, "cleanup()"};
  run.enter(" policy: ", policyName());
  initialized_ = false;
  matchSmDel();
  if (originPolicyV2()) {
    originPolicyV2()->matchDel();
  }
  run.leave();
}

}  // namespace VelaPolicyMonitor
