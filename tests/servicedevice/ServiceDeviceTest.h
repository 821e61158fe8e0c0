#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Kel/Kel.h"
#include "Kel/Slab.h"
#include "VelaL3/VelaL3.h"
#include "VelaL3V2/VelaL3V2.h"
#include "monitor/Status.h"
#include "servicedevice/VelaServiceDeviceTranslateSm.h"
#include "support/RingCapture.h"
#include "support/TraceCapture.h"

/// What the tests of the service-device tree have in common: the sources of both generations, a
/// monitor with a record for the device fw1, a clock that stands still, and a journal.
namespace ServiceDeviceTests {

using Brix::Ptr;
using Kel::AttrId;
using L3::VrfName;
using Norv::IpGenAddr;
using Norv::IpGenPrefix;
using VelaPolicyMonitor::DevicePolicyList;
using VelaPolicyMonitor::PerL3IntfServiceDeviceTranslateSm;
using VelaPolicyMonitor::PerServiceDeviceTranslateSm;
using VelaPolicyMonitor::PerVrfServiceDeviceTranslateSm;
using VelaPolicyMonitor::ServiceDeviceTranslateRootSm;
using VelaPolicyMonitor::UpdateCookie;
using Lines = std::vector<std::string>;

/// Captures both trace facilities; what it hands out has been the same in both.
class BothTraces {
 public:
  /// The lines since the last call as "<level> <message>".
  Lines take() {
    Lines text = text_.take();
    EXPECT_EQ(ring_.take(), text) << "the binary trace differs from the text trace";
    return text;
  }

 private:
  TestSupport::TraceCapture text_;
  TestSupport::RingCapture ring_;
};

/// The lines of one class: kRoot(8, "handleDevice()") is the level and the message.
struct LinesOf {
  std::string_view scope;
  std::string operator()(unsigned level, std::string_view rest) const {
    return std::to_string(level) + " " + std::string(scope) + std::string(rest);
  }
};
inline constexpr LinesOf kRoot{"void VelaPolicyMonitor::ServiceDeviceTranslateRootSm::"};
inline constexpr LinesOf kDevice{"void VelaPolicyMonitor::PerServiceDeviceTranslateSm::"};
inline constexpr LinesOf kVrf{"void VelaPolicyMonitor::PerVrfServiceDeviceTranslateSm::"};
inline constexpr LinesOf kIntf{"void VelaPolicyMonitor::PerL3IntfServiceDeviceTranslateSm::"};

/// How many objects of a type there are at this moment.
template <class T>
std::size_t live() {
  return Kel::slabOf<T>().live();
}

/// The key under which an observer was told of a change.
template <class Key>
const Key& keyOf(const void* key) {
  return *static_cast<const Key*>(key);
}

class ServiceDeviceTest : public testing::Test {
 protected:
  ServiceDeviceTest() {
    Kel::System::clockIs([this] { return now; });
  }
  ~ServiceDeviceTest() override { Kel::System::clockIs({}); }

  Ptr<ServiceDeviceTranslateRootSm> makeRoot() const {
    return VelaPolicyMonitor::serviceDeviceTranslateRootSmFactory(sourceV1, sourceV2, status);
  }
  Ptr<VelaL3::ServiceDeviceConfig> deviceV1(const char* name = "fw1") const {
    return sourceV1->serviceDeviceIs(name);
  }
  Ptr<VelaL3V2::ServiceDeviceConfig> deviceV2(const char* name = "fw1") const {
    return sourceV2->serviceDevice(name);
  }
  Ptr<VelaL3V2::NetVrfConfig> netVrf(const char* name = "net-red") const {
    return deviceV2()->netVrf(name);
  }
  /// Version 1 of one VRF of fw1 with one interface and one subnet, and its network VRF name.
  Ptr<VelaL3::VrfConfig> fillVrf(const char* vrf = "red", const char* netVrfName = "net-red",
                                 const char* address = "10.0.0.1") const {
    auto vrfV1 = deviceV1()->vrfIs(VrfName(vrf));
    vrfV1->l3IntfIs(IpGenAddr(address))->reachableSubnetIs(IpGenPrefix("10.1.0.0/16"));
    record->netVrfNameByVrfIs(vrf, netVrfName);
    return vrfV1;
  }
  void note(const std::string& what) { journal.push_back(what); }
  /// What was noted since the last call.
  Lines noted() { return std::exchange(journal, {}); }

  Kel::Seconds now = 1000;
  Ptr<VelaL3::ServiceDeviceSourceConfig> sourceV1 =
      VelaL3::ServiceDeviceSourceConfig::ServiceDeviceSourceConfigIs();
  Ptr<VelaL3V2::ServiceDeviceSourceConfig> sourceV2 =
      VelaL3V2::ServiceDeviceSourceConfig::ServiceDeviceSourceConfigIs();
  Ptr<VelaPolicyMonitor::Status> status = VelaPolicyMonitor::Status::StatusIs();
  Ptr<DevicePolicyList> record = status->devicePolicyListIs("fw1");
  Lines journal;
};

}  // namespace ServiceDeviceTests
