#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Kel/Kel.h"
#include "VelaL3/Module.h"
#include "VelaL3/VelaL3.h"

namespace {

using L3::VrfName;
using Norv::IpGenAddr;
using Norv::IpGenPrefix;
using Lines = std::vector<std::string>;

/// Notes the attribute id of each notification of an entity.
class Notes {
 public:
  template <class Entity>
  explicit Notes(const Entity& entity)
      : watch_(entity, [this](Kel::AttrId id, const void*) { all_.push_back(id); }) {}
  std::vector<int> take() { return std::exchange(all_, {}); }

 private:
  std::vector<int> all_;
  Kel::Observer watch_;
};

TEST(VelaL3Entities, IdsAreThoseThatAgentsBuildAgainst) {
  EXPECT_EQ(VelaL3::VelaPolicySourceConfig::policySetAttr.id, 258);
  EXPECT_EQ(VelaL3::VelaPolicySetConfig::policyAttr.id, 259);
  EXPECT_EQ(VelaL3::VelaPolicyConfig::timestampAttr.id, 261);
  EXPECT_EQ(VelaL3::VelaRuleOriginConfig::descriptionAttr.id, 260);
  EXPECT_EQ(VelaL3::VelaRuleOriginConfig::ownerAttr.id, 262);
  EXPECT_EQ(VelaL3::VelaMatchConfig::srcIpAttr.id, 258);
  EXPECT_EQ(VelaL3::VelaMatchConfig::srcL4AppAttr.id, 263);
  EXPECT_EQ(VelaL3::VelaMatchConfig::srcL4AppRangeAttr.id, 264);
  EXPECT_EQ(VelaL3::ServiceDeviceSourceConfig::serviceDeviceAttr.id, 258);
  EXPECT_EQ(VelaL3::ServiceDeviceConfig::vrfAttr.id, 259);
  EXPECT_EQ(VelaL3::VrfConfig::l3IntfAttr.id, 259);
  EXPECT_EQ(VelaL3::VrfConfig::timestampAttr.id, 260);
  EXPECT_EQ(VelaL3::L3IntfConfig::reachableSubnetAttr.id, 259);
}

TEST(VelaL3Entities, EntriesAreMadeOnceAndNotifyWhenTheyComeAndGo) {
  const auto source = VelaL3::ServiceDeviceSourceConfig::ServiceDeviceSourceConfigIs();
  Notes notes(*source);
  const auto device = source->serviceDeviceIs("fw1");
  EXPECT_EQ(notes.take(), std::vector<int>{258});
  EXPECT_EQ(source->serviceDeviceIs("fw1"), device);
  EXPECT_EQ(notes.take(), std::vector<int>{});
  EXPECT_TRUE(device->hasNotificationActive());
  EXPECT_EQ(device->deviceName(), "fw1");
  source->serviceDeviceDel("fw1");
  source->serviceDeviceDel("fw1");
  EXPECT_EQ(notes.take(), std::vector<int>{258});
  EXPECT_EQ(source->serviceDevice("fw1"), nullptr);
}

TEST(VelaL3Entities, DeletingAllNotifiesOncePerKey) {
  const auto source = VelaL3::ServiceDeviceSourceConfig::ServiceDeviceSourceConfigIs();
  const auto vrf = source->serviceDeviceIs("fw1")->vrfIs(VrfName("red"));
  vrf->l3IntfIs(IpGenAddr("10.0.0.1"));
  vrf->l3IntfIs(IpGenAddr("10.0.0.2"));
  vrf->l3IntfIs(IpGenAddr("10.0.0.3"));
  Notes notes(*vrf);
  vrf->l3IntfDelAll();
  EXPECT_EQ(notes.take(), (std::vector<int>{259, 259, 259}));
  vrf->l3IntfDelAll();
  EXPECT_EQ(notes.take(), std::vector<int>{});
}

TEST(VelaL3Entities, MembersOfSetsNotifyWhenTheyComeAndGoOnly) {
  const auto source = VelaL3::ServiceDeviceSourceConfig::ServiceDeviceSourceConfigIs();
  const auto intf =
      source->serviceDeviceIs("fw1")->vrfIs(VrfName("red"))->l3IntfIs(IpGenAddr("10.0.0.1"));
  const IpGenPrefix subnet("10.1.0.0/16");
  Notes notes(*intf);
  intf->reachableSubnetIs(subnet);
  intf->reachableSubnetIs(subnet);
  EXPECT_EQ(notes.take(), std::vector<int>{259});
  intf->reachableSubnetDel(subnet);
  intf->reachableSubnetDel(subnet);
  EXPECT_EQ(notes.take(), std::vector<int>{259});
}

TEST(VelaL3Entities, ObserversFindTheChangeComplete) {
  const auto source = VelaL3::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  Lines seen;
  const Kel::Observer watch(*source, [&](Kel::AttrId, const void* key) {
    const auto& name = *static_cast<const Kel::String*>(key);
    seen.push_back(Kel::textOf(name) + (source->policySet(name) ? " there" : " gone"));
  });
  source->policySetIs("fw1");
  source->policySetDel("fw1");
  EXPECT_EQ(seen, (Lines{"fw1 there", "fw1 gone"}));
}

TEST(VelaL3Entities, ScalarsNotifyAlsoOfAnEqualValue) {
  const auto source = VelaL3::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  const auto policy = source->policySetIs("fw1")->policyIs(VrfName("red"));
  EXPECT_TRUE(Kel::isNoTime(policy->timestamp()));
  Notes notes(*policy);
  policy->timestampIs(12.5);
  policy->timestampIs(12.5);
  EXPECT_EQ(notes.take(), (std::vector<int>{261, 261}));
  policy->timestampIs(0);
  EXPECT_FALSE(Kel::isNoTime(policy->timestamp()));
}

TEST(VelaL3Entities, AnOriginStartsAsForwardWithoutLogTagsModifiersAndMatch) {
  const auto source = VelaL3::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  const auto origin = source->policySetIs("fw1")
                          ->policyIs(VrfName("red"))
                          ->ruleIs(VelaL3::VelaPriority(20000))
                          ->originIs("web");
  EXPECT_EQ(origin->name(), "web");
  EXPECT_EQ(origin->action(), VelaL3::VelaAction::forward);
  EXPECT_FALSE(origin->log());
  EXPECT_EQ(origin->tags(), "");
  EXPECT_TRUE(origin->policyModifierSet().empty());
  EXPECT_EQ(origin->match(), nullptr);
}

TEST(VelaL3Entities, TheMatchIsMadeOnceAndNotifiesWhenItComesAndGoes) {
  const auto source = VelaL3::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  const auto origin = source->policySetIs("fw1")
                          ->policyIs(VrfName("red"))
                          ->ruleIs(VelaL3::VelaPriority(20000))
                          ->originIs("web");
  Notes notes(*origin);
  const auto match = origin->matchIs();
  EXPECT_EQ(origin->matchIs(), match);
  EXPECT_EQ(notes.take(), std::vector<int>{263});
  origin->matchDel();
  origin->matchDel();
  EXPECT_EQ(notes.take(), std::vector<int>{263});
  EXPECT_EQ(origin->match(), nullptr);
}

TEST(VelaL3Entities, PublishingDeliversAgainWithoutAChange) {
  const auto source = VelaL3::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  Notes notes(*source);
  const Kel::String key = "fw1";
  source->publisher().publish(258, &key);
  EXPECT_EQ(notes.take(), std::vector<int>{258});
}

TEST(VelaL3Entities, AreNumberedInTheirModule) {
  const Kel::Module& module = VelaL3::kelModule(VelaL3::Type::policySource);
  EXPECT_STREQ(module.name(), "VelaL3");
  ASSERT_EQ(module.size(), 10U);
  EXPECT_STREQ(module.type(0).name, "VelaL3::VelaPolicySourceConfig");
  EXPECT_STREQ(module.type(5).name, "VelaL3::VelaMatchConfig");
  EXPECT_STREQ(module.type(9).name, "VelaL3::L3IntfConfig");
  const auto source = VelaL3::ServiceDeviceSourceConfig::ServiceDeviceSourceConfigIs();
  EXPECT_EQ(source->fwkType(), (Kel::FwkType{&module, 6}));
  EXPECT_EQ(source->serviceDeviceIs("a")->fwkType(), (Kel::FwkType{&module, 7}));
}

TEST(VelaL3Entities, EachCanBeMadeByItselfAndIsSwitchedOn) {
  EXPECT_TRUE(VelaL3::VelaMatchConfig::VelaMatchConfigIs()->hasNotificationActive());
  const VelaL3::VelaPriority priority(20000);
  EXPECT_EQ(VelaL3::VelaRuleConfig::VelaRuleConfigIs(priority)->priority(), priority);
  EXPECT_EQ(VelaL3::VelaRuleOriginConfig::VelaRuleOriginConfigIs("web")->name(), "web");
  EXPECT_EQ(VelaL3::VelaPolicyConfig::VelaPolicyConfigIs(VrfName("red"))->vrfName(), "red");
  EXPECT_EQ(VelaL3::VelaPolicySetConfig::VelaPolicySetConfigIs("fw1")->deviceName(), "fw1");
  EXPECT_EQ(VelaL3::ServiceDeviceConfig::ServiceDeviceConfigIs("fw1")->deviceName(), "fw1");
  EXPECT_EQ(VelaL3::VrfConfig::VrfConfigIs(VrfName("red"))->vrfName(), "red");
  const IpGenAddr address("10.0.0.1");
  const auto interface = VelaL3::L3IntfConfig::L3IntfConfigIs(address);
  EXPECT_EQ(interface->address(), address);
  EXPECT_TRUE(interface->hasNotificationActive());
  EXPECT_EQ(interface->refCount(), 1U);
}

}  // namespace
