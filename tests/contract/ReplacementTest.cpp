#include <gtest/gtest.h>

#include "contract/Contract.h"

namespace Contract {
namespace {

/// How the child under the path's key is made to give way to a new one that writes to the very same
/// version-2 entity.
template <class Owner>
struct Replacement;

template <>
struct Replacement<PolicyTranslateRootSm> {
  static void run(World& world, PolicyTranslateRootSm& sm) {
    renewRecord(world);
    sm.handlePolicySet("fw1");
  }
  static void renewRecord(World& world) {
    const auto old = world.record();
    world.status->devicePolicyListDel("fw1");
    const auto record = world.status->devicePolicyListIs("fw1");
    record->netVrfNameByVrfIs("red", "net-red");
    record->trafficInspectionIs(old->trafficInspection());
  }
};
template <>
struct Replacement<ServiceDeviceTranslateRootSm> {
  static void run(World& world, ServiceDeviceTranslateRootSm& sm) {
    Replacement<PolicyTranslateRootSm>::renewRecord(world);
    sm.handleDevice("fw1");
  }
};
template <>
struct Replacement<PolicyTranslatePerDeviceSm> {
  static void run(World& world, PolicyTranslatePerDeviceSm& sm) {
    sm.hasNotificationActiveIs(false);
    world.policySetV1()->policyDel(L3::VrfName("red"));
    world.policySetV1()->policyIs(L3::VrfName("red"))->ruleIs(VelaL3::VelaPriority(12345));
    sm.hasNotificationActiveIs(true);
    sm.handleVrf("red");
  }
};
template <>
struct Replacement<PerServiceDeviceTranslateSm> {
  static void run(World& world, PerServiceDeviceTranslateSm& sm) {
    sm.hasNotificationActiveIs(false);
    world.deviceV1()->vrfDel(L3::VrfName("red"));
    world.deviceV1()->vrfIs(L3::VrfName("red"))->l3IntfIs(Norv::IpGenAddr("10.9.9.9"));
    sm.hasNotificationActiveIs(true);
    sm.handleVrf("red");
  }
};
template <>
struct Replacement<PerVrfServiceDeviceTranslateSm> {
  static void run(World& world, PerVrfServiceDeviceTranslateSm& sm) {
    const Norv::IpGenAddr address("10.0.0.1");
    sm.hasNotificationActiveIs(false);
    world.vrfV1()->l3IntfDel(address);
    world.vrfV1()->l3IntfIs(address)->reachableSubnetIs(Norv::IpGenPrefix("172.16.0.0/12"));
    sm.hasNotificationActiveIs(true);
    sm.handleL3Intf(address);
  }
};
template <>
struct Replacement<PolicyTranslatePerOriginSm> {
  static void run(World& world, PolicyTranslatePerOriginSm& sm) {
    sm.hasNotificationActiveIs(false);
    world.originV1()->matchDel();
    world.originV1()->matchIs()->srcIpIs(Norv::IpGenPrefix("172.16.0.0/12"));
    sm.hasNotificationActiveIs(true);
    sm.handleMatch();
  }
};

using Owners = ::testing::Types<PolicyTranslateRootSm, PolicyTranslatePerDeviceSm,
                                PolicyTranslatePerOriginSm, ServiceDeviceTranslateRootSm,
                                PerServiceDeviceTranslateSm, PerVrfServiceDeviceTranslateSm>;

template <class Sm>
class ReplacedChild : public MachineTest<Sm> {
 protected:
  /// The child of the path: the only one there is.
  Ptr<TranslateSm> child(Sm& sm) { return MachineTest<Sm>::M::children(sm).front(); }
  /// What a machine built on version 1 as it is now writes into an empty version 2.
  std::string expected() {
    World fresh;
    fresh.policySrcV1 = this->world.policySrcV1;
    fresh.sdSourceV1 = this->world.sdSourceV1;
    fresh.status = this->world.status;
    const auto sm = MachineTest<Sm>::M::args(fresh, MachineTest<Sm>::M::make);
    return dumpV2(fresh);
  }
};
TYPED_TEST_SUITE(ReplacedChild, Owners, MachineNames);

TYPED_TEST(ReplacedChild, GivesWayToOneThatMirrorsTheNewObjects) {
  const auto sm = this->make();
  const auto* const old = this->child(*sm).get();
  const Ptr<TranslateSm> keep(this->child(*sm));  // so that no new child gets its address
  Replacement<TypeParam>::run(this->world, *sm);
  EXPECT_EQ(TestFixture::M::children(*sm).size(), 1U);
  EXPECT_NE(this->child(*sm).get(), old);
  EXPECT_EQ(dumpV2(this->world), this->expected());
}

TYPED_TEST(ReplacedChild, NeverEmptiesWhatItsSuccessorWroteThoughItIsHeldUntilLater) {
  const auto sm = this->make();
  auto held = this->child(*sm);
  Replacement<TypeParam>::run(this->world, *sm);
  const std::string after = dumpV2(this->world);
  EXPECT_EQ(after, this->expected());
  held.reset();
  EXPECT_EQ(dumpV2(this->world), after);
}

TYPED_TEST(ReplacedChild, HearsNothingAnyMore) {
  const auto sm = this->make();
  const auto held = this->child(*sm);
  const auto watched = Machine<typename TestFixture::M::Child>::top(this->world);
  Replacement<TypeParam>::run(this->world, *sm);
  if constexpr (std::is_same_v<TypeParam, PolicyTranslatePerOriginSm>) {
    // Deliberate: the match machine that gives way is released without being switched off.
    EXPECT_EQ(subscribersBelow(*watched), 1U);
  } else {
    EXPECT_TRUE(held->retired());
    EXPECT_FALSE(held->hasNotificationActive());
    EXPECT_TRUE(held->kelMarkedForDeletion());
  }
}

TYPED_TEST(ReplacedChild, MakesNoChildrenAnyMore) {
  using Child = typename TestFixture::M::Child;
  const auto sm = this->make();
  const auto held = this->child(*sm);
  Replacement<TypeParam>::run(this->world, *sm);
  auto& old = static_cast<Child&>(*held);
  Machine<Child>::walk(old);
  EXPECT_TRUE(Machine<Child>::children(old).empty());
}

TYPED_TEST(ReplacedChild, ThatNobodyHoldsLeavesNoMachineBehind) {
  auto sm = this->make();
  const auto before = liveMachines();
  Replacement<TypeParam>::run(this->world, *sm);
  const auto after = liveMachines();
  EXPECT_EQ(before.at(Machine<typename TestFixture::M::Child>::kName),
            after.at(Machine<typename TestFixture::M::Child>::kName));
  sm.reset();
  EXPECT_EQ(liveMachines().size(), 0U);
}

}  // namespace
}  // namespace Contract
