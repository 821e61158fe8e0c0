// What holds across the boundary of the shared libraries: this program is linked to them as an
// agent is, keeps its own symbols hidden, and uses of them what their headers offer.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <typeinfo>

#include "Kel/Slab.h"
#include "common/VelaTranslateSmCommon.h"
#include "policy/VelaPolicyTranslateSm.h"
#include "servicedevice/VelaServiceDeviceTranslateSm.h"

namespace {

using VelaPolicyMonitor::PolicyTranslateRootSm;

class Boundary : public testing::Test {
 protected:
  void addRule() {
    const auto policy = v1->policySetIs("fw1")->policyIs(L3::VrfName("red"));
    policy->ruleIs(VelaL3::VelaPriority(20000))->originIs("web")->matchIs();
  }

  const Brix::Ptr<VelaL3::VelaPolicySourceConfig> v1 =
      VelaL3::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  const Brix::Ptr<VelaL3V2::VelaPolicySourceConfig> v2 =
      VelaL3V2::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  const Brix::Ptr<VelaPolicyMonitor::Status> status = [] {
    auto made = VelaPolicyMonitor::Status::StatusIs();
    made->devicePolicyListIs("fw1")->netVrfNameByVrfIs("red", "net-red");
    return made;
  }();
  const Brix::Ptr<PolicyTranslateRootSm> root =
      VelaPolicyMonitor::policyTranslateRootSmFactory(v1, v2, status);
};

std::map<std::string, int> slabsByName() {
  std::map<std::string, int> slabs;
  Kel::Slab::forEach(
      [](void* all, const Kel::Slab& slab) {
        ++(*static_cast<std::map<std::string, int>*>(all))[slab.typeName()];
      },
      &slabs);
  return slabs;
}

TEST_F(Boundary, AnExceptionOfTheEntitiesIsCaughtByItsType) {
  EXPECT_THROW(VelaL3::VelaPriority(9999), Kel::RangeException);
  EXPECT_THROW(VelaL3::VelaPriority(9999), Kel::Exception);
  EXPECT_THROW(VelaL3::VelaPriority(9999), std::exception);
}

TEST_F(Boundary, AnExceptionOfAStateMachineIsCaughtByItsTypeAndByNoOther) {
  addRule();
  const auto perVrf = root->perDeviceSm("fw1")->perVrfSm(L3::VrfName("red"));
  const auto rule = [&] {
    perVrf->perRuleSmIs(VelaL3::VelaPriority(20000), nullptr, nullptr, nullptr);
  };
  EXPECT_THROW(rule(), Kel::ReinstantiationException);
  try {
    rule();
  } catch (const Kel::RangeException&) {
    FAIL() << "caught as what it is not";
  } catch (const Kel::Exception&) {
  }
}

TEST_F(Boundary, ObjectsAreKnownByTheirTypesOnBothSides) {
  addRule();
  const Kel::PtrInterface& machine = *root;
  EXPECT_NE(dynamic_cast<const PolicyTranslateRootSm*>(&machine), nullptr);
  EXPECT_TRUE(typeid(machine) == typeid(PolicyTranslateRootSm));

  // Made by the library, of a type that this program makes too.
  const Brix::Ptr<const Kel::PtrInterface> entry = v2->policySet("fw1");
  EXPECT_NE(dynamic_cast<const VelaL3V2::VelaPolicySetConfig*>(entry.get()), nullptr);
  EXPECT_EQ(dynamic_cast<const VelaL3::VelaPolicySetConfig*>(entry.get()), nullptr);
  EXPECT_EQ(entry->fwkType(), v2->policySetIs("fw2")->fwkType());
}

TEST_F(Boundary, ObjectsOfATypeAreCountedInOnePlaceWhoeverMakesThem) {
  const std::size_t before = Kel::slabOf<VelaL3V2::VelaRuleConfig>().live();
  addRule();
  EXPECT_EQ(Kel::slabOf<VelaL3V2::VelaRuleConfig>().live(), before + 1);
  EXPECT_EQ(Kel::slabOf<VelaPolicyMonitor::PolicyTranslatePerRuleSm>().live(), 1);
  const auto own = VelaPolicyMonitor::updateCookieFactory();
  EXPECT_EQ(Kel::slabOf<VelaPolicyMonitor::UpdateCookie>().live(), 2);
  for (const auto& [type, slabs] : slabsByName()) {
    EXPECT_EQ(slabs, 1) << type << " has more than one slab";
  }
}

TEST_F(Boundary, NotificationsOfATypeAreCountedInOnePlaceWhoeverWrites) {
  const Kel::EntityCounts& counts = VelaL3V2::VelaPolicySetConfig::kelCounts();
  EXPECT_EQ(Kel::slabOf<VelaL3V2::VelaPolicySetConfig>().counts(), &counts);
  const auto before = counts.notifications.value();
  addRule();  // the library creates a policy
  EXPECT_EQ(counts.notifications.value(), before + 1);
  v2->policySet("fw1")->policyIs("net-blue");
  EXPECT_EQ(counts.notifications.value(), before + 2);
}

TEST_F(Boundary, AFactoryIsFoundUnderTheNameThatItsHeaderGives) {
  const auto found = [](const char* name) { return dlsym(RTLD_DEFAULT, name); };
  EXPECT_EQ(found(VelaPolicyMonitor::kPolicyTranslateRootSmFactory),
            reinterpret_cast<void*>(&VelaPolicyMonitor::policyTranslateRootSmFactory));
  EXPECT_EQ(found(VelaPolicyMonitor::kServiceDeviceTranslateRootSmFactory),
            reinterpret_cast<void*>(&VelaPolicyMonitor::serviceDeviceTranslateRootSmFactory));
}

TEST_F(Boundary, TheMessageOfTheLibraryIsRegisteredWhenItIsLoaded) {
  const Kel::LogHandle* const message = Kel::LogHandle::find("ZARN_MOUNT_TIMEOUT");
  ASSERT_NE(message, nullptr);
  EXPECT_EQ(message, &VelaPolicyMonitor::mountTimeout());
}

TEST_F(Boundary, TheFrontDoorsBringTheFrameworkAlong) {
  struct : KelBrix::LegacyNotifiee {
    void notify(Kel::AttrId attributeId, const void* /*value*/) override { last = attributeId; }
    Kel::AttrId last = 0;
  } notifiee;
  addRule();
  const auto perVrf = root->perDeviceSm("fw1")->perVrfSm(L3::VrfName("red"));
  KelBrix::addLegacyNotifiee(*perVrf, notifiee, false);
  perVrf->initCompleteIs(false);
  KelBrix::removeLegacyNotifiee(*perVrf, notifiee);
  EXPECT_EQ(notifiee.last, decltype(perVrf)::element_type::initCompleteAttr.id);

  Kel::System::clockIs([] { return Kel::Seconds{12.5}; });
  v1->policySet("fw1")->policy("red")->timestampIs(1);
  Kel::System::clockIs(nullptr);
  EXPECT_EQ(v2->policySet("fw1")->policy("net-red")->timestamp(), 12.5);
}

}  // namespace
