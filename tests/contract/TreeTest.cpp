#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "contract/Machines.h"
#include "contract/Watch.h"

namespace Contract {
namespace {

/// Both trees under their roots.
struct Trees {
  World world;
  Ptr<PolicyTranslateRootSm> policy =
      policyTranslateRootSmFactory(world.policySrcV1, world.policySrcV2, world.status);
  Ptr<ServiceDeviceTranslateRootSm> serviceDevice =
      serviceDeviceTranslateRootSmFactory(world.sdSourceV1, world.sdSourceV2, world.status);

  /// What trees built on version 1 as it is now write into an empty version 2.
  std::string expected() const {
    World fresh;
    fresh.policySrcV1 = world.policySrcV1;
    fresh.sdSourceV1 = world.sdSourceV1;
    fresh.status = world.status;
    const auto root =
        policyTranslateRootSmFactory(fresh.policySrcV1, fresh.policySrcV2, fresh.status);
    const auto sdRoot =
        serviceDeviceTranslateRootSmFactory(fresh.sdSourceV1, fresh.sdSourceV2, fresh.status);
    return dumpV2(fresh);
  }

  // The version-1 entities of the path, as far as they are still there.
  void atSet(auto use) const {
    if (const auto set = world.policySetV1()) {
      use(*set);
    }
  }
  void atPolicy(auto use) const {
    atSet([&](auto& set) {
      if (const auto policyV1 = set.policy(L3::VrfName("red"))) {
        use(*policyV1);
      }
    });
  }
  void atRule(auto use) const {
    atPolicy([&](auto& policyV1) {
      if (const auto rule = policyV1.rule(VelaL3::VelaPriority(20000))) {
        use(*rule);
      }
    });
  }
  void atOrigin(auto use) const {
    atRule([&](auto& rule) {
      if (const auto origin = rule.origin("web")) {
        use(*origin);
      }
    });
  }
  void atMatch(auto use) const {
    atOrigin([&](auto& origin) {
      if (const Ptr<VelaL3::VelaMatchConfig> match = origin.match()) {
        use(*match);
      }
    });
  }
  void atDevice(auto use) const {
    if (const auto device = world.deviceV1()) {
      use(*device);
    }
  }
  void atVrf(auto use) const {
    atDevice([&](auto& device) {
      if (const auto vrf = device.vrf(L3::VrfName("red"))) {
        use(*vrf);
      }
    });
  }
  void atIntf(auto use) const {
    atVrf([&](auto& vrf) {
      if (const auto intf = vrf.l3Intf(Norv::IpGenAddr("10.0.0.1"))) {
        use(*intf);
      }
    });
  }

  /// Changes on every level, from the leaves to the roots.
  void changes() {
    const Norv::IpGenPrefix prefix("10.7.0.0/16");
    const Norv::IpGenAddr address("10.7.0.1");
    atMatch([&](auto& match) { match.srcIpIs(prefix); });
    atMatch([&](auto& match) { match.srcIpDel(prefix); });
    atOrigin(
        [&](auto& origin) { origin.policyModifierSetIs(VelaL3::VelaPolicyModifier::stateless); });
    atOrigin([&](auto& origin) { origin.tagsIs("tagged"); });
    atRule([&](auto& rule) { rule.originIs("other")->matchIs()->dstIpIs(prefix); });
    atPolicy([&](auto& policyV1) {
      policyV1.ruleIs(VelaL3::VelaPriority(15000))
          ->originIs("web")
          ->actionIs(VelaL3::VelaAction::drop);
    });
    atPolicy([&](auto& policyV1) { policyV1.timestampIs(1); });
    atSet([&](auto& set) { set.policyIs(World::vrf(1))->ruleIs(VelaL3::VelaPriority(11000)); });
    world.policySrcV1->policySetIs(World::device(1));
    atIntf([&](auto& intf) { intf.reachableSubnetIs(prefix); });
    atVrf([&](auto& vrf) { vrf.l3IntfIs(address)->reachableSubnetIs(prefix); });
    atVrf([&](auto& vrf) { vrf.timestampIs(1); });
    atDevice([&](auto& device) { device.vrfIs(World::vrf(1))->l3IntfIs(address); });
    world.sdSourceV1->serviceDeviceIs(World::device(1));
    if (const auto record = world.record()) {
      record->trafficInspectionIs(Vela::TrafficInspection{1});
      record->netVrfNameByVrfIs("red", "net-renamed");
    }
    atRule([&](auto& rule) { rule.originDel("other"); });
    atPolicy([&](auto& policyV1) { policyV1.ruleDel(VelaL3::VelaPriority(15000)); });
    atSet([&](auto& set) { set.policyDel(World::vrf(1)); });
    atDevice([&](auto& device) { device.vrfDel(World::vrf(1)); });
    world.policySrcV1->policySetDel(World::device(1));
    world.sdSourceV1->serviceDeviceDel(World::device(1));
  }
};

/// What an observer of version 2 does, once, from inside whatever handler it is called by.
struct Intrusion {
  const char* name;
  void (*act)(Trees& trees);
};
void PrintTo(const Intrusion& intrusion, std::ostream* out) { *out << intrusion.name; }

const VelaL3::VelaPriority kPathRule(20000);
const L3::VrfName kRed("red");

void renew(Trees& trees) {
  trees.atPolicy([](auto& policy) { policy.ruleIs(kPathRule)->originIs("web")->matchIs(); });
}

/// After these, version 2 comes out as a fresh translation would.
const Intrusion kChangesOfVersion1[] = {
    {"NoChange", [](Trees&) {}},
    {"Device", [](Trees& trees) { trees.world.policySrcV1->policySetDel("fw1"); }},
    {"Vrf", [](Trees& trees) { trees.atSet([](auto& set) { set.policyDel(kRed); }); }},
    {"Rule", [](Trees& trees) { trees.atPolicy([](auto& policy) { policy.ruleDel(kPathRule); }); }},
    {"AllRules", [](Trees& trees) { trees.atPolicy([](auto& policy) { policy.ruleDelAll(); }); }},
    {"Origin", [](Trees& trees) { trees.atRule([](auto& rule) { rule.originDel("web"); }); }},
    {"Sibling", [](Trees& trees) { trees.atRule([](auto& rule) { rule.originDel("other"); }); }},
    {"Prefixes", [](Trees& trees) { trees.atMatch([](auto& match) { match.dstIpDelAll(); }); }},
    {"ServiceDevice", [](Trees& trees) { trees.world.sdSourceV1->serviceDeviceDel("fw1"); }},
    {"ServiceDeviceVrf",
     [](Trees& trees) { trees.atDevice([](auto& device) { device.vrfDel(kRed); }); }},
    {"Interface", [](Trees& trees) { trees.atVrf([](auto& vrf) { vrf.l3IntfDelAll(); }); }},
    {"Subnets",
     [](Trees& trees) { trees.atIntf([](auto& intf) { intf.reachableSubnetDelAll(); }); }},
    {"Mapping", [](Trees& trees) { trees.world.record()->netVrfNameByVrfDel("red"); }},
    {"DeviceRenewed",
     [](Trees& trees) {
       trees.world.policySrcV1->policySetDel("fw1");
       trees.world.policySrcV1->policySetIs("fw1")->policyIs(kRed);
       renew(trees);
     }},
    {"VrfRenewed",
     [](Trees& trees) {
       trees.atSet([](auto& set) {
         set.policyDel(kRed);
         set.policyIs(kRed);
       });
       renew(trees);
     }},
    {"RuleRenewed",
     [](Trees& trees) {
       trees.atPolicy([](auto& policy) { policy.ruleDel(kPathRule); });
       renew(trees);
     }},
    {"OriginRenewed",
     [](Trees& trees) {
       trees.atRule([](auto& rule) { rule.originDel("web"); });
       renew(trees);
     }},
    {"InterfaceRenewed",
     [](Trees& trees) {
       trees.atVrf([](auto& vrf) {
         vrf.l3IntfDel(Norv::IpGenAddr("10.0.0.1"));
         vrf.l3IntfIs(Norv::IpGenAddr("10.0.0.1"))
             ->reachableSubnetIs(Norv::IpGenPrefix("172.16.0.0/12"));
       });
     }},
    {"ServiceDeviceRenewed",
     [](Trees& trees) {
       trees.world.sdSourceV1->serviceDeviceDel("fw1");
       trees.world.sdSourceV1->serviceDeviceIs("fw1")->vrfIs(kRed);
     }},
};

/// After these version 2 may differ from a fresh translation; it must end empty with the roots.
const Intrusion kOtherIntrusions[] = {
    {"PolicyRoot", [](Trees& trees) { trees.policy.reset(); }},
    {"ServiceDeviceRoot", [](Trees& trees) { trees.serviceDevice.reset(); }},
    {"BothRoots",
     [](Trees& trees) {
       trees.policy.reset();
       trees.serviceDevice.reset();
     }},
    {"DeviceMachine", [](Trees& trees) { trees.policy->perDeviceSmDel("fw1"); }},
    {"VrfMachine",
     [](Trees& trees) {
       if (const auto device = trees.policy->perDeviceSm("fw1")) {
         device->perVrfSmDel(kRed);
       }
     }},
    {"RuleMachines",
     [](Trees& trees) {
       if (const auto device = trees.policy->perDeviceSm("fw1")) {
         if (const auto vrf = device->perVrfSm(kRed)) {
           vrf->perRuleSmDelAll();
         }
       }
     }},
    {"EveryCleanup",
     [](Trees& trees) {
       trees.policy->cleanup();
       trees.serviceDevice->cleanup();
     }},
    {"EveryWalkAgain",
     [](Trees& trees) {
       trees.policy->handlePolicySet();
       trees.serviceDevice->handleDevice();
     }},
    {"ServiceDeviceMachine", [](Trees& trees) { trees.serviceDevice->perDeviceSmDel("fw1"); }},
    {"Match", [](Trees& trees) { trees.atOrigin([](auto& origin) { origin.matchDel(); }); }},
    {"Record", [](Trees& trees) { trees.world.status->devicePolicyListDel("fw1"); }},
    {"Version2",
     [](Trees& trees) {
       trees.world.policySrcV2->policySetDelAll();
       trees.world.sdSourceV2->serviceDeviceDelAll();
     }},
    {"Silence",
     [](Trees& trees) {
       trees.policy->hasNotificationActiveIs(false);
       trees.serviceDevice->hasNotificationActiveIs(false);
     }},
};

class IntrudedTree : public ::testing::TestWithParam<Intrusion> {
 protected:
  /// Intrudes at the n-th notification; returns whether there was one.
  static bool run(Trees& trees, int nth) {
    const Watch watch(trees.world, [&](int number) {
      if (number == nth) {
        GetParam().act(trees);
      }
    });
    trees.changes();
    return watch.count() >= nth;
  }
  static void expectGoodEnd(Trees& trees, int nth) {
    trees.policy.reset();
    trees.serviceDevice.reset();
    EXPECT_EQ(dumpV2(trees.world), "") << nth;
    EXPECT_EQ(liveMachines().size(), 0U) << nth;
    EXPECT_EQ(subscribersBelow(*trees.world.policySrcV1), 0U) << nth;
    EXPECT_EQ(subscribersBelow(*trees.world.sdSourceV1), 0U) << nth;
  }
};

class ChangedTree : public IntrudedTree {};
TEST_P(ChangedTree, ComesOutAsAFreshTranslationFromWhicheverNotificationItIsChanged) {
  bool intruded = true;
  for (int nth = 1; intruded; ++nth) {
    Trees trees;
    intruded = run(trees, nth);
    ASSERT_EQ(dumpV2(trees.world), trees.expected()) << "changed at notification " << nth;
    expectGoodEnd(trees, nth);
    EXPECT_TRUE(intruded || nth > 30);
  }
}

class DisturbedTree : public IntrudedTree {};
TEST_P(DisturbedTree, EndsWithAnEmptyVersion2FromWhicheverNotificationItIsDisturbed) {
  bool intruded = true;
  for (int nth = 1; intruded; ++nth) {
    Trees trees;
    try {
      intruded = run(trees, nth);
    } catch (const Kel::ReinstantiationException&) {
      // The writer is told that version 2 was changed under a machine's hands.
    }
    expectGoodEnd(trees, nth);
    EXPECT_TRUE(intruded || nth > 30);
  }
}

const auto nameOf = [](const auto& info) { return std::string(info.param.name); };
INSTANTIATE_TEST_SUITE_P(By, ChangedTree, ::testing::ValuesIn(kChangesOfVersion1), nameOf);
INSTANTIATE_TEST_SUITE_P(By, DisturbedTree, ::testing::ValuesIn(kOtherIntrusions), nameOf);

TEST(SuspendedTree, IgnoresChangesOnEveryLevelAndFollowsThoseAfterwards) {
  Trees trees;
  const std::string before = dumpV2(trees.world);
  trees.policy->hasNotificationActiveIs(false);
  trees.serviceDevice->hasNotificationActiveIs(false);
  trees.changes();
  EXPECT_EQ(dumpV2(trees.world), before);
  trees.policy->hasNotificationActiveIs(true);
  trees.serviceDevice->hasNotificationActiveIs(true);
  EXPECT_EQ(dumpV2(trees.world), before);
  trees.atMatch([](auto& match) { match.srcIpIs(Norv::IpGenPrefix("10.8.0.0/16")); });
  trees.atIntf([](auto& intf) { intf.reachableSubnetIs(Norv::IpGenPrefix("10.8.0.0/16")); });
  EXPECT_TRUE(trees.world.matchV2()->srcIp(Norv::IpGenPrefix("10.8.0.0/16")));
  EXPECT_TRUE(trees.world.intfV2()->reachableSubnet(Norv::IpGenPrefix("10.8.0.0/16")));
}

TEST(SuspendedTree, IsBroughtUpToDateByCleanUpAndInitializationOfItsRoots) {
  Trees trees;
  trees.policy->hasNotificationActiveIs(false);
  trees.serviceDevice->hasNotificationActiveIs(false);
  trees.changes();
  trees.policy->hasNotificationActiveIs(true);
  trees.serviceDevice->hasNotificationActiveIs(true);
  trees.policy->cleanup();
  trees.serviceDevice->cleanup();
  EXPECT_EQ(dumpV2(trees.world), "");
  trees.policy->handleInitialized();
  trees.serviceDevice->handleInitialized();
  EXPECT_EQ(dumpV2(trees.world), trees.expected());
}

}  // namespace
}  // namespace Contract
