#include <functional>

#include "common/VelaTranslateSmCommon.h"
#include "model/reference/LibrarySide.h"
#include "policy/VelaPolicyTranslateSm.h"
#include "servicedevice/VelaServiceDeviceTranslateSm.h"

namespace Reference {
namespace {

using namespace VelaPolicyMonitor;  // NOLINT(google-build-using-namespace): what is tested

template <class T>
const T& as(const Text& text) {
  return *static_cast<const T*>(typed(Kel::valueTypeOf<T>(), text));
}

template <class Sm>
using Forms = std::map<Text, std::function<void(Sm& sm, const Text& argument)>>;

template <class Sm>
Forms<Sm> withCommon(Forms<Sm> forms) {
  forms["handleInitialized()"] = [](Sm& sm, const Text& /*none*/) { sm.handleInitialized(); };
  if constexpr (requires(Sm & sm) { sm.cleanup(); }) {
    forms["cleanup()"] = [](Sm& sm, const Text& /*none*/) { sm.cleanup(); };
  }
  return forms;
}

const auto kPolicyRoot = withCommon<PolicyTranslateRootSm>({
    {"handlePolicySet()", [](auto& sm, auto& /*none*/) { sm.handlePolicySet(); }},
    {"handlePolicySet(const String&)",
     [](auto& sm, auto& key) { sm.handlePolicySet(Kel::String(key)); }},
});
const auto kPolicyDevice = withCommon<PolicyTranslatePerDeviceSm>({
    {"handleVrf()", [](auto& sm, auto& /*none*/) { sm.handleVrf(); }},
    {"handleVrf(const String&)", [](auto& sm, auto& key) { sm.handleVrf(Kel::String(key)); }},
});
const auto kPolicyVrf = withCommon<PolicyTranslatePerVrfSm>({
    {"handleRule()", [](auto& sm, auto& /*none*/) { sm.handleRule(); }},
    {"handleRule(VelaL3::VelaPriority)",
     [](auto& sm, auto& key) { sm.handleRule(as<VelaL3::VelaPriority>(key)); }},
    {"doUpdate()", [](auto& sm, auto& /*none*/) { sm.doUpdate(); }},
});
const auto kPolicyRule = withCommon<PolicyTranslatePerRuleSm>({
    {"handleOrigin()", [](auto& sm, auto& /*none*/) { sm.handleOrigin(); }},
    {"handleOrigin(const String&)", [](auto& sm, auto& key) { sm.handleOrigin(Kel::String(key)); }},
});
const auto kPolicyOrigin = withCommon<PolicyTranslatePerOriginSm>({
    {"handleTags()", [](auto& sm, auto& /*none*/) { sm.handleTags(); }},
    {"handleLog()", [](auto& sm, auto& /*none*/) { sm.handleLog(); }},
    {"handleAction()", [](auto& sm, auto& /*none*/) { sm.handleAction(); }},
    {"handleMatch()", [](auto& sm, auto& /*none*/) { sm.handleMatch(); }},
    {"handleModifier()", [](auto& sm, auto& /*none*/) { sm.handleModifier(); }},
    {"handleModifier(VelaL3::VelaPolicyModifier)",
     [](auto& sm, auto& key) { sm.handleModifier(as<VelaL3::VelaPolicyModifier>(key)); }},
});
const auto kPolicyMatch = withCommon<PolicyTranslateMatchSm>({
    {"handleSrcIp()", [](auto& sm, auto& /*none*/) { sm.handleSrcIp(); }},
    {"handleSrcIp(const Norv::IpGenPrefix&)",
     [](auto& sm, auto& key) { sm.handleSrcIp(as<Norv::IpGenPrefix>(key)); }},
    {"handleSrcIpRange()", [](auto& sm, auto& /*none*/) { sm.handleSrcIpRange(); }},
    {"handleSrcIpRange(const VelaL3::VelaIpRange&)",
     [](auto& sm, auto& key) { sm.handleSrcIpRange(as<VelaL3::VelaIpRange>(key)); }},
    {"handleDstIp()", [](auto& sm, auto& /*none*/) { sm.handleDstIp(); }},
    {"handleDstIp(const Norv::IpGenPrefix&)",
     [](auto& sm, auto& key) { sm.handleDstIp(as<Norv::IpGenPrefix>(key)); }},
    {"handleDstIpRange()", [](auto& sm, auto& /*none*/) { sm.handleDstIpRange(); }},
    {"handleDstIpRange(const VelaL3::VelaIpRange&)",
     [](auto& sm, auto& key) { sm.handleDstIpRange(as<VelaL3::VelaIpRange>(key)); }},
    {"handleL3App()", [](auto& sm, auto& /*none*/) { sm.handleL3App(); }},
    {"handleL3App(Norv::IpProto)",
     [](auto& sm, auto& key) { sm.handleL3App(as<Norv::IpProto>(key)); }},
    {"handleDstL4App()", [](auto& sm, auto& /*none*/) { sm.handleDstL4App(); }},
    {"handleDstL4App(VelaL3::VelaL4App)",
     [](auto& sm, auto& key) { sm.handleDstL4App(as<VelaL3::VelaL4App>(key)); }},
    {"handleDstL4AppRange()", [](auto& sm, auto& /*none*/) { sm.handleDstL4AppRange(); }},
    {"handleDstL4AppRange(const VelaL3::VelaL4AppRange&)",
     [](auto& sm, auto& key) { sm.handleDstL4AppRange(as<VelaL3::VelaL4AppRange>(key)); }},
});
const auto kServiceRoot = withCommon<ServiceDeviceTranslateRootSm>({
    {"handleDevice()", [](auto& sm, auto& /*none*/) { sm.handleDevice(); }},
    {"handleDevice(const String&)", [](auto& sm, auto& key) { sm.handleDevice(Kel::String(key)); }},
});
const auto kServiceDevice = withCommon<PerServiceDeviceTranslateSm>({
    {"handleVrf()", [](auto& sm, auto& /*none*/) { sm.handleVrf(); }},
    {"handleVrf(const String&)", [](auto& sm, auto& key) { sm.handleVrf(Kel::String(key)); }},
    {"handleTrafficInspection()", [](auto& sm, auto& /*none*/) { sm.handleTrafficInspection(); }},
});
const auto kServiceVrf = withCommon<PerVrfServiceDeviceTranslateSm>({
    {"handleL3Intf()", [](auto& sm, auto& /*none*/) { sm.handleL3Intf(); }},
    {"handleL3Intf(const Norv::IpGenAddr&)",
     [](auto& sm, auto& key) { sm.handleL3Intf(as<Norv::IpGenAddr>(key)); }},
    {"doUpdate()", [](auto& sm, auto& /*none*/) { sm.doUpdate(); }},
});
const auto kServiceIntf = withCommon<PerL3IntfServiceDeviceTranslateSm>({
    {"handleSubnet()", [](auto& sm, auto& /*none*/) { sm.handleSubnet(); }},
    {"handleSubnet(const Norv::IpGenPrefix&)",
     [](auto& sm, auto& key) { sm.handleSubnet(as<Norv::IpGenPrefix>(key)); }},
});

template <class Sm>
bool callAs(Kel::PtrInterface& machine, const Forms<Sm>& forms, const Text& form,
            const Text& argument) {
  auto* const sm = dynamic_cast<Sm*>(&machine);
  const auto found = forms.find(form);
  if (sm != nullptr && found != forms.end()) {
    found->second(*sm, argument);
  }
  return sm != nullptr;
}

// Calls `use` with the machine if it is of type Sm.
template <class Sm, class Use>
bool with(Kel::PtrInterface& machine, const Use& use) {
  auto* const sm = dynamic_cast<Sm*>(&machine);
  if (sm != nullptr) {
    use(*sm);
  }
  return sm != nullptr;
}

template <class Sm>
void changeVrf(Sm& sm, const Operation& operation) {
  switch (operation.verb) {
    case Operation::Verb::cookieIs:
      sm.cookieIs(updateCookieFactory());
      break;
    case Operation::Verb::initializedIs:
      sm.initializedIs(operation.value == "true");
      break;
    case Operation::Verb::initCompleteIs:
      sm.initCompleteIs(operation.value == "true");
      break;
    default:
      break;
  }
}

void removeChild(Kel::PtrInterface& machine, const Text& key) {
  with<PolicyTranslateRootSm>(machine, [&](auto& sm) { sm.perDeviceSmDel(Kel::String(key)); }) ||
      with<PolicyTranslatePerDeviceSm>(machine,
                                       [&](auto& sm) { sm.perVrfSmDel(as<L3::VrfName>(key)); }) ||
      with<PolicyTranslatePerVrfSm>(
          machine, [&](auto& sm) { sm.perRuleSmDel(as<VelaL3::VelaPriority>(key)); }) ||
      with<PolicyTranslatePerRuleSm>(machine,
                                     [&](auto& sm) { sm.perOriginSmDel(Kel::String(key)); }) ||
      with<PolicyTranslatePerOriginSm>(machine, [&](auto& sm) { sm.matchSmDel(); }) ||
      with<ServiceDeviceTranslateRootSm>(machine,
                                         [&](auto& sm) { sm.perDeviceSmDel(Kel::String(key)); }) ||
      with<PerServiceDeviceTranslateSm>(machine,
                                        [&](auto& sm) { sm.perVrfSmDel(as<L3::VrfName>(key)); }) ||
      with<PerVrfServiceDeviceTranslateSm>(
          machine, [&](auto& sm) { sm.perL3IntfSmDel(as<Norv::IpGenAddr>(key)); });
}

void removeChildren(Kel::PtrInterface& machine) {
  with<PolicyTranslateRootSm>(machine, [&](auto& sm) { sm.perDeviceSmDelAll(); }) ||
      with<PolicyTranslatePerDeviceSm>(machine, [&](auto& sm) { sm.perVrfSmDelAll(); }) ||
      with<PolicyTranslatePerVrfSm>(machine, [&](auto& sm) { sm.perRuleSmDelAll(); }) ||
      with<PolicyTranslatePerRuleSm>(machine, [&](auto& sm) { sm.perOriginSmDelAll(); }) ||
      with<PolicyTranslatePerOriginSm>(machine, [&](auto& sm) { sm.matchSmDel(); }) ||
      with<ServiceDeviceTranslateRootSm>(machine, [&](auto& sm) { sm.perDeviceSmDelAll(); }) ||
      with<PerServiceDeviceTranslateSm>(machine, [&](auto& sm) { sm.perVrfSmDelAll(); }) ||
      with<PerVrfServiceDeviceTranslateSm>(machine, [&](auto& sm) { sm.perL3IntfSmDelAll(); });
}

}  // namespace

void callMachine(Kel::PtrInterface& machine, const Text& form, const Text& argument) {
  callAs(machine, kPolicyRoot, form, argument) || callAs(machine, kPolicyDevice, form, argument) ||
      callAs(machine, kPolicyVrf, form, argument) || callAs(machine, kPolicyRule, form, argument) ||
      callAs(machine, kPolicyOrigin, form, argument) ||
      callAs(machine, kPolicyMatch, form, argument) ||
      callAs(machine, kServiceRoot, form, argument) ||
      callAs(machine, kServiceDevice, form, argument) ||
      callAs(machine, kServiceVrf, form, argument) || callAs(machine, kServiceIntf, form, argument);
}

void changeMachine(Kel::PtrInterface& machine, const Operation& operation) {
  if (operation.verb == Operation::Verb::childDel) {
    removeChild(machine, operation.key);
  } else if (operation.verb == Operation::Verb::childDelAll) {
    removeChildren(machine);
  } else {
    with<PolicyTranslatePerVrfSm>(machine, [&](auto& sm) { changeVrf(sm, operation); }) ||
        with<PerVrfServiceDeviceTranslateSm>(machine, [&](auto& sm) { changeVrf(sm, operation); });
  }
}

}  // namespace Reference
