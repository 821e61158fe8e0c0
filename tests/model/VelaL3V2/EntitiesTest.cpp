#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Kel/Kel.h"
#include "VelaL3V2/Module.h"
#include "VelaL3V2/VelaL3V2.h"

namespace {

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

TEST(VelaL3V2Entities, IdsAreThoseThatAgentsBuildAgainst) {
  EXPECT_EQ(VelaL3V2::VelaPolicySourceConfig::policySetAttr.id, 258);
  EXPECT_EQ(VelaL3V2::VelaPolicySetConfig::policyAttr.id, 259);
  EXPECT_EQ(VelaL3V2::VelaPolicyConfig::timestampAttr.id, 261);
  EXPECT_EQ(VelaL3V2::VelaMatchConfig::srcIpAttr.id, 258);
  EXPECT_EQ(VelaL3V2::VelaMatchConfig::dstL4AppRangeAttr.id, 266);
  EXPECT_EQ(VelaL3V2::ServiceDeviceSourceConfig::serviceDeviceAttr.id, 258);
  EXPECT_EQ(VelaL3V2::ServiceDeviceConfig::trafficInspectionAttr.id, 258);
  EXPECT_EQ(VelaL3V2::ServiceDeviceConfig::netVrfAttr.id, 259);
  EXPECT_EQ(VelaL3V2::NetVrfConfig::vrfNameAttr.id, 258);
  EXPECT_EQ(VelaL3V2::NetVrfConfig::l3IntfAttr.id, 259);
  EXPECT_EQ(VelaL3V2::NetVrfConfig::timestampAttr.id, 260);
  EXPECT_EQ(VelaL3V2::L3IntfConfig::reachableSubnetAttr.id, 259);
}

TEST(VelaL3V2Entities, EntriesAreMadeOnceAndNotifyWhenTheyComeAndGo) {
  const auto source = VelaL3V2::ServiceDeviceSourceConfig::ServiceDeviceSourceConfigIs();
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

TEST(VelaL3V2Entities, DeletingAllNotifiesOncePerKey) {
  const auto source = VelaL3V2::ServiceDeviceSourceConfig::ServiceDeviceSourceConfigIs();
  const auto vrf = source->serviceDeviceIs("fw1")->netVrfIs("net-red");
  vrf->l3IntfIs(IpGenAddr("10.0.0.1"));
  vrf->l3IntfIs(IpGenAddr("10.0.0.2"));
  vrf->l3IntfIs(IpGenAddr("10.0.0.3"));
  Notes notes(*vrf);
  vrf->l3IntfDelAll();
  EXPECT_EQ(notes.take(), (std::vector<int>{259, 259, 259}));
  vrf->l3IntfDelAll();
  EXPECT_EQ(notes.take(), std::vector<int>{});
}

TEST(VelaL3V2Entities, MembersOfSetsNotifyWhenTheyComeAndGoOnly) {
  const auto source = VelaL3V2::ServiceDeviceSourceConfig::ServiceDeviceSourceConfigIs();
  const auto intf =
      source->serviceDeviceIs("fw1")->netVrfIs("net-red")->l3IntfIs(IpGenAddr("10.0.0.1"));
  const IpGenPrefix subnet("10.1.0.0/16");
  Notes notes(*intf);
  intf->reachableSubnetIs(subnet);
  intf->reachableSubnetIs(subnet);
  EXPECT_EQ(notes.take(), std::vector<int>{259});
  intf->reachableSubnetDel(subnet);
  intf->reachableSubnetDel(subnet);
  EXPECT_EQ(notes.take(), std::vector<int>{259});
}

TEST(VelaL3V2Entities, ObserversFindTheChangeComplete) {
  const auto source = VelaL3V2::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  Lines seen;
  const Kel::Observer watch(*source, [&](Kel::AttrId, const void* key) {
    const auto& name = *static_cast<const Vela::DeviceName*>(key);
    seen.push_back(Kel::textOf(name) + (source->policySet(name) ? " there" : " gone"));
  });
  source->policySetIs("fw1");
  source->policySetDel("fw1");
  EXPECT_EQ(seen, (Lines{"fw1 there", "fw1 gone"}));
}

TEST(VelaL3V2Entities, ScalarsNotifyAlsoOfAnEqualValue) {
  const auto source = VelaL3V2::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  const auto policy = source->policySetIs("fw1")->policyIs("net-red");
  EXPECT_TRUE(Kel::isNoTime(policy->timestamp()));
  Notes notes(*policy);
  policy->timestampIs(12.5);
  policy->timestampIs(12.5);
  EXPECT_EQ(notes.take(), (std::vector<int>{261, 261}));
  policy->timestampIs(0);
  EXPECT_FALSE(Kel::isNoTime(policy->timestamp()));
}

TEST(VelaL3V2Entities, AnOriginStartsAsForwardWithoutLogTagsModifiersAndMatch) {
  const auto source = VelaL3V2::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  const auto origin = source->policySetIs("fw1")
                          ->policyIs("net-red")
                          ->ruleIs(VelaL3V2::VelaPriority(20000))
                          ->originIs("web");
  EXPECT_EQ(origin->name(), "web");
  EXPECT_EQ(origin->action(), VelaL3V2::VelaAction::forward);
  EXPECT_FALSE(origin->logEnabled());
  EXPECT_EQ(origin->tags(), "");
  EXPECT_TRUE(origin->policyModifierSet().empty());
  EXPECT_EQ(origin->match(), nullptr);
}

TEST(VelaL3V2Entities, ANetworkVrfStartsWithoutVrfAndWithoutAStamp) {
  const auto source = VelaL3V2::ServiceDeviceSourceConfig::ServiceDeviceSourceConfigIs();
  const auto netVrf = source->serviceDeviceIs("fw1")->netVrfIs("net-red");
  EXPECT_EQ(netVrf->netVrfName(), "net-red");
  EXPECT_EQ(netVrf->vrfName(), "");
  EXPECT_TRUE(Kel::isNoTime(netVrf->timestamp()));
}

TEST(VelaL3V2Entities, TheMatchIsMadeOnceAndNotifiesWhenItComesAndGoes) {
  const auto source = VelaL3V2::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  const auto origin = source->policySetIs("fw1")
                          ->policyIs("net-red")
                          ->ruleIs(VelaL3V2::VelaPriority(20000))
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

TEST(VelaL3V2Entities, PublishingDeliversAgainWithoutAChange) {
  const auto source = VelaL3V2::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  Notes notes(*source);
  const Vela::DeviceName key = "fw1";
  source->publisher().publish(258, &key);
  EXPECT_EQ(notes.take(), std::vector<int>{258});
}

TEST(VelaL3V2Entities, AreNumberedInTheirModule) {
  const Kel::Module& module = VelaL3V2::kelModule(VelaL3V2::Type::policySource);
  EXPECT_STREQ(module.name(), "VelaL3V2");
  ASSERT_EQ(module.size(), 10U);
  EXPECT_STREQ(module.type(0).name, "VelaL3V2::VelaPolicySourceConfig");
  EXPECT_STREQ(module.type(5).name, "VelaL3V2::VelaMatchConfig");
  EXPECT_STREQ(module.type(9).name, "VelaL3V2::L3IntfConfig");
  const auto source = VelaL3V2::ServiceDeviceSourceConfig::ServiceDeviceSourceConfigIs();
  EXPECT_EQ(source->fwkType(), (Kel::FwkType{&module, 6}));
  EXPECT_EQ(source->serviceDeviceIs("a")->fwkType(), (Kel::FwkType{&module, 7}));
}

TEST(VelaL3V2Entities, EachCanBeMadeByItselfAndIsSwitchedOn) {
  const auto match = VelaL3V2::VelaMatchConfig::VelaMatchConfigIs();
  EXPECT_TRUE(match->hasNotificationActive());
  EXPECT_EQ(match->refCount(), 1U);
  const VelaL3V2::VelaPriority priority(20000);
  EXPECT_EQ(VelaL3V2::VelaRuleConfig::VelaRuleConfigIs(priority)->priority(), priority);
  EXPECT_EQ(VelaL3V2::VelaRuleOriginConfig::VelaRuleOriginConfigIs("web")->name(), "web");
  EXPECT_EQ(VelaL3V2::VelaPolicyConfig::VelaPolicyConfigIs("net")->netVrfName(), "net");
  EXPECT_EQ(VelaL3V2::VelaPolicySetConfig::VelaPolicySetConfigIs("fw1")->deviceName(), "fw1");
  EXPECT_EQ(VelaL3V2::ServiceDeviceConfig::ServiceDeviceConfigIs("fw1")->deviceName(), "fw1");
  EXPECT_EQ(VelaL3V2::NetVrfConfig::NetVrfConfigIs("net")->netVrfName(), "net");
  const IpGenAddr address("10.0.0.1");
  EXPECT_EQ(VelaL3V2::L3IntfConfig::L3IntfConfigIs(address)->address(), address);
}

}  // namespace
