#include "policy/PolicyWorld.h"

namespace PolicyTests {
namespace {

/// Every line that the per-origin machine writes, branch by branch, byte for byte, on both
/// facilities.
class PolicyTranslatePerOriginTrace : public PolicyWorld {
 protected:
  void make() { sm = VelaPolicyMonitor::policyTranslatePerOriginSmFactory("web", v1, v2, nullptr); }

  Ptr<VelaL3::VelaRuleOriginConfig> v1 = originV1();
  Ptr<VelaL3V2::VelaRuleOriginConfig> v2 = sourceV2->policySetIs(Vela::DeviceName("fw1"))
                                               ->policyIs("net-red")
                                               ->ruleIs(p2(20000))
                                               ->originIs("web");
  Ptr<PolicyTranslatePerOriginSm> sm;
};

TEST_F(PolicyTranslatePerOriginTrace, TheLinesAreMadeOfTheWholeSignatureAndThePieces) {
  make();
  BothTraces traces;
  sm->handleTags();
  EXPECT_EQ(traces.take(),
            (Lines{"8 void VelaPolicyMonitor::PolicyTranslatePerOriginSm::handleTags() policy: web",
                   "7 void VelaPolicyMonitor::PolicyTranslatePerOriginSm::handleTags() return"}));
}

TEST_F(PolicyTranslatePerOriginTrace, OfAnInitializationWithoutMatchHasBothLinesOfTheMatchHandler) {
  v1->actionIs(VelaL3::VelaAction::drop);
  v1->logIs(true);
  BothTraces traces;
  make();
  EXPECT_EQ(
      traces.take(),
      (Lines{kOrigin(8, "handleInitialized() policy: web"),
             kOrigin(8, "handleModifier() policy: web"), kOrigin(7, "handleModifier() return"),
             kOrigin(8, "handleMatch() policy: web"), kOrigin(7, "handleMatch() return"),
             kOrigin(8, "handleTags() policy: web"), kOrigin(7, "handleTags() return"),
             kOrigin(8, "handleAction() policy: web action: drop"),
             kOrigin(7, "handleAction() return"),
             kOrigin(8, "handleLog() policy: web policyV1Log: true"),
             kOrigin(7, "handleLog() return"), kOrigin(7, "handleInitialized() return")}));
}

TEST_F(PolicyTranslatePerOriginTrace, OfAMatchThatComesItsMachinesLinesLieBetween) {
  make();
  BothTraces traces;
  v1->matchIs();
  const Lines lines = traces.take();
  ASSERT_EQ(lines.size(), 18U);
  EXPECT_EQ(lines.front(), kOrigin(8, "handleMatch() policy: web"));
  EXPECT_EQ(lines[1], kMatch(8, "handleInitialized()"));
  EXPECT_EQ(lines[16], kMatch(7, "handleInitialized() return"));
  EXPECT_EQ(lines.back(), kOrigin(7, "handleMatch() return"));
}

TEST_F(PolicyTranslatePerOriginTrace, OfAMatchThatIsThereAlreadyAndOfOneThatHasGone) {
  v1->matchIs();
  make();
  BothTraces traces;
  sm->handleMatch();
  v1->matchDel();
  EXPECT_EQ(traces.take(),
            (Lines{kOrigin(8, "handleMatch() policy: web"), kOrigin(7, "handleMatch() return"),
                   kOrigin(8, "handleMatch() policy: web"), kOrigin(7, "handleMatch() return")}));
}

TEST_F(PolicyTranslatePerOriginTrace, OfTheLogFlagPrintsTheVersionOneFlag) {
  make();
  BothTraces traces;
  v1->logIs(true);
  v1->logIs(false);
  EXPECT_EQ(traces.take(), (Lines{kOrigin(8, "handleLog() policy: web policyV1Log: true"),
                                  kOrigin(7, "handleLog() return"),
                                  kOrigin(8, "handleLog() policy: web policyV1Log: false"),
                                  kOrigin(7, "handleLog() return")}));
}

TEST_F(PolicyTranslatePerOriginTrace, OfTheActionPrintsItsName) {
  make();
  BothTraces traces;
  v1->actionIs(VelaL3::VelaAction::redirect);
  EXPECT_EQ(traces.take(), (Lines{kOrigin(8, "handleAction() policy: web action: redirect"),
                                  kOrigin(7, "handleAction() return")}));
}

TEST_F(PolicyTranslatePerOriginTrace, OfAModifierThatComesAndGoes) {
  make();
  BothTraces traces;
  v1->policyModifierSetIs(VelaL3::VelaPolicyModifier::stateless);
  v1->policyModifierSetDel(VelaL3::VelaPolicyModifier::stateless);
  const std::string form = "handleModifier(VelaL3::VelaPolicyModifier)";
  EXPECT_EQ(traces.take(), (Lines{kOrigin(8, form + " policy: web modifier: stateless"),
                                  kOrigin(6, form + " policy: web add modifier stateless"),
                                  kOrigin(7, form + " return"),
                                  kOrigin(8, form + " policy: web modifier: stateless"),
                                  kOrigin(6, form + " policy: web remove modifier stateless"),
                                  kOrigin(7, form + " return")}));
}

TEST_F(PolicyTranslatePerOriginTrace, OfAWalkThatAddsHasNoLineForTheAddition) {
  make();
  sm->hasNotificationActiveIs(false);
  v1->policyModifierSetIs(VelaL3::VelaPolicyModifier::symmetric);
  BothTraces traces;
  sm->handleModifier();
  EXPECT_EQ(traces.take(), (Lines{kOrigin(8, "handleModifier() policy: web"),
                                  kOrigin(7, "handleModifier() return")}));
}

TEST_F(PolicyTranslatePerOriginTrace, OfCleanUpWithAndWithoutMatch) {
  v1->matchIs();
  make();
  BothTraces traces;
  sm->cleanup();
  sm->cleanup();
  EXPECT_EQ(traces.take(),
            (Lines{kOrigin(8, "cleanup() policy: web"), kOrigin(7, "cleanup() return"),
                   kOrigin(8, "cleanup() policy: web"), kOrigin(7, "cleanup() return")}));
}

TEST_F(PolicyTranslatePerOriginTrace, OfAnExceptionOfAnObserverIsTheEntryLineAlone) {
  make();
  const Observer watch(*v2, [](AttrId, const void*) { throw Kel::Exception("from outside"); });
  BothTraces traces;
  EXPECT_THROW(v1->tagsIs("t"), Kel::Exception);
  EXPECT_EQ(traces.take(), Lines{kOrigin(8, "handleTags() policy: web")});
}

}  // namespace
}  // namespace PolicyTests
