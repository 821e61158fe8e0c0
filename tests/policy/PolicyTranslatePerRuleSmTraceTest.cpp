#include "policy/PolicyWorld.h"

namespace PolicyTests {
namespace {

/// Every line that the per-rule machine writes, branch by branch, byte for byte, on both
/// facilities.
class PolicyTranslatePerRuleTrace : public PolicyWorld {
 protected:
  Ptr<PolicyTranslatePerRuleSm> make() const {
    return VelaPolicyMonitor::policyTranslatePerRuleSmFactory(p1(20000), v1, v2, nullptr);
  }
  /// What an origin without match and modifiers writes while it is made, and when it goes.
  static Lines originMade(const std::string& name) {
    return {kOrigin(8, "handleInitialized() policy: " + name),
            kOrigin(8, "handleModifier() policy: " + name),
            kOrigin(7, "handleModifier() return"),
            kOrigin(8, "handleMatch() policy: " + name),
            kOrigin(7, "handleMatch() return"),
            kOrigin(8, "handleTags() policy: " + name),
            kOrigin(7, "handleTags() return"),
            kOrigin(8, "handleAction() policy: " + name + " action: forward"),
            kOrigin(7, "handleAction() return"),
            kOrigin(8, "handleLog() policy: " + name + " policyV1Log: false"),
            kOrigin(7, "handleLog() return"),
            kOrigin(7, "handleInitialized() return")};
  }
  static Lines originCleanedUp(const std::string& name) {
    return {kOrigin(8, "cleanup() policy: " + name), kOrigin(7, "cleanup() return")};
  }

  Ptr<VelaL3::VelaRuleConfig> v1 = ruleV1();
  Ptr<VelaL3V2::VelaRuleConfig> v2 =
      sourceV2->policySetIs(Vela::DeviceName("fw1"))->policyIs("net-red")->ruleIs(p2(20000));
};

TEST_F(PolicyTranslatePerRuleTrace, TheLinesAreMadeOfTheWholeSignatureAndThePieces) {
  const auto sm = make();
  BothTraces traces;
  sm->handleOrigin("gone");
  const std::string form =
      "void VelaPolicyMonitor::PolicyTranslatePerRuleSm::handleOrigin(const String&)";
  EXPECT_EQ(traces.take(),
            (Lines{"8 " + form + " Rule priority: 20000 policy: gone",
                   "6 " + form + " priority: 20000 remove policy gone", "7 " + form + "return"}));
}

TEST_F(PolicyTranslatePerRuleTrace, OfAWalkThatDeletesOneOriginAndAddsOne) {
  v2->originIs("c");
  v1->originIs("a");
  BothTraces traces;
  const auto sm = make();
  EXPECT_EQ(traces.take(),
            joined({{kRule(8, "handleInitialized() Rule priority: 20000"),
                     kRule(8, "handleOrigin() Rule priority: 20000"),
                     kRule(6, "handleOrigin() priority: 20000 remove policy c"),
                     kRule(8, "handleOrigin(const String&) Rule priority: 20000 policy: a"),
                     kRule(6, "handleOrigin(const String&) priority: 20000 add policy a")},
                    originMade("a"),
                    {kRule(7, "handleOrigin(const String&)return"),
                     kRule(7, "handleOrigin()return"), kRule(7, "handleInitialized()return")}}));
}

TEST_F(PolicyTranslatePerRuleTrace, OfAnOriginThatIsThereAlready) {
  v1->originIs("a");
  const auto sm = make();
  BothTraces traces;
  sm->handleOrigin("a");
  EXPECT_EQ(traces.take(),
            (Lines{kRule(8, "handleOrigin(const String&) Rule priority: 20000 policy: a"),
                   kRule(6, "handleOrigin(const String&) priority: 20000 add policy a"),
                   kRule(7, "handleOrigin(const String&)return")}));
}

TEST_F(PolicyTranslatePerRuleTrace, OfRemovingAnOrigin) {
  v1->originIs("a");
  const auto sm = make();
  BothTraces traces;
  v1->originDel("a");
  EXPECT_EQ(traces.take(),
            joined({{kRule(8, "handleOrigin(const String&) Rule priority: 20000 policy: a"),
                     kRule(6, "handleOrigin(const String&) priority: 20000 remove policy a")},
                    originCleanedUp("a"),
                    {kRule(7, "handleOrigin(const String&)return")}}));
}

TEST_F(PolicyTranslatePerRuleTrace, OfAnOriginBuiltFromOtherObjectsEndsAtTheDecision) {
  v1->originIs("a");
  const auto sm = make();
  v2->originDel("a");
  BothTraces traces;
  EXPECT_THROW(sm->handleOrigin("a"), Kel::ReinstantiationException);
  EXPECT_EQ(traces.take(),
            (Lines{kRule(8, "handleOrigin(const String&) Rule priority: 20000 policy: a"),
                   kRule(6, "handleOrigin(const String&) priority: 20000 add policy a")}));
}

TEST_F(PolicyTranslatePerRuleTrace, OfCleanUpHasAnExitLine) {
  v1->originIs("a");
  const auto sm = make();
  BothTraces traces;
  sm->cleanup();
  EXPECT_EQ(traces.take(), joined({{kRule(8, "cleanup() Rule priority: 20000")},
                                   originCleanedUp("a"),
                                   {kRule(7, "cleanup()return")}}));
}

}  // namespace
}  // namespace PolicyTests
