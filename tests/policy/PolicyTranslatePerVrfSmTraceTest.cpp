#include "policy/PolicyWorld.h"

namespace PolicyTests {
namespace {

/// Every line that the per-VRF machine writes, branch by branch, byte for byte, on both facilities.
class PolicyTranslatePerVrfTrace : public PolicyWorld {
 protected:
  Ptr<PolicyTranslatePerVrfSm> make() const {
    return VelaPolicyMonitor::policyTranslatePerVrfSmFactory(VrfName("red"), "net-red", v1, v2);
  }
  /// What a rule without origins writes while it is made, and when it goes.
  const Lines emptyRuleMade{kRule(8, "handleInitialized() Rule priority: 20000"),
                            kRule(8, "handleOrigin() Rule priority: 20000"),
                            kRule(7, "handleOrigin()return"),
                            kRule(7, "handleInitialized()return")};
  const Lines ruleCleanedUp{kRule(8, "cleanup() Rule priority: 20000"),
                            kRule(7, "cleanup()return")};

  Ptr<VelaL3::VelaPolicyConfig> v1 = policyV1();
  Ptr<VelaL3V2::VelaPolicyConfig> v2 =
      sourceV2->policySetIs(Vela::DeviceName("fw1"))->policyIs("net-red");
};

TEST_F(PolicyTranslatePerVrfTrace, TheLinesAreMadeOfTheWholeSignatureAndThePieces) {
  const auto sm = make();
  BothTraces traces;
  sm->handleRule(p1(20000));
  const std::string form =
      "void VelaPolicyMonitor::PolicyTranslatePerVrfSm::handleRule(VelaL3::VelaPriority)";
  EXPECT_EQ(traces.take(),
            (Lines{"8 " + form + " Rule: red priority: 20000",
                   "6 " + form + " VRF name: red remove priority 20000", "7 " + form + "return"}));
}

TEST_F(PolicyTranslatePerVrfTrace, OfAnEmptyPolicyHasNoUpdate) {
  BothTraces traces;
  const auto sm = make();
  EXPECT_EQ(
      traces.take(),
      (Lines{kVrf(8, "handleInitialized() VRF name: red"), kVrf(8, "handleRule() VRF name: red"),
             kVrf(7, "handleRule()return"), kVrf(7, "handleInitialized()return")}));
}

TEST_F(PolicyTranslatePerVrfTrace, OfAWalkThatDeletesOneRuleAndAddsOneAndStamps) {
  v2->ruleIs(p2(15000));
  v1->ruleIs(p1(20000));
  BothTraces traces;
  const auto sm = make();
  EXPECT_EQ(
      traces.take(),
      joined({{kVrf(8, "handleInitialized() VRF name: red"), kVrf(8, "handleRule() VRF name: red"),
               kVrf(6, "handleRule() VRF name: red remove priority 15000"),
               kVrf(8, "handleRule(VelaL3::VelaPriority) Rule: red priority: 20000"),
               kVrf(6, "handleRule(VelaL3::VelaPriority) VRF name: red add priority 20000")},
              emptyRuleMade,
              {kVrf(7, "handleRule(VelaL3::VelaPriority)return"), kVrf(7, "handleRule()return"),
               kVrf(8, "doUpdate() VRF name: red"), kVrf(7, "handleInitialized()return")}}));
}

TEST_F(PolicyTranslatePerVrfTrace, OfAddingARule) {
  const auto sm = make();
  BothTraces traces;
  v1->ruleIs(p1(20000));
  EXPECT_EQ(traces.take(),
            joined({{kVrf(8, "handleRule(VelaL3::VelaPriority) Rule: red priority: 20000"),
                     kVrf(6, "handleRule(VelaL3::VelaPriority) VRF name: red add priority 20000")},
                    emptyRuleMade,
                    {kVrf(7, "handleRule(VelaL3::VelaPriority)return")}}));
}

TEST_F(PolicyTranslatePerVrfTrace, OfRemovingARule) {
  v1->ruleIs(p1(20000));
  const auto sm = make();
  BothTraces traces;
  v1->ruleDel(p1(20000));
  EXPECT_EQ(
      traces.take(),
      joined({{kVrf(8, "handleRule(VelaL3::VelaPriority) Rule: red priority: 20000"),
               kVrf(6, "handleRule(VelaL3::VelaPriority) VRF name: red remove priority 20000")},
              ruleCleanedUp,
              {kVrf(7, "handleRule(VelaL3::VelaPriority)return")}}));
}

TEST_F(PolicyTranslatePerVrfTrace, OfAPriorityOutOfRangeIsTheEntryLineAlone) {
  const auto sm = make();
  BothTraces traces;
  EXPECT_THROW(sm->handleRule(p1(30001)), Kel::RangeException);
  EXPECT_EQ(traces.take(),
            Lines{kVrf(8, "handleRule(VelaL3::VelaPriority) Rule: red priority: 30001")});
}

TEST_F(PolicyTranslatePerVrfTrace, OfAWalkOverAVersionTwoPriorityOutOfRangeEndsThere) {
  const auto sm = make();
  v2->ruleIs(p2(20000));
  v2->ruleIs(p2(9999));
  BothTraces traces;
  EXPECT_THROW(sm->handleRule(), Kel::RangeException);
  EXPECT_EQ(traces.take(), (Lines{kVrf(8, "handleRule() VRF name: red"),
                                  kVrf(6, "handleRule() VRF name: red remove priority 20000")}));
}

TEST_F(PolicyTranslatePerVrfTrace, OfARuleBuiltFromOtherObjectsEndsAtTheDecision) {
  v1->ruleIs(p1(20000));
  const auto sm = make();
  v2->ruleDel(p2(20000));
  BothTraces traces;
  EXPECT_THROW(sm->handleRule(p1(20000)), Kel::ReinstantiationException);
  EXPECT_EQ(traces.take(),
            (Lines{kVrf(8, "handleRule(VelaL3::VelaPriority) Rule: red priority: 20000"),
                   kVrf(6, "handleRule(VelaL3::VelaPriority) VRF name: red add priority 20000")}));
}

TEST_F(PolicyTranslatePerVrfTrace, OfAnUpdateIsTheEntryLineAlone) {
  const auto sm = make();
  sm->cookie()->updatedIs(true);
  BothTraces traces;
  v1->timestampIs(5);
  EXPECT_EQ(traces.take(), Lines{kVrf(8, "doUpdate() VRF name: red")});
}

TEST_F(PolicyTranslatePerVrfTrace, OfASignalWithoutChangesIsNothing) {
  const auto sm = make();
  BothTraces traces;
  v1->timestampIs(5);
  EXPECT_EQ(traces.take(), Lines{});
}

TEST_F(PolicyTranslatePerVrfTrace, OfASignalWhileNotInitializedIsNothing) {
  const auto sm = make();
  sm->cleanup();
  sm->cookie()->updatedIs(true);
  BothTraces traces;
  v1->timestampIs(5);
  EXPECT_EQ(traces.take(), Lines{});
}

TEST_F(PolicyTranslatePerVrfTrace, OfCleanUpHasAnExitLine) {
  v1->ruleIs(p1(20000));
  const auto sm = make();
  BothTraces traces;
  sm->cleanup();
  EXPECT_EQ(
      traces.take(),
      joined({{kVrf(8, "cleanup() VRF name: red")}, ruleCleanedUp, {kVrf(7, "cleanup()return")}}));
}

TEST_F(PolicyTranslatePerVrfTrace, OfAControlByteInANameIsEscapedInBothFacilities) {
  const auto sm =
      VelaPolicyMonitor::policyTranslatePerVrfSmFactory(VrfName("a\nb"), "net-red", v1, v2);
  BothTraces traces;
  sm->cleanup();
  EXPECT_EQ(traces.take(),
            (Lines{kVrf(8, "cleanup() VRF name: a\\x0ab"), kVrf(7, "cleanup()return")}));
}

}  // namespace
}  // namespace PolicyTests
