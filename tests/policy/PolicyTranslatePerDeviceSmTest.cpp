#include "policy/PolicyTranslatePerDeviceSm.h"
#include "policy/PolicyWorld.h"

namespace PolicyTests {
namespace {

class PolicyTranslatePerDevice : public PolicyWorld {
 protected:
  /// A machine between the policy sets of fw1, without a root.
  Ptr<PolicyTranslatePerDeviceSm> make() {
    sourceV2->policySetIs(Vela::DeviceName("fw1"));
    return VelaPolicyMonitor::policyTranslatePerDeviceSmFactory("fw1", setV1(), setV2(), record);
  }
  Ptr<PolicyTranslatePerVrfSm> child(const char* vrf = "red") const {
    return sm->perVrfSm(VrfName(vrf));
  }
  /// The records of a device have the network VRF names of two VRFs, both with a policy.
  void fillTwo(const char* netOfRed, const char* netOfBlue) {
    map("red", netOfRed);
    map("blue", netOfBlue);
    policyV1("red")->ruleIs(p1(10001));
    policyV1("blue")->ruleIs(p1(10002));
  }

  Ptr<PolicyTranslatePerDeviceSm> sm;
};
using PolicyTranslatePerDeviceDeathTest = PolicyTranslatePerDevice;

TEST_F(PolicyTranslatePerDevice, TranslatesAVrfOnceTheMonitorMapsIt) {
  policyV1();
  sm = make();
  EXPECT_TRUE(setV2()->policy().empty());
  EXPECT_FALSE(child());
  map();
  EXPECT_EQ(keys(setV2()->policy()), Lines{"net-red"});
  EXPECT_EQ(child()->netVrfName(), "net-red");
  EXPECT_EQ(child()->policyV1(), policyV1());
  EXPECT_EQ(child()->policyV2(), policyV2());
}

TEST_F(PolicyTranslatePerDevice, TranslatesAMappedVrfOnceItsPolicyComes) {
  map();
  sm = make();
  EXPECT_TRUE(setV2()->policy().empty());
  policyV1();
  EXPECT_EQ(keys(setV2()->policy()), Lines{"net-red"});
}

TEST_F(PolicyTranslatePerDevice, ANewNetworkNameGetsItsEntryBeforeTheOldChildAndEntryGo) {
  map();
  ruleV1();
  sm = make();
  const Observer below(*policyV2(), [&](AttrId, const void*) { note("old rule deleted"); });
  const Observer watch(*setV2(), [&](AttrId, const void* key) {
    const auto& name = keyOf<Kel::String>(key);
    note((setV2()->policy(name) ? "create " : "delete ") + Kel::textOf(name) + " while the child " +
         (child() ? "has " + Kel::textOf(child()->netVrfName()) : "is gone"));
  });
  map("red", "net-new");
  EXPECT_EQ(noted(), (Lines{"create net-new while the child has net-red", "old rule deleted",
                            "delete net-red while the child is gone"}));
  EXPECT_EQ(child()->netVrfName(), "net-new");
  EXPECT_EQ(keys(setV2()->policy()), Lines{"net-new"});
  EXPECT_EQ(keys(policyV2("net-new")->rule()), Lines{"20000"});
}

TEST_F(PolicyTranslatePerDevice, DeletesAPolicyThatNoVrfMapsToBeforeItAddsAny) {
  sourceV2->policySetIs(Vela::DeviceName("fw1"))->policyIs("stale");
  map();
  policyV1();
  const Observer watch(*setV2(), [&](AttrId, const void* key) {
    const auto& name = keyOf<Kel::String>(key);
    note((setV2()->policy(name) ? "create " : "delete ") + Kel::textOf(name));
  });
  sm = make();
  EXPECT_EQ(noted(), (Lines{"delete stale", "create net-red"}));
}

TEST_F(PolicyTranslatePerDevice, APolicyWithoutANameGoesThoughAVrfHasNoneYet) {
  policyV1();
  sourceV2->policySetIs(Vela::DeviceName("fw1"))->policyIs("");
  sm = make();
  EXPECT_TRUE(setV2()->policy().empty());
}

TEST_F(PolicyTranslatePerDevice, RemovingAVrfThatNeverHadAChildDeletesNothing) {
  sm = make();
  map("ghost", "net-ghost");
  setV2()->policyIs("net-ghost");
  sm->handleVrf("ghost");
  EXPECT_EQ(keys(setV2()->policy()), Lines{"net-ghost"});
}

TEST_F(PolicyTranslatePerDevice, TwoVrfsOnOneNetworkNameShareOneEntryAndRemovingOneDeletesIt) {
  fillTwo("shared", "shared");
  sm = make();
  EXPECT_EQ(keys(setV2()->policy()), Lines{"shared"});
  EXPECT_EQ(child("red")->policyV2(), child("blue")->policyV2());
  setV1()->policyDel(VrfName("red"));
  EXPECT_TRUE(setV2()->policy().empty());
  EXPECT_FALSE(child("red"));
  EXPECT_TRUE(child("blue"));
}

TEST_F(PolicyTranslatePerDevice, ReportsConvergenceAfterTheFirstWalkEvenIfAVrfIsNotMapped) {
  policyV1();
  const Observer watch(*record, [&](AttrId id, const void*) {
    EXPECT_EQ(id, DevicePolicyList::policyConvergeAttr.id);
    note("converged");
  });
  EXPECT_FALSE(record->policyConverge());
  sm = make();
  EXPECT_TRUE(record->policyConverge());
  EXPECT_FALSE(record->serviceDeviceConverge());
  EXPECT_EQ(noted(), Lines{"converged"});
}

TEST_F(PolicyTranslatePerDevice, NeverTakesConvergenceBack) {
  make();
  EXPECT_TRUE(setV2()->policy().empty());
  EXPECT_TRUE(record->policyConverge());
}

TEST_F(PolicyTranslatePerDevice, DoesNotReportConvergenceWhenTheFirstWalkThrows) {
  map();
  policyV1()->ruleIs(p1(30001));
  EXPECT_THROW(make(), Kel::RangeException);
  EXPECT_FALSE(record->policyConverge());
  EXPECT_EQ(record->publisher().subscriberCount(), 0U);
  EXPECT_EQ(setV1()->publisher().subscriberCount(), 0U);
}

TEST_F(PolicyTranslatePerDevice, ActsAlsoWhileNotInitialized) {
  sm = make();
  sm->cleanup();
  EXPECT_FALSE(sm->initialized());
  map();
  policyV1();
  EXPECT_EQ(keys(setV2()->policy()), Lines{"net-red"});
  setV2()->policyIs("stale");
  sm->handleVrf();
  EXPECT_EQ(keys(setV2()->policy()), Lines{"net-red"});
}

TEST_F(PolicyTranslatePerDevice, AMappingThatIsRemovedRemovesTheChildThenItsEntry) {
  map();
  ruleV1();
  sm = make();
  const Observer below(*policyV2(), [&](AttrId, const void*) { note("rule deleted"); });
  const Observer watch(*setV2(), [&](AttrId, const void*) {
    EXPECT_FALSE(child());
    note("entry deleted");
  });
  record->netVrfNameByVrfDel("red");
  EXPECT_EQ(noted(), (Lines{"rule deleted", "entry deleted"}));
}

TEST_F(PolicyTranslatePerDevice, AMappingToTheEmptyNameCountsAsNone) {
  map();
  policyV1();
  sm = make();
  map("red", "");
  EXPECT_TRUE(setV2()->policy().empty());
  EXPECT_FALSE(child());
}

TEST_F(PolicyTranslatePerDevice, RemovingPolicyThenMappingAndMappingThenPolicyEndAlike) {
  fillTwo("n1", "n2");
  sm = make();
  setV1()->policyDel(VrfName("red"));
  record->netVrfNameByVrfDel("red");
  record->netVrfNameByVrfDel("blue");
  setV1()->policyDel(VrfName("blue"));
  EXPECT_TRUE(setV2()->policy().empty());
  EXPECT_TRUE(sm->perVrfSm().empty());
}

TEST_F(PolicyTranslatePerDevice, KeepsTheChildThatWasBuiltFromTheSameObjectsAndName) {
  map();
  policyV1();
  sm = make();
  const auto before = child();
  map();
  sm->handleVrf("red");
  sm->handleVrf();
  sm->handleInitialized();
  EXPECT_EQ(child(), before);
}

TEST_F(PolicyTranslatePerDevice, TheRemovalPassDoesNotTouchChildren) {
  map();
  policyV1();
  sm = make();
  const auto before = child();
  sm->hasNotificationActiveIs(false);
  setV1()->policyDel(VrfName("red"));
  sm->handleVrf();
  EXPECT_TRUE(setV2()->policy().empty());
  EXPECT_EQ(child(), before);
}

TEST_F(PolicyTranslatePerDevice, CleanUpEmptiesTheSetAndItsOwnChildren) {
  fillTwo("n1", "n2");
  sm = make();
  setV2()->policyIs("foreign");
  sm->cleanup();
  EXPECT_TRUE(setV2()->policy().empty());
  EXPECT_TRUE(sm->perVrfSm().empty());
}

TEST_F(PolicyTranslatePerDevice, AVrfNameOfAHundredBytesWorksFromBothSides) {
  const std::string name(100, 'v');
  sm = make();
  policyV1(name);
  map(name, "n");
  EXPECT_EQ(keys(setV2()->policy()), Lines{"n"});
  record->netVrfNameByVrfDel(name);
  EXPECT_TRUE(setV2()->policy().empty());
}

TEST_F(PolicyTranslatePerDevice, AMappingOfALongerNameRaisesTheRangeErrorToItsWriterBothTimes) {
  const std::string name(101, 'v');
  sm = make();
  for (const bool add : {true, false}) {
    try {
      add ? map(name, "n") : record->netVrfNameByVrfDel(name);
      FAIL() << "nothing was raised";
    } catch (const Kel::RangeException& error) {
      EXPECT_STREQ(error.what(), "Kel::String::bytes > maxLength() not allowed");
    }
    EXPECT_EQ(record->netVrfNameByVrf(name), add ? "n" : "");
  }
  map();
  policyV1();
  EXPECT_EQ(keys(setV2()->policy()), Lines{"net-red"});
}

TEST_F(PolicyTranslatePerDevice, WithoutVersionOneItHasNoReactorThereAndDeletesAllEntries) {
  sourceV2->policySetIs(Vela::DeviceName("fw1"))->policyIs("stale");
  map();
  sm = VelaPolicyMonitor::policyTranslatePerDeviceSmFactory("fw1", nullptr, setV2(), record);
  EXPECT_TRUE(setV2()->policy().empty());
  EXPECT_TRUE(record->policyConverge());
  map("blue", "n");
  EXPECT_TRUE(setV2()->policy().empty());
}

TEST_F(PolicyTranslatePerDevice, WithoutVersionTwoRemovesAndCleansUpWithoutHarm) {
  policyV1();
  sm = VelaPolicyMonitor::policyTranslatePerDeviceSmFactory("fw1", setV1(), nullptr, record);
  setV1()->policyDel(VrfName("red"));
  sm->handleVrf();
  sm->cleanup();
  EXPECT_TRUE(sm->perVrfSm().empty());
}

TEST_F(PolicyTranslatePerDevice, WithoutVersionTwoRemovesAlsoAChildThatItWasGiven) {
  policyV1();
  sm = VelaPolicyMonitor::policyTranslatePerDeviceSmFactory("fw1", setV1(), nullptr, record);
  const auto v2 = sourceV2->policySetIs("fw1")->policyIs("net-red");
  ASSERT_TRUE(sm->perVrfSmIs(VrfName("red"), "net-red", policyV1(), v2));
  setV1()->policyDel(VrfName("red"));
  EXPECT_TRUE(sm->perVrfSm().empty());
  EXPECT_TRUE(setV2()->policy("net-red")) << "there is nowhere to delete it";
}

TEST_F(PolicyTranslatePerDeviceDeathTest, ADeviceWithoutARecordCannotBe) {
  sourceV2->policySetIs(Vela::DeviceName("fw1"));
  EXPECT_DEATH(
      VelaPolicyMonitor::policyTranslatePerDeviceSmFactory("fw1", setV1(), setV2(), nullptr),
      "assertion \"policyList != nullptr\" failed: the state machine of a device was built without "
      "the monitor's record of it");
}

TEST_F(PolicyTranslatePerDeviceDeathTest, WithoutVersionTwoAnAdditionStopsTheProcess) {
  policyV1();
  map();
  EXPECT_DEATH(
      VelaPolicyMonitor::policyTranslatePerDeviceSmFactory("fw1", setV1(), nullptr, record),
      "handleVrf\\(const String&\\): assertion \"entity != nullptr\" failed: .*built without");
}

TEST_F(PolicyTranslatePerDevice, ReplacesAChildThatIsToHaveAnotherNetworkName) {
  map();
  policyV1();
  sm = make();
  const auto before = child();
  const auto after = sm->perVrfSmIs(VrfName("red"), "net-other", policyV1(), policyV2());
  EXPECT_NE(after, before);
  EXPECT_EQ(after->netVrfName(), "net-other");
}

TEST_F(PolicyTranslatePerDevice, ReplacesAChildThatIsNamedByItsOwnKey) {
  const std::string longName(100, 'n');  // too long to lie anywhere but in memory of its own
  map(longName.c_str());
  policyV1(longName.c_str())->ruleIs(p1(10001));
  sm = make();
  const auto other = setV2()->policyIs("net-other");
  const VrfName vrf{longName};
  const auto* const before = sm->perVrfSm().find(vrf);
  ASSERT_NE(before, nullptr);
  const auto after =
      sm->perVrfSmIs(before->vrfName(), "net-other", policyV1(longName.c_str()), other);
  EXPECT_EQ(after->vrfName(), vrf);
  EXPECT_EQ(sm->perVrfSm(vrf), after);
  EXPECT_EQ(after->netVrfName(), "net-other");
}

}  // namespace
}  // namespace PolicyTests
