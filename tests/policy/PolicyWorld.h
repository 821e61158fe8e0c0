#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Kel/Kel.h"
#include "Kel/Observer.h"
#include "Kel/Slab.h"
#include "VelaL3/VelaL3.h"
#include "VelaL3V2/VelaL3V2.h"
#include "monitor/Status.h"
#include "policy/VelaPolicyTranslateSm.h"
#include "support/RingCapture.h"
#include "support/TraceCapture.h"

/// What the tests of the policy tree have in common: the sources of both generations, a monitor, a
/// clock that stands still, and a journal.
namespace PolicyTests {

using Brix::Ptr;
using Kel::AttrId;
using Kel::Observer;
using L3::VrfName;
using Norv::IpGenAddr;
using Norv::IpGenPrefix;
using Norv::IpProto;
using VelaPolicyMonitor::DevicePolicyList;
using VelaPolicyMonitor::PolicyTranslateMatchSm;
using VelaPolicyMonitor::PolicyTranslatePerDeviceSm;
using VelaPolicyMonitor::PolicyTranslatePerOriginSm;
using VelaPolicyMonitor::PolicyTranslatePerRuleSm;
using VelaPolicyMonitor::PolicyTranslatePerVrfSm;
using VelaPolicyMonitor::PolicyTranslateRootSm;
using VelaPolicyMonitor::UpdateCookie;
using Lines = std::vector<std::string>;

/// Priorities of both generations; any value, also one out of range.
constexpr VelaL3::VelaPriority p1(std::uint32_t value) {
  return VelaL3::VelaPriority::unchecked(value);
}
constexpr VelaL3V2::VelaPriority p2(std::uint32_t value) {
  return VelaL3V2::VelaPriority::unchecked(value);
}

/// Captures both trace facilities; what it hands out has been the same in both.
class BothTraces {
 public:
  /// The lines since the last call as "<level> <message>".
  Lines take() {
    const Lines text = text_.take();
    EXPECT_EQ(ring_.take(), text) << "the binary trace differs from the text trace";
    return text;
  }

 private:
  TestSupport::TraceCapture text_;
  TestSupport::RingCapture ring_;
};

/// The lines of one class: kRoot(8, "cleanup()") is the level and the message.
struct LinesOf {
  std::string_view scope;
  std::string operator()(unsigned level, std::string_view rest) const {
    return std::to_string(level) + " " + std::string(scope) + std::string(rest);
  }
};
inline constexpr LinesOf kRoot{"void VelaPolicyMonitor::PolicyTranslateRootSm::"};
inline constexpr LinesOf kDevice{"void VelaPolicyMonitor::PolicyTranslatePerDeviceSm::"};
inline constexpr LinesOf kVrf{"void VelaPolicyMonitor::PolicyTranslatePerVrfSm::"};
inline constexpr LinesOf kRule{"void VelaPolicyMonitor::PolicyTranslatePerRuleSm::"};
inline constexpr LinesOf kOrigin{"void VelaPolicyMonitor::PolicyTranslatePerOriginSm::"};
inline constexpr LinesOf kMatch{"void VelaPolicyMonitor::PolicyTranslateMatchSm::"};

inline Lines joined(std::initializer_list<Lines> parts) {
  Lines all;
  for (const Lines& part : parts) {
    all.insert(all.end(), part.begin(), part.end());
  }
  return all;
}

/// The keys of a collection, or the members of a set, as text and sorted.
template <class Collection>
Lines keys(const Collection& collection) {
  Lines all;
  for (const auto& each : collection) {
    if constexpr (requires { each.second; }) {
      all.push_back(Kel::textOf(each.first));
    } else {
      all.push_back(Kel::textOf(each));
    }
  }
  std::sort(all.begin(), all.end());
  return all;
}

/// The key under which an observer was told of a change.
template <class Key>
const Key& keyOf(const void* key) {
  return *static_cast<const Key*>(key);
}

/// How many objects of a type there are at this moment.
template <class T>
std::size_t live() {
  return Kel::slabOf<T>().live();
}

class PolicyWorld : public testing::Test {
 protected:
  PolicyWorld() {
    Kel::System::clockIs([this] { return now; });
  }
  ~PolicyWorld() override { Kel::System::clockIs({}); }

  Ptr<PolicyTranslateRootSm> makeRoot() const {
    return VelaPolicyMonitor::policyTranslateRootSmFactory(sourceV1, sourceV2, status);
  }
  /// The entities of version 1 on one path; made where missing.
  Ptr<VelaL3::VelaPolicySetConfig> setV1(std::string_view device = "fw1") const {
    return sourceV1->policySetIs(device);
  }
  Ptr<VelaL3::VelaPolicyConfig> policyV1(std::string_view vrf = "red") const {
    return setV1()->policyIs(VrfName(vrf));
  }
  Ptr<VelaL3::VelaRuleConfig> ruleV1(std::uint32_t priority = 20000) const {
    return policyV1()->ruleIs(p1(priority));
  }
  Ptr<VelaL3::VelaRuleOriginConfig> originV1(std::string_view name = "web") const {
    return ruleV1()->originIs(name);
  }
  Ptr<VelaL3::VelaMatchConfig> matchV1() const { return originV1()->matchIs(); }
  /// The entities of version 2 on one path; null where missing.
  Ptr<VelaL3V2::VelaPolicySetConfig> setV2(std::string_view device = "fw1") const {
    return sourceV2->policySet(device);
  }
  Ptr<VelaL3V2::VelaPolicyConfig> policyV2(std::string_view netVrf = "net-red") const {
    return setV2() ? setV2()->policy(netVrf) : nullptr;
  }
  Ptr<VelaL3V2::VelaRuleConfig> ruleV2(std::uint32_t priority = 20000) const {
    return policyV2() ? policyV2()->rule(p2(priority)) : nullptr;
  }
  Ptr<VelaL3V2::VelaRuleOriginConfig> originV2(std::string_view name = "web") const {
    return ruleV2() ? ruleV2()->origin(name) : nullptr;
  }
  Ptr<VelaL3V2::VelaMatchConfig> matchV2() const {
    return originV2() ? originV2()->match() : nullptr;
  }
  /// The record of fw1 gives `vrf` a network VRF name.
  void map(std::string_view vrf = "red", std::string_view netVrf = "net-red") const {
    record->netVrfNameByVrfIs(vrf, netVrf);
  }

  void note(const std::string& what) { journal.push_back(what); }
  /// What was noted since the last call.
  Lines noted() { return std::exchange(journal, {}); }

  Kel::Seconds now = 1000;
  Ptr<VelaL3::VelaPolicySourceConfig> sourceV1 =
      VelaL3::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  Ptr<VelaL3V2::VelaPolicySourceConfig> sourceV2 =
      VelaL3V2::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  Ptr<VelaPolicyMonitor::Status> status = VelaPolicyMonitor::Status::StatusIs();
  Ptr<DevicePolicyList> record = status->devicePolicyListIs("fw1");
  Lines journal;
};

}  // namespace PolicyTests
