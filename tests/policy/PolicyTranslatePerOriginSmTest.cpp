#include "policy/PolicyTranslatePerOriginSm.h"
#include "policy/PolicyWorld.h"

namespace PolicyTests {
namespace {

/// A machine between the origins of one name, without the levels above.
class PolicyTranslatePerOrigin : public PolicyWorld {
 protected:
  void make() { sm = VelaPolicyMonitor::policyTranslatePerOriginSmFactory("web", v1, v2, cookie); }
  /// Whether the cookie was marked since the last call.
  bool marked() const {
    const bool was = cookie->updated();
    cookie->updatedIs(false);
    return was;
  }
  /// Notes the id of every change of the version-2 origin.
  Observer noteChanges() {
    return Observer(*v2, [this](AttrId id, const void*) { note(std::to_string(id)); });
  }

  Ptr<VelaL3::VelaRuleOriginConfig> v1 = originV1();
  Ptr<VelaL3V2::VelaRuleOriginConfig> v2 = sourceV2->policySetIs(Vela::DeviceName("fw1"))
                                               ->policyIs("net-red")
                                               ->ruleIs(p2(20000))
                                               ->originIs("web");
  Ptr<UpdateCookie> cookie = VelaPolicyMonitor::updateCookieFactory();
  Ptr<PolicyTranslatePerOriginSm> sm;
};
using PolicyTranslatePerOriginDeathTest = PolicyTranslatePerOrigin;
using OriginV2 = VelaL3V2::VelaRuleOriginConfig;

TEST_F(PolicyTranslatePerOrigin, CopiesTagsActionLogFlagModifiersAndMatch) {
  v1->tagsIs("a,b");
  v1->actionIs(VelaL3::VelaAction::redirect);
  v1->logIs(true);
  v1->policyModifierSetIs(VelaL3::VelaPolicyModifier::stateless);
  v1->matchIs()->l3AppIs(17);
  make();
  EXPECT_EQ(v2->tags(), "a,b");
  EXPECT_EQ(v2->action(), VelaL3V2::VelaAction::redirect);
  EXPECT_TRUE(v2->logEnabled());
  EXPECT_EQ(keys(v2->policyModifierSet()), Lines{"stateless"});
  EXPECT_EQ(keys(v2->match()->l3App()), Lines{"17"});
}

TEST_F(PolicyTranslatePerOrigin, WritesModifiersMatchTagsActionAndLogFlagInThisOrder) {
  v1->policyModifierSetIs(VelaL3::VelaPolicyModifier::symmetric);
  v1->matchIs();
  const Observer watch = noteChanges();
  make();
  const auto id = [](auto attribute) { return std::to_string(attribute.id); };
  EXPECT_EQ(noted(), (Lines{id(OriginV2::policyModifierSetAttr), id(OriginV2::matchAttr),
                            id(OriginV2::tagsAttr), id(OriginV2::actionAttr),
                            id(OriginV2::logEnabledAttr)}));
}

TEST_F(PolicyTranslatePerOrigin, EveryChangeIsFollowedAndMarks) {
  make();
  EXPECT_TRUE(marked());
  v1->tagsIs("t");
  EXPECT_EQ(v2->tags(), "t");
  EXPECT_TRUE(marked());
  v1->actionIs(VelaL3::VelaAction::drop);
  EXPECT_EQ(v2->action(), VelaL3V2::VelaAction::drop);
  EXPECT_TRUE(marked());
  v1->logIs(true);
  EXPECT_TRUE(v2->logEnabled());
  EXPECT_TRUE(marked());
}

TEST_F(PolicyTranslatePerOrigin, EqualTagsAreWrittenAgainAndMark) {
  v1->tagsIs("same");
  make();
  marked();
  const Observer watch = noteChanges();
  v1->tagsIs("same");
  EXPECT_EQ(noted(), Lines{std::to_string(OriginV2::tagsAttr.id)});
  EXPECT_TRUE(marked());
}

TEST_F(PolicyTranslatePerOrigin, NothingIsHandledWhileNotInitialized) {
  make();
  sm->cleanup();
  marked();
  const Observer watch = noteChanges();
  BothTraces traces;
  v1->actionIs(VelaL3::VelaAction::drop);
  v1->tagsIs("t");
  v1->logIs(true);
  v1->matchIs();
  v1->policyModifierSetIs(VelaL3::VelaPolicyModifier::stateless);
  sm->handleModifier();
  EXPECT_EQ(noted(), Lines{});
  EXPECT_EQ(traces.take(), Lines{});
  EXPECT_FALSE(marked());
  EXPECT_EQ(v2->action(), VelaL3V2::VelaAction::forward);
}

TEST_F(PolicyTranslatePerOrigin, DescriptionAndOwnerAreNotReactedTo) {
  make();
  marked();
  const Observer watch = noteChanges();
  v1->descriptionIs("for people");
  v1->ownerIs("somebody");
  EXPECT_EQ(noted(), Lines{});
  EXPECT_FALSE(marked());
}

TEST_F(PolicyTranslatePerOrigin, AMatchThatComesGetsItsEntryBeforeItsMachine) {
  make();
  EXPECT_FALSE(sm->matchSm());
  EXPECT_FALSE(v2->match());
  const Observer watch(
      *v2, [&](AttrId, const void*) { note(sm->matchSm() ? "machine" : "no machine"); });
  v1->matchIs();
  EXPECT_EQ(noted(), Lines{"no machine"});
  EXPECT_EQ(sm->matchSm()->matchV1(), v1->match());
  EXPECT_EQ(sm->matchSm()->matchV2(), v2->match());
}

TEST_F(PolicyTranslatePerOrigin, AMatchHandlerDoesNotMarkByItself) {
  v1->matchIs();
  make();
  marked();
  sm->handleMatch();
  EXPECT_FALSE(marked());
}

TEST_F(PolicyTranslatePerOrigin, AVersionOneMatchThatGoesLeavesTheOtherInPlaceUntilCleanUp) {
  v1->matchIs()->srcIpIs(IpGenPrefix("10.0.0.0/8"));
  make();
  const auto machine = sm->matchSm();
  v1->matchDel();
  EXPECT_EQ(keys(v2->match()->srcIp()), Lines{"10.0.0.0/8"});
  EXPECT_EQ(sm->matchSm(), machine);
  sm->cleanup();
  EXPECT_FALSE(v2->match());
  EXPECT_FALSE(sm->matchSm());
}

TEST_F(PolicyTranslatePerOrigin, AnotherMatchObjectGetsANewMachineOnTheSameEntry) {
  v1->matchIs()->srcIpIs(IpGenPrefix("10.0.0.0/8"));
  make();
  const auto before = sm->matchSm().get();
  const auto entry = v2->match();
  v1->matchDel();
  v1->matchIs();
  EXPECT_NE(sm->matchSm().get(), before);
  EXPECT_EQ(sm->matchSm()->matchV1(), v1->match());
  EXPECT_EQ(v2->match(), entry);
  EXPECT_TRUE(entry->srcIp().empty()) << "the new machine reconciles the old contents";
}

TEST_F(PolicyTranslatePerOrigin, TheSameMatchDeliveredAgainKeepsItsMachine) {
  v1->matchIs();
  make();
  const auto before = sm->matchSm();
  v1->publisher().publish(VelaL3::VelaRuleOriginConfig::matchAttr.id);
  sm->handleMatch();
  EXPECT_EQ(sm->matchSm(), before);
  EXPECT_EQ(sm->matchSmIs(v1->match(), v2->match(), cookie), before);
}

TEST_F(PolicyTranslatePerOrigin, AMatchMachineIsReplacedWhenAnyOfItsThreeObjectsDiffers) {
  v1->matchIs();
  make();
  const auto other = ruleV1(15000)->originIs("x")->matchIs();
  auto before = sm->matchSm();
  EXPECT_NE(sm->matchSmIs(other, v2->match(), cookie), before);
  before = sm->matchSm();
  EXPECT_NE(sm->matchSmIs(other, v2->match(), nullptr), before);
  EXPECT_FALSE(sm->matchSm()->cookie());
  EXPECT_TRUE(sm->matchSm()->hasNotificationActive());
}

TEST_F(PolicyTranslatePerOrigin, AReplacedMatchMachineIsReleasedWithoutBeingSwitchedOff) {
  v1->matchIs();
  make();
  const auto held = sm->matchSm();
  v1->matchDel();
  v1->matchIs();
  EXPECT_NE(sm->matchSm(), held);
  EXPECT_TRUE(held->hasNotificationActive());
}

TEST_F(PolicyTranslatePerOrigin, ADeletedMatchMachineIsSwitchedOff) {
  v1->matchIs();
  make();
  const auto held = sm->matchSm();
  sm->matchSmDel();
  EXPECT_FALSE(sm->matchSm());
  EXPECT_FALSE(held->hasNotificationActive());
  EXPECT_TRUE(v2->match());
  sm->matchSmDel();
}

TEST_F(PolicyTranslatePerOrigin, CleanUpDeletesTheMatchAlsoOfAnOriginThatNeverHadOne) {
  make();
  v2->matchIs();
  sm->cleanup();
  EXPECT_FALSE(v2->match());
  EXPECT_FALSE(sm->initialized());
}

TEST_F(PolicyTranslatePerOrigin, CleanUpLeavesTheOtherAttributesAndDoesNotMark) {
  v1->tagsIs("t");
  v1->logIs(true);
  v1->actionIs(VelaL3::VelaAction::drop);
  v1->policyModifierSetIs(VelaL3::VelaPolicyModifier::stateless);
  make();
  marked();
  sm->cleanup();
  sm->cleanup();
  EXPECT_EQ(v2->tags(), "t");
  EXPECT_TRUE(v2->logEnabled());
  EXPECT_EQ(v2->action(), VelaL3V2::VelaAction::drop);
  EXPECT_EQ(keys(v2->policyModifierSet()), Lines{"stateless"});
  EXPECT_FALSE(marked());
}

TEST_F(PolicyTranslatePerOrigin, WithoutVersionOneItWritesNothing) {
  const Observer watch = noteChanges();
  sm = VelaPolicyMonitor::policyTranslatePerOriginSmFactory("web", nullptr, v2, cookie);
  EXPECT_TRUE(sm->initialized());
  EXPECT_EQ(noted(), Lines{});
}

TEST_F(PolicyTranslatePerOrigin, WithoutVersionOneEveryModifierGoes) {
  v2->policyModifierSetIs(VelaL3V2::VelaPolicyModifier::stateless);
  sm = VelaPolicyMonitor::policyTranslatePerOriginSmFactory("web", nullptr, v2, cookie);
  EXPECT_EQ(keys(v2->policyModifierSet()), Lines{});
  v2->policyModifierSetIs(VelaL3V2::VelaPolicyModifier::symmetric);
  sm->handleModifier(VelaL3::VelaPolicyModifier::symmetric);
  EXPECT_EQ(keys(v2->policyModifierSet()), Lines{});
}

TEST_F(PolicyTranslatePerOrigin, WithoutVersionTwoAndVersionOneCleansUpWithoutHarm) {
  sm = VelaPolicyMonitor::policyTranslatePerOriginSmFactory("web", nullptr, nullptr, nullptr);
  sm->handleModifier(VelaL3::VelaPolicyModifier::symmetric);
  sm->cleanup();
  EXPECT_FALSE(sm->initialized());
}

TEST_F(PolicyTranslatePerOriginDeathTest, AnActionOutsideTheEnumerationStopsTheProcess) {
  make();
  EXPECT_DEATH(v1->actionIs(VelaL3::VelaAction{3}),
               "VelaL3V2::VelaAction VelaPolicyMonitor::toVelaL3V2Action\\(VelaL3::VelaAction\\): "
               "assertion \"false\" failed: Should not be here");
}

TEST_F(PolicyTranslatePerOriginDeathTest, WithoutVersionTwoAWriteStopsTheProcess) {
  EXPECT_DEATH(VelaPolicyMonitor::policyTranslatePerOriginSmFactory("web", v1, nullptr, cookie),
               "assertion \"entity != nullptr\" failed: .*built without");
}

}  // namespace
}  // namespace PolicyTests
