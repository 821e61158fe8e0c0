#include <gtest/gtest.h>

#include "Kel/Exception.h"
#include "contract/Contract.h"

namespace Contract {
namespace {

/// The two machines that make the name of a VRF from text.
template <class Sm>
class VrfNameBounds : public MachineTest<Sm> {
 protected:
  /// Gives a VRF of this name and its mapping to version 1; whether version 2 has it.
  bool translated(const std::string& name, const String& netVrfName) {
    this->world.record()->netVrfNameByVrfIs(name, netVrfName);
    if constexpr (std::is_same_v<Sm, PolicyTranslatePerDeviceSm>) {
      this->world.policySetV1()->policyIs(L3::VrfName(name));
      return static_cast<bool>(this->world.policySetV2()->policy(netVrfName));
    } else {
      this->world.deviceV1()->vrfIs(L3::VrfName(name));
      return static_cast<bool>(this->world.deviceV2()->netVrf(netVrfName));
    }
  }
};
using PerDeviceMachines = ::testing::Types<PolicyTranslatePerDeviceSm, PerServiceDeviceTranslateSm>;
TYPED_TEST_SUITE(VrfNameBounds, PerDeviceMachines, MachineNames);

TYPED_TEST(VrfNameBounds, OfUpToAHundredBytesAreTranslated) {
  const auto sm = this->make();
  for (const std::size_t size : {0U, 1U, 99U, 100U}) {
    EXPECT_TRUE(this->translated(std::string(size, 'v'), "net of " + std::to_string(size))) << size;
  }
}

TYPED_TEST(VrfNameBounds, OfMoreRaiseFromAHandlerThatIsCalledDirectlyAndNothingChanges) {
  const auto sm = this->make();
  const std::string before = dumpV2(this->world);
  const auto children = TestFixture::M::children(*sm);
  try {
    sm->handleVrf(std::string(101, 'v'));
    FAIL() << "nothing was raised";
  } catch (const Kel::RangeException& error) {
    EXPECT_STREQ(error.what(), "Kel::String::bytes > maxLength() not allowed");
  }
  EXPECT_EQ(dumpV2(this->world), before);
  EXPECT_EQ(TestFixture::M::children(*sm), children);
  EXPECT_FALSE(sm->busy());
}

}  // namespace
}  // namespace Contract
