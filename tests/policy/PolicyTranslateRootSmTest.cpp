#include "policy/PolicyTranslateRootSm.h"
#include "policy/PolicyWorld.h"

namespace PolicyTests {
namespace {

class PolicyTranslateRoot : public PolicyWorld {};
using PolicyTranslateRootDeathTest = PolicyTranslateRoot;

TEST_F(PolicyTranslateRoot, MirrorsTheWholeTreeThatExistsWhenItIsBuilt) {
  map();
  originV1()->tagsIs("tag");
  matchV1()->srcIpIs(IpGenPrefix("10.0.0.0/8"));
  const auto root = makeRoot();
  EXPECT_TRUE(root->initialized());
  EXPECT_EQ(originV2()->tags(), "tag");
  EXPECT_TRUE(matchV2()->srcIp(IpGenPrefix("10.0.0.0/8")));
}

TEST_F(PolicyTranslateRoot, FollowsADeviceThatIsAddedAndRemovedLater) {
  const auto root = makeRoot();
  setV1();
  EXPECT_EQ(keys(sourceV2->policySet()), Lines{"fw1"});
  EXPECT_EQ(keys(root->perDeviceSm()), Lines{"fw1"});
  sourceV1->policySetDel("fw1");
  EXPECT_TRUE(sourceV2->policySet().empty());
  EXPECT_TRUE(root->perDeviceSm().empty());
}

TEST_F(PolicyTranslateRoot, UsesTheVersionOneKeyUnchanged) {
  const char* const name = "a\\:b:c:";
  status->devicePolicyListIs(name);
  setV1(name);
  const auto root = makeRoot();
  EXPECT_EQ(keys(sourceV2->policySet()), Lines{"a\\:b:c:"});
}

TEST_F(PolicyTranslateRoot, BringsADeviceInAtItsNextNotificationWhenItsRecordCameLater) {
  setV1("fw2");
  const auto root = makeRoot();
  EXPECT_FALSE(setV2("fw2"));
  status->devicePolicyListIs("fw2");
  EXPECT_FALSE(setV2("fw2"));
  sourceV1->publisher().publish(VelaL3::VelaPolicySourceConfig::policySetAttr.id,
                                &setV1("fw2")->deviceName());
  EXPECT_TRUE(setV2("fw2"));
  EXPECT_TRUE(root->perDeviceSm("fw2"));
}

TEST_F(PolicyTranslateRoot, BringsADeviceInAtTheNextFullWalkWhenItsRecordCameLater) {
  setV1("fw2");
  const auto root = makeRoot();
  status->devicePolicyListIs("fw2");
  EXPECT_FALSE(setV2("fw2"));
  root->handlePolicySet();
  EXPECT_TRUE(setV2("fw2"));
}

TEST_F(PolicyTranslateRoot, RemovesADeviceWhoseRecordHasGoneAtItsNextNotification) {
  setV1();
  const auto root = makeRoot();
  status->devicePolicyListDel("fw1");
  EXPECT_TRUE(setV2());
  root->handlePolicySet("fw1");
  EXPECT_FALSE(setV2());
  EXPECT_FALSE(root->perDeviceSm("fw1"));
}

TEST_F(PolicyTranslateRoot, DeletesAnEntryWithoutCounterpartBeforeItAddsAny) {
  setV1();
  sourceV2->policySetIs(Vela::DeviceName("stale"));
  const Observer watch(*sourceV2, [&](AttrId, const void* key) {
    const auto& name = keyOf<Vela::DeviceName>(key);
    note((sourceV2->policySet(name) ? "add " : "delete ") + Kel::textOf(name));
  });
  const auto root = makeRoot();
  EXPECT_EQ(noted(), (Lines{"delete stale", "add fw1"}));
  EXPECT_EQ(keys(root->perDeviceSm()), Lines{"fw1"});
}

TEST_F(PolicyTranslateRoot, DoesNothingAndTracesNothingWhileNotInitialized) {
  const auto root = makeRoot();
  root->cleanup();
  EXPECT_FALSE(root->initialized());
  BothTraces traces;
  setV1();
  root->handlePolicySet("fw1");
  root->handlePolicySet();
  EXPECT_EQ(traces.take(), Lines{});
  EXPECT_TRUE(sourceV2->policySet().empty());
  root->handleInitialized();
  EXPECT_TRUE(setV2());
}

TEST_F(PolicyTranslateRoot, CreatesTheEntryBeforeTheChild) {
  const auto root = makeRoot();
  const Observer watch(*sourceV2, [&](AttrId, const void*) {
    note(root->perDeviceSm("fw1") ? "child is there" : "child is not there yet");
  });
  setV1();
  EXPECT_EQ(noted(), Lines{"child is not there yet"});
  EXPECT_TRUE(root->perDeviceSm("fw1"));
}

TEST_F(PolicyTranslateRoot, RemovesTheChildBeforeItDeletesTheEntry) {
  map();
  policyV1();
  const auto root = makeRoot();
  const Observer below(*setV2(), [&](AttrId, const void*) { note("policy deleted by the child"); });
  const Observer watch(*sourceV2, [&](AttrId, const void*) {
    note("entry deleted");
    EXPECT_FALSE(root->perDeviceSm("fw1"));
    EXPECT_EQ(live<PolicyTranslatePerDeviceSm>(), 0U);
  });
  sourceV1->policySetDel("fw1");
  EXPECT_EQ(noted(), (Lines{"policy deleted by the child", "entry deleted"}));
}

TEST_F(PolicyTranslateRoot, KeepsTheChildThatWasBuiltFromTheSameObjects) {
  setV1();
  const auto root = makeRoot();
  const auto child = root->perDeviceSm("fw1");
  root->handlePolicySet("fw1");
  root->handlePolicySet();
  root->handleInitialized();
  EXPECT_EQ(root->perDeviceSm("fw1"), child);
  EXPECT_EQ(root->perDeviceSmIs("fw1", setV1(), setV2(), record), child);
}

TEST_F(PolicyTranslateRoot, DoesNotTouchChildrenInTheRemovalPass) {
  setV1();
  const auto root = makeRoot();
  const auto child = root->perDeviceSm("fw1");
  root->hasNotificationActiveIs(false);
  sourceV1->policySetDel("fw1");
  root->handlePolicySet();
  EXPECT_FALSE(setV2());
  EXPECT_EQ(root->perDeviceSm("fw1"), child);
}

TEST_F(PolicyTranslateRoot, CleanUpEmptiesTheSourceAndItsOwnChildren) {
  setV1();
  const auto root = makeRoot();
  sourceV2->policySetIs(Vela::DeviceName("foreign"));
  root->cleanup();
  EXPECT_TRUE(sourceV2->policySet().empty());
  EXPECT_TRUE(root->perDeviceSm().empty());
  EXPECT_FALSE(root->initialized());
}

TEST_F(PolicyTranslateRoot, DroppingItEmptiesTheSourceAndLeavesNoSubscriber) {
  map();
  matchV1();
  auto root = makeRoot();
  EXPECT_EQ(sourceV1->publisher().subscriberCount(), 1U);
  root.reset();
  EXPECT_TRUE(sourceV2->policySet().empty());
  EXPECT_EQ(sourceV1->publisher().subscriberCount(), 0U);
  EXPECT_EQ(setV1()->publisher().subscriberCount(), 0U);
  EXPECT_EQ(record->publisher().subscriberCount(), 0U);
  EXPECT_EQ(matchV1()->publisher().subscriberCount(), 0U);
}

TEST_F(PolicyTranslateRoot, WithoutVersionOneHasNoReactorAndNoEntries) {
  sourceV2->policySetIs(Vela::DeviceName("stale"));
  const auto root = VelaPolicyMonitor::policyTranslateRootSmFactory(nullptr, sourceV2, status);
  EXPECT_TRUE(root->initialized());
  EXPECT_TRUE(sourceV2->policySet().empty());
  root->handlePolicySet("fw1");
  EXPECT_TRUE(sourceV2->policySet().empty());
}

TEST_F(PolicyTranslateRoot, WithoutMonitorRemovesEveryDevice) {
  setV1();
  sourceV2->policySetIs(Vela::DeviceName("fw1"));
  const auto root = VelaPolicyMonitor::policyTranslateRootSmFactory(sourceV1, sourceV2, nullptr);
  EXPECT_TRUE(sourceV2->policySet().empty());
  EXPECT_FALSE(root->getPolicyList("fw1"));
}

TEST_F(PolicyTranslateRoot, WithoutVersionTwoRemovesAndCleansUpWithoutHarm) {
  const auto root = VelaPolicyMonitor::policyTranslateRootSmFactory(sourceV1, nullptr, status);
  root->handlePolicySet("fw1");
  root->handlePolicySet();
  root->cleanup();
  EXPECT_FALSE(root->initialized());
}

TEST_F(PolicyTranslateRootDeathTest, WithoutVersionTwoAnAdditionStopsTheProcess) {
  setV1();
  EXPECT_DEATH(VelaPolicyMonitor::policyTranslateRootSmFactory(sourceV1, nullptr, status),
               "handlePolicySet\\(const String&\\): assertion \"entity != nullptr\" failed: .*"
               "built without the version-2 entity");
}

TEST_F(PolicyTranslateRoot, IgnoresNotificationsWhileMarkedForDeletion) {
  const auto root = makeRoot();
  root->kelDoZombieReactors(true);
  setV1();
  EXPECT_FALSE(setV2());
  root->kelDoZombieReactors(false);
  EXPECT_FALSE(setV2());
  status->devicePolicyListIs("fw2");
  setV1("fw2");
  EXPECT_TRUE(setV2("fw2"));
}

TEST_F(PolicyTranslateRoot, AnswersWithTypeNameAndIsSwitchedOn) {
  const auto root = makeRoot();
  EXPECT_STREQ(root->fwkType().descriptor().name, "VelaPolicyMonitor::PolicyTranslateRootSm");
  EXPECT_TRUE(root->hasNotificationActive());
}

}  // namespace
}  // namespace PolicyTests
