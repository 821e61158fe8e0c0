#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "contract/Contract.h"

namespace Contract {
namespace {

template <class Sm>
class Life : public MachineTest<Sm> {};
TYPED_TEST_SUITE(Life, AllMachines, MachineNames);

TYPED_TEST(Life, RegistersOnEachInputOnce) {
  const auto sm = this->make();
  EXPECT_EQ(this->registered(), this->each('1'));
}

TYPED_TEST(Life, DoesNotRegisterOnInputsThatAreNull) {
  const auto sm = this->makeWithoutInputs();
  EXPECT_EQ(TestFixture::M::inputs(this->world).front().subscriberCount(), 0U);
  this->add(0);
  EXPECT_FALSE(this->mirrored(0));
}

TYPED_TEST(Life, BelongsToItsCreatorAlone) {
  const auto sm = this->make();
  EXPECT_EQ(sm->refCount(), 1U);
}

TYPED_TEST(Life, IsInitializedAndMirrorsWhatIsThereWhenItsConstructorIsDone) {
  this->add(0);
  const auto sm = this->constructed();
  EXPECT_TRUE(sm->initialized());
  EXPECT_TRUE(this->mirrored(0));
}

TYPED_TEST(Life, FollowsAdditionsAndRemovals) {
  const auto sm = this->make();
  EXPECT_FALSE(this->mirrored(0));
  this->add(0);
  EXPECT_TRUE(this->mirrored(0));
  this->add(1);
  this->remove(0);
  EXPECT_FALSE(this->mirrored(0));
  EXPECT_TRUE(this->mirrored(1));
}

TYPED_TEST(Life, HasItsNotificationsOffWhenConstructedAndOnWhenCreated) {
  const auto constructed = this->constructed();
  EXPECT_FALSE(constructed->hasNotificationActive());
  EXPECT_EQ(this->registered(), this->each('1'));
  constructed->hasNotificationActiveIs(true);
  EXPECT_EQ(this->registered(), this->each('1'));
  EXPECT_TRUE(constructed->hasNotificationActive());
}

TYPED_TEST(Life, HasItsNotificationsAndThoseOfItsChildrenOnWhenCreated) {
  const auto sm = this->make();
  EXPECT_TRUE(sm->hasNotificationActive());
  EXPECT_FALSE(sm->kelMarkedForDeletion());
  for (const auto& child : TestFixture::M::children(*sm)) {
    EXPECT_TRUE(child->hasNotificationActive());
  }
}

TYPED_TEST(Life, HasAChildForWhatIsThere) {
  const auto sm = this->make();
  if constexpr (HasChildren<TypeParam>) {
    EXPECT_FALSE(TestFixture::M::children(*sm).empty());
  } else {
    EXPECT_TRUE(TestFixture::M::children(*sm).empty());
  }
}

TYPED_TEST(Life, IsBuiltAlikeByItsFactoryAndItsCreator) {
  const auto build = [](auto maker) {
    World own;
    const auto sm = Machine<TypeParam>::args(own, maker);
    std::string counts;
    for (const Brix::Publisher& input : Machine<TypeParam>::inputs(own)) {
      counts += std::to_string(input.subscriberCount());
    }
    return std::tuple(dumpV2(own), counts, sm->refCount(), sm->hasNotificationActive(),
                      sm->fwkType(), subscribersBelow(*Machine<TypeParam>::top(own)));
  };
  EXPECT_EQ(build(Machine<TypeParam>::make), build(Machine<TypeParam>::factory));
}

TYPED_TEST(Life, LeavesNobodyRegisteredAndNoMachineBehind) {
  auto sm = this->make();
  this->add(0);
  sm.reset();
  EXPECT_EQ(subscribersBelow(*TestFixture::M::top(this->world)), 0U);
  EXPECT_EQ(this->registered(), this->each('0'));
  EXPECT_EQ(liveMachines().size(), 0U);
}

/// Whether its creator has switched it on or its constructor alone has run.
TYPED_TEST(Life, EndsSwitchedOffMarkedForDeletionRegisteredNowhereAndAlone) {
  const auto end = [this](const Ptr<TypeParam>& sm) {
    sm->retire();
    EXPECT_FALSE(sm->hasNotificationActive());
    EXPECT_TRUE(sm->kelMarkedForDeletion());
    EXPECT_EQ(subscribersBelow(*TestFixture::M::top(this->world)), 0U);
    EXPECT_EQ(this->registered(), this->each('0'));
    EXPECT_TRUE(TestFixture::M::children(*sm).empty());
  };
  end(this->make());
  end(this->constructed());
}

TYPED_TEST(Life, IsTheSameWithThreadSafePointers) {
  Kel::threadSafePointers.store(true);
  {
    World own;
    auto sm = TestFixture::M::args(own, TestFixture::M::make);
    TestFixture::M::add(own, 0);
    EXPECT_TRUE(TestFixture::M::mirrored(own, 0));
    TestFixture::M::add(own, 1);
    TestFixture::M::remove(own, 0);
    EXPECT_FALSE(TestFixture::M::mirrored(own, 0));
    EXPECT_EQ(sm->refCount(), 1U);
  }
  Kel::threadSafePointers.store(false);
  EXPECT_EQ(liveMachines().size(), 0U);
}

TYPED_TEST(Life, OfMachinesMadeBeforeTheThreadSafeSwitchIsThrownEndsWellAfterIt) {
  auto sm = this->make();
  Kel::threadSafePointers.store(true);
  this->add(0);
  sm.reset();
  Kel::threadSafePointers.store(false);
  EXPECT_EQ(liveMachines().size(), 0U);
}

TYPED_TEST(Life, NamesItsType) {
  const auto sm = this->make();
  EXPECT_STREQ(sm->fwkType().descriptor().name, Machine<TypeParam>::kName);
  EXPECT_STREQ(TypeParam::kelTypeName(), Machine<TypeParam>::kName);
  EXPECT_EQ(sm->fwkType(), sm->fwkType());
  EXPECT_EQ(&sm->fwkType().descriptor(), &Kel::describe<TypeParam>());
}

TYPED_TEST(Life, CanBeReachedThroughTheRowsOfItsAttributes) {
  const auto sm = this->make();
  const Kel::TypeDescriptor& type = sm->fwkType().descriptor();
  const Kel::Row* const initialized = type.row("initialized");
  ASSERT_NE(initialized, nullptr);
  EXPECT_TRUE(*static_cast<const bool*>(initialized->find(*sm, nullptr)));
  std::size_t inputs = 0;
  std::size_t children = 0;
  for (const Kel::Row& row : type.rows) {
    if (row.kind == Kel::RowKind::input) {
      ++inputs;
      EXPECT_NE(row.find(*sm, nullptr), nullptr) << row.name;
    } else if (row.kind == Kel::RowKind::children) {
      struct Seen {
        const Kel::Row& row;
        const TypeParam& sm;
        std::size_t children;
      } seen{row, *sm, 0};
      row.walk(*sm, &seen, [](void* context, const void* key, const void* child) {
        auto& all = *static_cast<Seen*>(context);
        ++all.children;
        EXPECT_EQ(all.row.find(all.sm, key), child);
      });
      EXPECT_EQ(seen.children, row.size(*sm));
      children += seen.children;
    } else if (row.kind == Kel::RowKind::single) {
      children += row.find(*sm, nullptr) == nullptr ? 0 : 1;
    }
  }
  EXPECT_EQ(inputs, TestFixture::M::inputs(this->world).size());
  EXPECT_EQ(children, TestFixture::M::children(*sm).size());
}

TYPED_TEST(Life, ListsItsOperations) {
  const auto& operations = Kel::describe<TypeParam>().operations;
  EXPECT_NE(std::find(operations.begin(), operations.end(), "handleInitialized"), operations.end());
}

TEST(FrameworkTypes, AreDistinct) {
  std::set<std::pair<const Kel::Module*, int>> types;
  const auto insert = [&](const auto& object) {
    types.emplace(object->fwkType().module, object->fwkType().index);
  };
  World world;
  const auto policyRoot =
      Machine<PolicyTranslateRootSm>::args(world, &policyTranslateRootSmFactory);
  const auto device = policyRoot->perDeviceSm("fw1");
  const auto vrf = device->perVrfSm(L3::VrfName("red"));
  const auto rule = vrf->perRuleSm(VelaL3::VelaPriority(20000));
  const auto origin = rule->perOriginSm("web");
  insert(policyRoot);
  insert(device);
  insert(vrf);
  insert(rule);
  insert(origin);
  insert(origin->matchSm());
  const auto sdRoot =
      Machine<ServiceDeviceTranslateRootSm>::args(world, &serviceDeviceTranslateRootSmFactory);
  const auto sd = sdRoot->perDeviceSm("fw1");
  const auto sdVrf = sd->perVrfSm(L3::VrfName("red"));
  insert(sdRoot);
  insert(sd);
  insert(sdVrf);
  insert(sdVrf->perL3IntfSm(Norv::IpGenAddr("10.0.0.1")));
  insert(vrf->cookie());
  EXPECT_EQ(types.size(), 11U);
}

}  // namespace
}  // namespace Contract
