#include "policy/PolicyWorld.h"

namespace PolicyTests {
namespace {

/// How the machines of the tree come to life and end: whole, once, and in their stated order.
class PolicyTreeLife : public PolicyWorld {
 protected:
  PolicyTreeLife() {
    map();
    originV1();
    matchV1()->l3AppIs(6);
  }
  static Lines liveMachines() {
    return {std::to_string(live<PolicyTranslateRootSm>()),
            std::to_string(live<PolicyTranslatePerDeviceSm>()),
            std::to_string(live<PolicyTranslatePerVrfSm>()),
            std::to_string(live<PolicyTranslatePerRuleSm>()),
            std::to_string(live<PolicyTranslatePerOriginSm>()),
            std::to_string(live<PolicyTranslateMatchSm>())};
  }
  std::size_t subscribers() const {
    return sourceV1->publisher().subscriberCount() + setV1()->publisher().subscriberCount() +
           record->publisher().subscriberCount() + policyV1()->publisher().subscriberCount() +
           ruleV1()->publisher().subscriberCount() + originV1()->publisher().subscriberCount() +
           matchV1()->publisher().subscriberCount();
  }
  /// What `machine`, which is ending, looks like while its clean-up deletes in version 2.
  template <class Sm>
  Observer noteStateAtDeletion(const auto& entityV2, const Sm* machine, const auto& entityV1) {
    return Observer(*entityV2, [this, machine, entityV1](AttrId, const void*) {
      note(std::string(machine->hasNotificationActive() ? "on" : "off") +
           (machine->initialized() ? ", initialized" : ", not initialized") +
           (machine->kelMarkedForDeletion() ? ", marked" : ", not marked") +
           (entityV1->publisher().subscriberCount() == 0 ? ", unregistered" : ", registered"));
    });
  }
  const Lines offBeforeCleanUp{"off, not initialized, not marked, unregistered"};
};
using PolicyTreeLifeDeathTest = PolicyTreeLife;

const Lines kNone{"0", "0", "0", "0", "0", "0"};
const Lines kOneOfEach{"1", "1", "1", "1", "1", "1"};

TEST_F(PolicyTreeLife, EveryMachineIsMadeOnceAndHeldOnce) {
  const auto root = makeRoot();
  EXPECT_EQ(liveMachines(), kOneOfEach);
  EXPECT_EQ(root->refCount(), 1U);
  const PolicyTranslatePerDeviceSm* const device = root->perDeviceSm().find("fw1");
  EXPECT_EQ(device->refCount(), 1U);
  EXPECT_EQ(device->perVrfSm().find(VrfName("red"))->refCount(), 1U);
  EXPECT_EQ(subscribers(), 7U);
}

TEST_F(PolicyTreeLife, APerDeviceMachineSurvivesTheNotificationOfItsOwnConvergence) {
  const auto made = VelaPolicyMonitor::policyTranslatePerDeviceSmFactory(
      "fw1", setV1(), sourceV2->policySetIs(Vela::DeviceName("fw1")), record);
  EXPECT_EQ(live<PolicyTranslatePerDeviceSm>(), 1U);
  EXPECT_EQ(made->refCount(), 1U);
  EXPECT_TRUE(record->policyConverge());
}

TEST_F(PolicyTreeLife, DroppingTheRootEndsEveryMachineAndEmptiesVersionTwo) {
  auto root = makeRoot();
  root.reset();
  EXPECT_EQ(liveMachines(), kNone);
  EXPECT_EQ(subscribers(), 0U);
  EXPECT_TRUE(sourceV2->policySet().empty());
}

TEST_F(PolicyTreeLife, AFirstWalkThatThrowsLeavesNoMachineNoSubscriberAndNoMemory) {
  policyV1()->ruleIs(p1(9999));
  EXPECT_THROW(makeRoot(), Kel::RangeException);
  EXPECT_EQ(liveMachines(), kNone);
  EXPECT_EQ(subscribers(), 0U);
}

TEST_F(PolicyTreeLife, AFirstWalkThatThrowsLeavesTheEntriesThatItHasMade) {
  policyV1()->ruleIs(p1(9999));
  EXPECT_THROW(makeRoot(), Kel::RangeException);
  EXPECT_TRUE(ruleV2(20000));
  EXPECT_TRUE(ruleV2(20000)->origin().empty()) << "the machine below has cleaned up";
}

TEST_F(PolicyTreeLife, AChildThatCannotBeMadeLeavesNoEntryInTheCollection) {
  const auto root = makeRoot();
  setV1()->policyIs(VrfName("blue"))->ruleIs(p1(30001));
  EXPECT_THROW(map("blue", "net-blue"), Kel::RangeException);
  EXPECT_EQ(keys(root->perDeviceSm("fw1")->perVrfSm()), Lines{"red"});
  EXPECT_EQ(live<PolicyTranslatePerVrfSm>(), 1U);
  setV1()->policyIs(VrfName("blue"))->hasNotificationActiveIs(true);
  EXPECT_THROW(root->perDeviceSm("fw1")->handleVrf("blue"), Kel::RangeException);
  setV1()->policyIs(VrfName("blue"))->ruleDel(p1(30001));
  root->perDeviceSm("fw1")->handleVrf("blue");
  EXPECT_EQ(keys(root->perDeviceSm("fw1")->perVrfSm()), (Lines{"blue", "red"}));
}

TEST_F(PolicyTreeLife, TheRootIsSwitchedOffBeforeItCleansUpAndMarkedAfterwards) {
  auto root = makeRoot();
  const Observer watch = noteStateAtDeletion(sourceV2, root.get(), sourceV1);
  root.reset();
  EXPECT_EQ(noted(), offBeforeCleanUp);
}

TEST_F(PolicyTreeLife, APerDeviceMachineIsSwitchedOffBeforeItCleansUpAndMarkedAfterwards) {
  const auto root = makeRoot();
  const Observer watch = noteStateAtDeletion(setV2(), root->perDeviceSm("fw1").get(), setV1());
  root->perDeviceSmDel("fw1");
  EXPECT_EQ(noted(), offBeforeCleanUp);
}

TEST_F(PolicyTreeLife, APerVrfMachineIsSwitchedOffBeforeItCleansUpAndMarkedAfterwards) {
  const auto root = makeRoot();
  const auto device = root->perDeviceSm("fw1");
  const Observer watch =
      noteStateAtDeletion(policyV2(), device->perVrfSm().find(VrfName("red")), policyV1());
  device->perVrfSmDel(VrfName("red"));
  EXPECT_EQ(noted(), offBeforeCleanUp);
}

TEST_F(PolicyTreeLife, APerRuleMachineIsSwitchedOffBeforeItCleansUpAndMarkedAfterwards) {
  const auto root = makeRoot();
  const auto vrf = root->perDeviceSm("fw1")->perVrfSm(VrfName("red"));
  const Observer watch = noteStateAtDeletion(ruleV2(), vrf->perRuleSm().find(p1(20000)), ruleV1());
  vrf->perRuleSmDel(p1(20000));
  EXPECT_EQ(noted(), offBeforeCleanUp);
}

TEST_F(PolicyTreeLife, APerOriginMachineIsSwitchedOffBeforeItCleansUpAndMarkedAfterwards) {
  const auto root = makeRoot();
  const auto rule = root->perDeviceSm("fw1")->perVrfSm(VrfName("red"))->perRuleSm(p1(20000));
  const Observer watch =
      noteStateAtDeletion(originV2(), rule->perOriginSm().find("web"), originV1());
  rule->perOriginSmDel("web");
  EXPECT_EQ(noted(), offBeforeCleanUp);
  EXPECT_EQ(live<PolicyTranslateMatchSm>(), 0U);
}

TEST_F(PolicyTreeLife, VersionTwoIsEmptiedFromTheBottomToTheTop) {
  auto root = makeRoot();
  const Observer top(*sourceV2, [&](AttrId, const void*) { note("policy set"); });
  const Observer second(*setV2(), [&](AttrId, const void*) { note("policy"); });
  const Observer third(*policyV2(), [&](AttrId, const void*) { note("rule"); });
  const Observer fourth(*ruleV2(), [&](AttrId, const void*) { note("origin"); });
  const Observer fifth(*originV2(), [&](AttrId, const void*) { note("match"); });
  const Observer sixth(*matchV2(), [&](AttrId, const void*) { note("set"); });
  root.reset();
  EXPECT_EQ(noted(), (Lines{"match", "origin", "rule", "policy", "policy set"}));
}

TEST_F(PolicyTreeLife, ARemovedChildThatIsHeldGoesOnWithItsDetachedEntryOnly) {
  const auto root = makeRoot();
  const auto held = root->perDeviceSm("fw1")->perVrfSm(VrfName("red"))->perRuleSm(p1(20000));
  const auto keptV1 = ruleV1();
  policyV1()->ruleDel(p1(20000));
  keptV1->originIs("mail");
  EXPECT_TRUE(held->ruleV2()->origin("mail"));
  EXPECT_FALSE(ruleV2());
  ruleV1()->originIs("new");
  EXPECT_EQ(keys(ruleV2()->origin()), Lines{"new"});
}

TEST_F(PolicyTreeLife, AReplacedChildThatIsHeldDoesNotEmptyWhatItsSuccessorWrites) {
  const auto root = makeRoot();
  const auto device = root->perDeviceSm("fw1");
  auto held = device->perVrfSm(VrfName("red"));
  const auto other = setV1("fw2")->policyIs(VrfName("red"));
  other->ruleIs(p1(15000));
  device->perVrfSmIs(VrfName("red"), "net-red", other, policyV2());
  EXPECT_EQ(keys(policyV2()->rule()), Lines{"15000"});
  policyV1()->ruleIs(p1(12000));
  EXPECT_EQ(keys(policyV2()->rule()), Lines{"15000"}) << "the old machine does not listen any more";
  held.reset();
  EXPECT_EQ(keys(policyV2()->rule()), Lines{"15000"});
}

TEST_F(PolicyTreeLife, AnOldRootDroppedAfterItsSuccessorWasMadeEmptiesTheSource) {
  auto root = makeRoot();
  const auto successor = makeRoot();
  EXPECT_EQ(originV2()->name(), "web");
  root.reset();
  EXPECT_TRUE(sourceV2->policySet().empty());
  EXPECT_TRUE(successor->perDeviceSm("fw1"));
}

TEST_F(PolicyTreeLife, InitializingALevelAgainKeepsItsChildrenAndTheContentsOfVersionTwo) {
  const auto root = makeRoot();
  const auto device = root->perDeviceSm("fw1");
  const auto rule = device->perVrfSm(VrfName("red"))->perRuleSm(p1(20000));
  const auto origin = rule->perOriginSm("web");
  const auto match = origin->matchSm();
  root->handleInitialized();
  device->handleInitialized();
  rule->handleInitialized();
  origin->handleInitialized();
  match->handleInitialized();
  EXPECT_EQ(root->perDeviceSm("fw1"), device);
  EXPECT_EQ(rule->perOriginSm("web"), origin);
  EXPECT_EQ(origin->matchSm(), match);
  EXPECT_EQ(keys(matchV2()->l3App()), Lines{"6"});
  EXPECT_EQ(liveMachines(), kOneOfEach);
}

TEST_F(PolicyTreeLife, AnEndingMachineMayBePointedToByAnObserverWithoutEndingTwice) {
  auto root = makeRoot();
  PolicyTranslateRootSm* const plain = root.get();
  const Observer watch(
      *sourceV2, [plain](AttrId, const void*) { const Ptr<PolicyTranslateRootSm> hold(plain); });
  root.reset();
  EXPECT_EQ(liveMachines(), kNone);
}

TEST_F(PolicyTreeLifeDeathTest, AnObserverThatThrowsDuringTheEndStopsTheProcess) {
  EXPECT_DEATH(
      {
        auto root = makeRoot();
        const Observer watch(*policyV2(), [](AttrId, const void*) {
          throw Kel::Exception("from an observer of version 2");
        });
        root.reset();
      },
      "from an observer of version 2");
}

}  // namespace
}  // namespace PolicyTests
