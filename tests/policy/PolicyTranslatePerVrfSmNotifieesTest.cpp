#include "KelBrix/KelBrix.h"
#include "policy/PolicyWorld.h"

namespace PolicyTests {
namespace {

/// Notes what it is told.
class Recorder final : public KelBrix::LegacyNotifiee {
 public:
  Recorder(Lines& journal, const std::function<void(AttrId)>& react = {})
      : journal_(journal), react_(react) {}
  void notify(AttrId id, const void* value) override {
    journal_.push_back(std::to_string(id) + (value == nullptr ? " none" : " value"));
    if (react_) {
      react_(id);
    }
  }

 private:
  Lines& journal_;
  std::function<void(AttrId)> react_;
};

/// What the per-VRF machine tells its own observers.
class PolicyTranslatePerVrfNotifiees : public PolicyWorld {
 protected:
  PolicyTranslatePerVrfNotifiees() { KelBrix::addLegacyNotifiee(*sm, recorder, false); }
  ~PolicyTranslatePerVrfNotifiees() override {
    if (sm) {
      KelBrix::removeLegacyNotifiee(*sm, recorder);
    }
  }

  Ptr<VelaL3::VelaPolicyConfig> v1 = policyV1();
  Ptr<VelaL3V2::VelaPolicyConfig> v2 =
      sourceV2->policySetIs(Vela::DeviceName("fw1"))->policyIs("net-red");
  Ptr<PolicyTranslatePerVrfSm> sm =
      VelaPolicyMonitor::policyTranslatePerVrfSmFactory(VrfName("red"), "net-red", v1, v2);
  Recorder recorder{journal};
};

TEST_F(PolicyTranslatePerVrfNotifiees, TheAttributesHaveTheirFixedIds) {
  EXPECT_EQ(PolicyTranslatePerVrfSm::vrfNameAttr.id, 130);
  EXPECT_EQ(PolicyTranslatePerVrfSm::netVrfNameAttr.id, 131);
  EXPECT_EQ(PolicyTranslatePerVrfSm::policyV1Attr.id, 132);
  EXPECT_EQ(PolicyTranslatePerVrfSm::policyV2Attr.id, 133);
  EXPECT_EQ(PolicyTranslatePerVrfSm::perRuleSmAttr.id, 134);
  EXPECT_EQ(PolicyTranslatePerVrfSm::cookieAttr.id, 135);
  EXPECT_EQ(PolicyTranslatePerVrfSm::initializedAttr.id, 139);
  EXPECT_EQ(PolicyTranslatePerVrfSm::initCompleteAttr.id, 140);
}

TEST_F(PolicyTranslatePerVrfNotifiees, AreToldOnceOfAChildThatComesOrGoes) {
  v1->ruleIs(p1(20000));
  EXPECT_EQ(noted(), Lines{"134 value"});
  sm->handleRule(p1(20000));
  EXPECT_EQ(noted(), Lines{}) << "the child was kept";
  v1->ruleDel(p1(20000));
  EXPECT_EQ(noted(), Lines{"134 none"});
  sm->handleRule(p1(20000));
  EXPECT_EQ(noted(), Lines{}) << "there was no child";
}

TEST_F(PolicyTranslatePerVrfNotifiees, AreToldThePriorityAndTheChildItself) {
  struct Listener final : Brix::Subscriber {
    Listener()
        : Subscriber([](const Brix::Publisher&, Subscriber& slot, AttrId, const void* key,
                        const void* value) {
            auto& self = static_cast<Listener&>(slot);
            self.priority = keyOf<VelaL3::VelaPriority>(key).value();
            self.child = value;
          }) {}
    std::uint32_t priority = 0;
    const void* child = nullptr;
  } listener;
  sm->notifieeList().subscriberAdd(listener);
  v1->ruleIs(p1(20000));
  EXPECT_EQ(listener.priority, 20000U);
  EXPECT_EQ(listener.child, static_cast<const Kel::PtrInterface*>(sm->perRuleSm(p1(20000)).get()));
  v1->ruleIs(p1(15000));
  v1->ruleDel(p1(20000));
  EXPECT_EQ(listener.priority, 20000U);
  EXPECT_EQ(listener.child, nullptr);
  sm->notifieeList().subscriberRemove(listener);
}

TEST_F(PolicyTranslatePerVrfNotifiees, AreToldOfAChildThatIsRemovedAndHandedOut) {
  v1->ruleIs(p1(20000));
  noted();
  const auto child = sm->perRuleSm(p1(20000));
  EXPECT_EQ(sm->perRuleSmDel(p1(20000)), child);
  EXPECT_EQ(noted(), Lines{"134 none"});
  EXPECT_EQ(sm->perRuleSmDel(p1(20000)), nullptr);
  EXPECT_EQ(noted(), Lines{});
}

TEST_F(PolicyTranslatePerVrfNotifiees, SeeTheCollectionAsItIsAfterTheChange) {
  Recorder counting{journal, [this](AttrId) { note(std::to_string(sm->perRuleSm().size())); }};
  KelBrix::removeLegacyNotifiee(*sm, recorder);
  KelBrix::addLegacyNotifiee(*sm, counting, false);
  v1->ruleIs(p1(20000));
  v1->ruleDel(p1(20000));
  EXPECT_EQ(noted(), (Lines{"134 value", "1", "134 none", "0"}));
  KelBrix::removeLegacyNotifiee(*sm, counting);
}

TEST_F(PolicyTranslatePerVrfNotifiees, AreToldOfEachFlagThatChangesAndOfNoEqualValue) {
  sm->initializedIs(true);
  sm->initCompleteIs(true);
  sm->cookieIs(sm->cookie());
  EXPECT_EQ(noted(), Lines{});
  sm->initializedIs(false);
  sm->initCompleteIs(false);
  sm->cookieIs(UpdateCookie::UpdateCookieIs());
  EXPECT_EQ(noted(), (Lines{"139 value", "140 value", "135 value"}));
  sm->initializedIs(false);
  sm->initCompleteIs(false);
  EXPECT_EQ(noted(), Lines{});
}

TEST_F(PolicyTranslatePerVrfNotifiees, ReadTheNewValueWhenTheyAreTold) {
  Recorder reading{journal, [this](AttrId) { note(sm->initialized() ? "true" : "false"); }};
  KelBrix::removeLegacyNotifiee(*sm, recorder);
  KelBrix::addLegacyNotifiee(*sm, reading, false);
  sm->initializedIs(false);
  sm->initializedIs(true);
  EXPECT_EQ(noted(), (Lines{"139 value", "false", "139 value", "true"}));
  KelBrix::removeLegacyNotifiee(*sm, reading);
}

TEST_F(PolicyTranslatePerVrfNotifiees, AreToldOfCleanUpAndOfANewInitializationInOrder) {
  v1->ruleIs(p1(20000));
  v1->ruleIs(p1(15000));
  noted();
  sm->cleanup();
  EXPECT_EQ(noted(), (Lines{"139 value", "134 none", "134 none"}));
  sm->cleanup();
  EXPECT_EQ(noted(), Lines{}) << "nothing is left to change";
  sm->handleInitialized();
  EXPECT_EQ(noted(), (Lines{"135 value", "139 value", "134 value", "134 value"}))
      << "initComplete was true already";
}

TEST_F(PolicyTranslatePerVrfNotifiees, AreToldOfInitCompleteAtTheEndOfAnInitialization) {
  sm->cleanup();
  sm->initCompleteIs(false);
  noted();
  sm->handleInitialized();
  EXPECT_EQ(noted(), (Lines{"135 value", "139 value", "140 value"}));
}

TEST_F(PolicyTranslatePerVrfNotifiees, AreToldBothTimesWhenAnInitializationPutsTheCookieBack) {
  v1->ruleIs(p1(20000));
  noted();
  EXPECT_THROW(sm->handleInitialized(), Kel::ReinstantiationException);
  EXPECT_EQ(noted(), (Lines{"135 value", "135 value"}));
}

TEST_F(PolicyTranslatePerVrfNotifiees, HearOfTheEndAlthoughTheMachineIsSwitchedOff) {
  v1->ruleIs(p1(20000));
  noted();
  sm->hasNotificationActiveIs(false);
  sm.reset();
  EXPECT_EQ(noted(), (Lines{"139 value", "134 none"}));
}

TEST_F(PolicyTranslatePerVrfNotifiees, DoNotKeepTheMachineAlive) {
  EXPECT_EQ(sm->refCount(), 1U);
  sm.reset();
  EXPECT_EQ(live<PolicyTranslatePerVrfSm>(), 0U);
}

TEST_F(PolicyTranslatePerVrfNotifiees, MayTakeAPointerToTheMachineWhileItEnds) {
  PolicyTranslatePerVrfSm* const plain = sm.get();
  Recorder holding{journal, [plain](AttrId) { const Ptr<PolicyTranslatePerVrfSm> hold(plain); }};
  KelBrix::addLegacyNotifiee(*sm, holding, false);
  sm.reset();
  EXPECT_EQ(live<PolicyTranslatePerVrfSm>(), 0U);
  EXPECT_EQ(noted(), (Lines{"139 value", "139 value"})) << "told once each";
}

TEST_F(PolicyTranslatePerVrfNotifiees, MayAddARuleAgainFromInsideARemoval) {
  v1->ruleIs(p1(20000));
  Recorder adding{journal, [this](AttrId) {
                    if (!v1->rule(p1(15000))) {
                      v1->ruleIs(p1(15000));
                    }
                  }};
  KelBrix::addLegacyNotifiee(*sm, adding, false);
  v1->ruleDel(p1(20000));
  EXPECT_EQ(keys(v2->rule()), Lines{"15000"});
  EXPECT_EQ(keys(sm->perRuleSm()), Lines{"15000"});
  KelBrix::removeLegacyNotifiee(*sm, adding);
}

TEST_F(PolicyTranslatePerVrfNotifiees, AreToldOfAChildThatGaveWayToAnotherOfItsPriority) {
  v1->ruleIs(p1(20000));
  bool once = true;
  const Observer watch(*v2, [&](AttrId, const void*) {
    if (std::exchange(once, false)) {
      v1->ruleDel(p1(20000));
      v1->ruleIs(p1(20000));
    }
  });
  noted();
  v1->ruleIs(p1(15000));
  EXPECT_EQ(sm->perRuleSm(p1(20000))->ruleV1(), v1->rule(p1(20000)));
  EXPECT_EQ(noted(), (Lines{"134 value", "134 value"})) << "of 15000, then of 20000";
}

TEST_F(PolicyTranslatePerVrfNotifiees, CanBeVisitedAndIterated) {
  EXPECT_TRUE(KelBrix::iteratorLegacyNotifiee(*sm));
  KelBrix::visitLegacyNotifiee(*sm, PolicyTranslatePerVrfSm::cookieAttr.id, sm->cookie().get());
  EXPECT_EQ(noted(), Lines{"135 value"});
  KelBrix::removeLegacyNotifiee(*sm, recorder);
  EXPECT_FALSE(KelBrix::iteratorLegacyNotifiee(*sm));
}

TEST_F(PolicyTranslatePerVrfNotifiees, AreToldOfAllThatIsThereWhenTheyAskForIt) {
  v1->ruleIs(p1(20000));
  v1->ruleIs(p1(15000));
  noted();
  Recorder asking{journal};
  KelBrix::addLegacyNotifiee(*sm, asking, true);
  EXPECT_EQ(noted(), (Lines{"134 value", "134 value", "135 value", "139 value", "140 value"}));
  KelBrix::removeLegacyNotifiee(*sm, asking);
}

TEST_F(PolicyTranslatePerVrfNotifiees, OfTheOtherMachinesThereAreNone) {
  v1->ruleIs(p1(20000));
  EXPECT_FALSE(sm->perRuleSm(p1(20000))->notifieeList());
  EXPECT_TRUE(sm->notifieeList());
}

}  // namespace
}  // namespace PolicyTests
