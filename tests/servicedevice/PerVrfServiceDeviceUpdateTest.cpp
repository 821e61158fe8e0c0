#include <stdexcept>

#include "KelBrix/KelBrix.h"
#include "servicedevice/ServiceDeviceTest.h"

namespace ServiceDeviceTests {
namespace {

/// The cookie, the time stamp, and what the per-VRF machine tells its notifiees.
class PerVrfServiceDeviceUpdate : public ServiceDeviceTest {
 protected:
  Ptr<PerVrfServiceDeviceTranslateSm> makeVrf() const {
    return VelaPolicyMonitor::perVrfServiceDeviceTranslateSmFactory(VrfName("red"), "net-red", v1,
                                                                    v2);
  }
  Ptr<VelaL3::VrfConfig> v1 = deviceV1()->vrfIs(VrfName("red"));
  Ptr<VelaL3V2::NetVrfConfig> v2 = sourceV2->serviceDeviceIs("fw1")->netVrfIs("net-red");
  const IpGenAddr one{"10.0.0.1"};
  const IpGenAddr two{"10.0.0.2"};
};

/// Notes "<attribute> <value>" for each notification.
class Notifiee : public KelBrix::LegacyNotifiee {
 public:
  void notify(AttrId id, const void* value) override {
    all.push_back(std::to_string(id) +
                  (id == 135 ? std::string(value == nullptr ? " null" : " cookie")
                             : (*static_cast<const bool*>(value) ? " true" : " false")));
    if (id == 135) {
      cookie = value;
    }
  }
  Lines take() { return std::exchange(all, {}); }
  Lines all;
  const void* cookie = nullptr;
};

TEST_F(PerVrfServiceDeviceUpdate, PublishesCookieInitializedAndInitCompleteWhenTheyChange) {
  const auto vrf = makeVrf();
  Notifiee notifiee;
  KelBrix::addLegacyNotifiee(*vrf, notifiee, false);
  vrf->cleanup();
  EXPECT_EQ(notifiee.take(), Lines{"136 false"});
  vrf->handleInitialized();
  EXPECT_EQ(notifiee.take(), (Lines{"135 cookie", "136 true"}));  // complete it was already
  EXPECT_EQ(notifiee.cookie, static_cast<const Kel::PtrInterface*>(vrf->cookie().get()));
  vrf->initCompleteIs(false);
  vrf->handleInitialized();
  EXPECT_EQ(notifiee.take(), (Lines{"137 false", "135 cookie", "137 true"}));
  KelBrix::removeLegacyNotifiee(*vrf, notifiee);
}

TEST_F(PerVrfServiceDeviceUpdate, PublishesNothingForAnEqualValue) {
  const auto vrf = makeVrf();
  Notifiee notifiee;
  KelBrix::addLegacyNotifiee(*vrf, notifiee, false);
  vrf->cookieIs(vrf->cookie());
  vrf->initializedIs(true);
  vrf->initCompleteIs(true);
  EXPECT_EQ(notifiee.take(), Lines{});
  vrf->cookieIs(nullptr);
  EXPECT_EQ(notifiee.take(), Lines{"135 null"});
  KelBrix::removeLegacyNotifiee(*vrf, notifiee);
}

TEST_F(PerVrfServiceDeviceUpdate, PublishesNothingForInterfacesSignalsAndStamps) {
  const auto vrf = makeVrf();
  Notifiee notifiee;
  KelBrix::addLegacyNotifiee(*vrf, notifiee, false);
  v1->l3IntfIs(one);
  v1->timestampIs(1);
  v1->l3IntfDel(one);
  EXPECT_EQ(notifiee.take(), Lines{});
  KelBrix::removeLegacyNotifiee(*vrf, notifiee);
}

TEST_F(PerVrfServiceDeviceUpdate, AnImmediateVisitTellsThePresentValuesInTheOrderOfTheirIds) {
  const auto vrf = makeVrf();
  Notifiee notifiee;
  KelBrix::addLegacyNotifiee(*vrf, notifiee, true);
  EXPECT_EQ(notifiee.take(), (Lines{"135 cookie", "136 true", "137 true"}));
  KelBrix::removeLegacyNotifiee(*vrf, notifiee);
}

TEST_F(PerVrfServiceDeviceUpdate, GoesOnPublishingWhileItsNotificationsAreOff) {
  const auto vrf = makeVrf();
  Notifiee notifiee;
  KelBrix::addLegacyNotifiee(*vrf, notifiee, false);
  vrf->hasNotificationActiveIs(false);
  vrf->cleanup();
  EXPECT_EQ(notifiee.take(), Lines{"136 false"});
  KelBrix::removeLegacyNotifiee(*vrf, notifiee);
}

TEST_F(PerVrfServiceDeviceUpdate, TellsItsEndToNotifieesThatHoldAndReleaseIt) {
  auto vrf = makeVrf();
  class Holder : public KelBrix::LegacyNotifiee {
   public:
    void notify(AttrId id, const void* value) override {
      const Ptr<PerVrfServiceDeviceTranslateSm> held(machine);
      told += id == 136 && !*static_cast<const bool*>(value);
    }
    PerVrfServiceDeviceTranslateSm* machine = nullptr;
    int told = 0;
  } holder;
  holder.machine = vrf.get();
  KelBrix::addLegacyNotifiee(*vrf, holder, false);
  vrf.reset();
  EXPECT_EQ(holder.told, 1);
  EXPECT_EQ(live<PerVrfServiceDeviceTranslateSm>(), 0U);
}

TEST_F(PerVrfServiceDeviceUpdate, MarksCleansUpAndThenUnregistersWhenItEnds) {
  v1->l3IntfIs(one);
  auto vrf = makeVrf();
  const auto* const ending = vrf.get();
  const Kel::Observer watch(*v2, [&](AttrId, const void*) {
    note(std::string("during clean-up: ") +
         (ending->kelMarkedForDeletion() ? "marked, " : "not marked yet, ") +
         std::to_string(v1->publisher().subscriberCount()) + " registered, " +
         std::to_string(live<PerL3IntfServiceDeviceTranslateSm>()) + " children");
  });
  vrf.reset();
  EXPECT_EQ(noted(), Lines{"during clean-up: marked, 1 registered, 0 children"});
  EXPECT_EQ(v1->publisher().subscriberCount(), 0U);
  EXPECT_EQ(live<UpdateCookie>(), 0U);
}

TEST_F(PerVrfServiceDeviceUpdate, DoesNothingWithoutACookie) {
  const auto vrf = makeVrf();
  vrf->cookieIs(nullptr);
  v1->l3IntfIs(one);
  EXPECT_NE(v2->l3Intf(one), nullptr);
  v1->l3Intf(one)->reachableSubnetIs(IpGenPrefix("10.1.0.0/16"));
  vrf->handleL3Intf();
  vrf->doUpdate();
  EXPECT_TRUE(Kel::isNoTime(v2->timestamp()));
}

TEST_F(PerVrfServiceDeviceUpdate, ChildrenKeepTheirCookieWhenItIsReplacedFromOutside) {
  v1->l3IntfIs(one);
  const auto vrf = makeVrf();
  const auto before = vrf->cookie();
  const auto child = vrf->perL3IntfSm(one);
  vrf->cookieIs(VelaPolicyMonitor::updateCookieFactory());
  EXPECT_EQ(child->cookie(), before);
  v1->l3Intf(one)->reachableSubnetIs(IpGenPrefix("10.1.0.0/16"));
  EXPECT_TRUE(before->updated());
  EXPECT_FALSE(vrf->cookie()->updated());
  v1->publisher().publish(259, &one);  // the interface's next notification
  EXPECT_EQ(vrf->perL3IntfSm(one)->cookie(), vrf->cookie());
}

TEST_F(PerVrfServiceDeviceUpdate, ASignalWithAnEqualTimeIsASignal) {
  const auto vrf = makeVrf();
  v1->timestampIs(5);
  v1->l3IntfIs(one);
  now = 3000;
  v1->timestampIs(5);
  EXPECT_EQ(v2->timestamp(), 3000.0);
}

TEST_F(PerVrfServiceDeviceUpdate, WhatAnObserverOfTheStampChangesIsStampedAtTheNextSignal) {
  const auto intfV1 = v1->l3IntfIs(one);
  const auto vrf = makeVrf();
  intfV1->reachableSubnetIs(IpGenPrefix("10.1.0.0/16"));
  now = 2000;
  {
    const Kel::Observer watch(*v2, [&](AttrId id, const void*) {
      if (id == 260) {
        intfV1->reachableSubnetIs(IpGenPrefix("10.2.0.0/16"));
      }
    });
    v1->timestampIs(1);
  }
  EXPECT_EQ(v2->timestamp(), 2000.0);
  EXPECT_TRUE(v2->l3Intf(one)->reachableSubnet(IpGenPrefix("10.2.0.0/16")));
  EXPECT_TRUE(vrf->cookie()->updated());
  now = 3000;
  v1->timestampIs(2);
  EXPECT_EQ(v2->timestamp(), 3000.0);
  EXPECT_FALSE(vrf->cookie()->updated());
}

TEST_F(PerVrfServiceDeviceUpdate, AnInterfaceThatAnObserverOfTheStampAddsIsStampedAtTheNextSignal) {
  const auto vrf = makeVrf();
  v1->l3IntfIs(one);
  {
    const Kel::Observer watch(*v2, [&](AttrId id, const void*) {
      if (id == 260) {
        v1->l3IntfIs(two);
      }
    });
    v1->timestampIs(1);
  }
  EXPECT_NE(v2->l3Intf(two), nullptr);
  EXPECT_TRUE(vrf->cookie()->updated());
  now = 3000;
  v1->timestampIs(2);
  EXPECT_EQ(v2->timestamp(), 3000.0);
}

TEST_F(PerVrfServiceDeviceUpdate, AStampThatCouldNotBeWrittenIsWrittenAtTheNextUpdate) {
  const auto vrf = makeVrf();
  v1->l3IntfIs(one);
  {
    const Kel::Observer refuse(*v2, [](AttrId, const void*) { throw std::runtime_error("no"); });
    EXPECT_THROW(vrf->doUpdate(), std::runtime_error);
  }
  EXPECT_TRUE(vrf->cookie()->updated());
  now = 4000;
  vrf->doUpdate();
  EXPECT_EQ(v2->timestamp(), 4000.0);
}

}  // namespace
}  // namespace ServiceDeviceTests
