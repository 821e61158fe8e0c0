#include <array>
#include <cstdint>
#include <set>

#include "policy/PolicyWorld.h"

namespace PolicyTests {
namespace {

/// Every notification id there can be, delivered to every machine of the tree.
class PolicyDispatch : public PolicyWorld {
 protected:
  PolicyDispatch() {
    map();
    originV1();
    matchV1();
    root = makeRoot();
    perDevice = root->perDeviceSm("fw1");
    perVrf = perDevice->perVrfSm(VrfName("red"));
    perRule = perVrf->perRuleSm(p1(20000));
    perOrigin = perRule->perOriginSm("web");
    match = perOrigin->matchSm();
  }

  /// The ids that make `machine`, which alone is switched on, write a trace line. `keyOfId` gives
  /// the key for the ids that are reacted to; all others come with zeros for a key, so that a
  /// reaction that is not expected shows as its id.
  template <class Sm, class Entity>
  std::set<int> idsThatAct(const Ptr<Sm>& machine, const Entity& entity,
                           const std::function<const void*(AttrId)>& keyOfId) {
    root->hasNotificationActiveIs(false);
    machine->hasNotificationActiveIs(true);
    static constexpr std::array<std::uint64_t, 8> kZeros{};
    TestSupport::TraceCapture lines;
    std::set<int> acted;
    for (int id = -32768; id <= 32767; ++id) {
      const auto narrow = static_cast<AttrId>(id);
      perVrf->cookie()->updatedIs(true);
      const void* const key = keyOfId(narrow);
      entity.publisher().publish(narrow, key == nullptr ? kZeros.data() : key);
      if (!lines.take().empty()) {
        acted.insert(id);
      }
    }
    return acted;
  }

  Ptr<PolicyTranslateRootSm> root;
  Ptr<PolicyTranslatePerDeviceSm> perDevice;
  Ptr<PolicyTranslatePerVrfSm> perVrf;
  Ptr<PolicyTranslatePerRuleSm> perRule;
  Ptr<PolicyTranslatePerOriginSm> perOrigin;
  Ptr<PolicyTranslateMatchSm> match;

  const Kel::String device = "fw1";
  const Kel::String vrfText = "red";
  const VrfName vrf = VrfName("red");
  const Kel::String origin = "web";
  const VelaL3::VelaPriority priority = p1(20000);
  const VelaL3::VelaPolicyModifier modifier = VelaL3::VelaPolicyModifier::stateless;
  const IpGenPrefix prefix = IpGenPrefix("10.0.0.0/8");
  const VelaL3::VelaIpRange range{IpGenAddr("10.0.0.1"), IpGenAddr("10.0.0.2")};
  const IpProto protocol = 6;
  const VelaL3::VelaL4App app{443, 6};
  const VelaL3::VelaL4AppRange appRange{1, 2, 6};
};

TEST_F(PolicyDispatch, TheRootReactsToThePolicySetsOnly) {
  EXPECT_EQ(idsThatAct(root, *sourceV1, [&](AttrId id) { return id == 258 ? &device : nullptr; }),
            (std::set<int>{258}));
}

TEST_F(PolicyDispatch, ThePerDeviceMachineReactsToPoliciesOnly) {
  EXPECT_EQ(idsThatAct(perDevice, *setV1(), [&](AttrId id) { return id == 259 ? &vrf : nullptr; }),
            (std::set<int>{259}));
}

TEST_F(PolicyDispatch, ThePerDeviceMachineReactsToTheMappingOfItsRecordOnly) {
  EXPECT_EQ(
      idsThatAct(perDevice, *record, [&](AttrId id) { return id == 259 ? &vrfText : nullptr; }),
      (std::set<int>{259}));
}

TEST_F(PolicyDispatch, ThePerVrfMachineReactsToRulesAndToTheSignal) {
  EXPECT_EQ(
      idsThatAct(perVrf, *policyV1(), [&](AttrId id) { return id == 259 ? &priority : nullptr; }),
      (std::set<int>{259, 261}));
}

TEST_F(PolicyDispatch, ThePerRuleMachineReactsToOriginsOnly) {
  EXPECT_EQ(
      idsThatAct(perRule, *ruleV1(), [&](AttrId id) { return id == 261 ? &origin : nullptr; }),
      (std::set<int>{261}));
}

TEST_F(PolicyDispatch, ThePerOriginMachineReactsToFiveAttributes) {
  EXPECT_EQ(idsThatAct(perOrigin, *originV1(),
                       [&](AttrId id) { return id == 261 ? &modifier : nullptr; }),
            (std::set<int>{259, 261, 263, 264, 265}));
}

TEST_F(PolicyDispatch, TheMatchMachineReactsToSevenSets) {
  const std::function<const void*(AttrId)> keyOfId = [&](AttrId id) -> const void* {
    switch (id) {
      case 258:
      case 260:
        return &prefix;
      case 259:
      case 261:
        return &range;
      case 262:
        return &protocol;
      case 265:
        return &app;
      case 266:
        return &appRange;
      default:
        return nullptr;
    }
  };
  EXPECT_EQ(idsThatAct(match, *matchV1(), keyOfId),
            (std::set<int>{258, 259, 260, 261, 262, 265, 266}));
}

TEST_F(PolicyDispatch, TheEntitiesHaveTheIdsThatTheTablesAreWrittenFor) {
  EXPECT_EQ(VelaL3::VelaPolicySourceConfig::policySetAttr.id, 258);
  EXPECT_EQ(VelaL3::VelaPolicySetConfig::policyAttr.id, 259);
  EXPECT_EQ(DevicePolicyList::netVrfNameByVrfAttr.id, 259);
  EXPECT_EQ(VelaL3::VelaPolicyConfig::ruleAttr.id, 259);
  EXPECT_EQ(VelaL3::VelaPolicyConfig::timestampAttr.id, 261);
  EXPECT_EQ(VelaL3::VelaRuleConfig::originAttr.id, 261);
  EXPECT_EQ(VelaL3::VelaRuleOriginConfig::tagsAttr.id, 259);
  EXPECT_EQ(VelaL3::VelaRuleOriginConfig::policyModifierSetAttr.id, 261);
  EXPECT_EQ(VelaL3::VelaRuleOriginConfig::matchAttr.id, 263);
  EXPECT_EQ(VelaL3::VelaRuleOriginConfig::actionAttr.id, 264);
  EXPECT_EQ(VelaL3::VelaRuleOriginConfig::logAttr.id, 265);
  EXPECT_EQ(VelaL3::VelaMatchConfig::srcIpAttr.id, 258);
  EXPECT_EQ(VelaL3::VelaMatchConfig::srcIpRangeAttr.id, 259);
  EXPECT_EQ(VelaL3::VelaMatchConfig::dstIpAttr.id, 260);
  EXPECT_EQ(VelaL3::VelaMatchConfig::dstIpRangeAttr.id, 261);
  EXPECT_EQ(VelaL3::VelaMatchConfig::l3AppAttr.id, 262);
  EXPECT_EQ(VelaL3::VelaMatchConfig::dstL4AppAttr.id, 265);
  EXPECT_EQ(VelaL3::VelaMatchConfig::dstL4AppRangeAttr.id, 266);
}

TEST_F(PolicyDispatch, AMarkedMachineIsDeafAndItsChildrenAreNot) {
  perRule->kelDoZombieReactors(true);
  BothTraces traces;
  ruleV1()->originIs("mail");
  EXPECT_EQ(traces.take(), Lines{});
  originV1()->tagsIs("t");
  EXPECT_EQ(originV2()->tags(), "t");
  perRule->kelDoZombieReactors(false);
  EXPECT_FALSE(ruleV2()->origin("mail")) << "what was missed is not delivered again";
  ruleV1()->originIs("ftp");
  EXPECT_TRUE(ruleV2()->origin("ftp"));
}

TEST_F(PolicyDispatch, ConvergenceFlagsWrittenToTheRecordCauseNothing) {
  BothTraces traces;
  record->policyConvergeIs(true);
  record->serviceDeviceConvergeIs(true);
  EXPECT_EQ(traces.take(), Lines{});
}

TEST_F(PolicyDispatch, DeletingAllKeysOfACollectionIsDeliveredKeyByKey) {
  policyV1()->ruleIs(p1(15000));
  ruleV1()->originIs("mail");
  matchV1()->srcIpIs(prefix);
  matchV1()->srcIpIs(IpGenPrefix("11.0.0.0/8"));
  matchV1()->srcIpDelAll();
  EXPECT_TRUE(matchV2()->srcIp().empty());
  ruleV1()->originDelAll();
  EXPECT_TRUE(ruleV2()->origin().empty());
  policyV1()->ruleDelAll();
  EXPECT_TRUE(policyV2()->rule().empty());
  record->netVrfNameByVrfDelAll();
  EXPECT_TRUE(setV2()->policy().empty());
  sourceV1->policySetDelAll();
  EXPECT_TRUE(sourceV2->policySet().empty());
}

TEST_F(PolicyDispatch, AMachineSwitchedOffSilencesItsWholeSubtreeAndOnAgainReArmsIt) {
  root->hasNotificationActiveIs(false);
  originV1()->tagsIs("missed");
  matchV1()->l3AppIs(1);
  EXPECT_EQ(originV2()->tags(), "");
  EXPECT_TRUE(matchV2()->l3App().empty());
  EXPECT_EQ(matchV1()->publisher().subscriberCount(), 0U);
  root->hasNotificationActiveIs(true);
  EXPECT_EQ(originV2()->tags(), "") << "nothing is replayed";
  originV1()->logIs(true);
  matchV1()->l3AppIs(2);
  EXPECT_TRUE(originV2()->logEnabled());
  EXPECT_EQ(keys(matchV2()->l3App()), Lines{"2"});
}

}  // namespace
}  // namespace PolicyTests
