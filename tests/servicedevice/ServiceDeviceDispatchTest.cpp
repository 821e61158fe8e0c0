#include <limits>
#include <stdexcept>

#include "servicedevice/Module.h"
#include "servicedevice/ServiceDeviceTest.h"

namespace ServiceDeviceTests {
namespace {

/// Which attributes the dispatchers react to, and what becomes of exceptions.
class ServiceDeviceDispatch : public ServiceDeviceTest {
 protected:
  /// Publishes every attribute id there is and returns those that something was traced for. The
  /// keys are of the types that the watched attributes have.
  template <class Entity>
  static std::vector<int> idsReactedTo(const Entity& entity,
                                       const std::function<const void*(int)>& key) {
    const TestSupport::TraceCapture lines;
    std::vector<int> reacted;
    for (int id = std::numeric_limits<AttrId>::min(); id <= std::numeric_limits<AttrId>::max();
         ++id) {
      const auto before = lines.lines().size();
      entity.publisher().publish(static_cast<AttrId>(id), key(id));
      if (lines.lines().size() != before) {
        reacted.push_back(id);
      }
    }
    return reacted;
  }
};

TEST_F(ServiceDeviceDispatch, TheRootReactsToServiceDevicesOnly) {
  const auto root = makeRoot();
  const Kel::String name = "fw1";
  EXPECT_EQ(idsReactedTo(*sourceV1, [&](int) { return &name; }), std::vector<int>{258});
}

TEST_F(ServiceDeviceDispatch, ADeviceReactsToItsVrfsOnly) {
  const auto v1 = deviceV1();
  const auto root = makeRoot();
  const VrfName name("red");
  EXPECT_EQ(idsReactedTo(*v1, [&](int) { return &name; }), std::vector<int>{259});
}

TEST_F(ServiceDeviceDispatch, ADeviceReactsToMappingsAndTrafficInspectionOfItsRecordOnly) {
  deviceV1();
  const auto root = makeRoot();
  const Kel::String name = "red";
  EXPECT_EQ(idsReactedTo(*record, [&](int) { return &name; }), (std::vector<int>{259, 260}));
}

TEST_F(ServiceDeviceDispatch, AVrfReactsToItsInterfacesAndItsSignalOnly) {
  const auto v1 = fillVrf();
  const auto root = makeRoot();
  const auto vrf = root->perDeviceSm("fw1")->perVrfSm(VrfName("red"));
  const IpGenAddr address("10.0.0.1");
  EXPECT_EQ(idsReactedTo(*v1,
                         [&](int id) {
                           vrf->cookie()->updatedIs(id == 260);
                           return &address;
                         }),
            (std::vector<int>{259, 260}));
}

TEST_F(ServiceDeviceDispatch, AnInterfaceReactsToItsSubnetsOnly) {
  const auto v1 = fillVrf()->l3Intf(IpGenAddr("10.0.0.1"));
  const auto root = makeRoot();
  const IpGenPrefix subnet("10.1.0.0/16");
  EXPECT_EQ(idsReactedTo(*v1, [&](int) { return &subnet; }), std::vector<int>{259});
}

TEST_F(ServiceDeviceDispatch, ConvergenceFlagsOfARecordComeBackToNobody) {
  deviceV1();
  const auto root = makeRoot();
  BothTraces traces;
  record->serviceDeviceConvergeIs(true);
  record->policyConvergeIs(true);
  EXPECT_EQ(traces.take(), Lines{});
}

TEST_F(ServiceDeviceDispatch, AMarkedMachineIgnoresWhatItWatches) {
  const auto vrfV1 = fillVrf();
  const auto root = makeRoot();
  const auto device = root->perDeviceSm("fw1");
  device->kelDoZombieReactors(true);
  BothTraces traces;
  record->netVrfNameByVrfIs("red", "elsewhere");
  record->trafficInspectionIs(Vela::TrafficInspection{1});
  deviceV1()->vrfIs(VrfName("blue"));
  EXPECT_EQ(traces.take(), Lines{});
  vrfV1->l3IntfIs(IpGenAddr("10.0.0.2"));  // the child is not marked
  EXPECT_NE(netVrf()->l3Intf(IpGenAddr("10.0.0.2")), nullptr);
  device->kelDoZombieReactors(false);
  record->trafficInspectionIs(Vela::TrafficInspection{2});
  EXPECT_EQ(deviceV2()->trafficInspection(), Vela::TrafficInspection{2});
  EXPECT_EQ(netVrf("elsewhere"), nullptr);  // what it missed is not replayed
}

TEST_F(ServiceDeviceDispatch, TheTypesAreNumberedFromTheRootDownInOneModule) {
  fillVrf();
  const auto root = makeRoot();
  const auto device = root->perDeviceSm("fw1");
  const auto vrf = device->perVrfSm(VrfName("red"));
  const auto intf = vrf->perL3IntfSm(IpGenAddr("10.0.0.1"));
  const Kel::Module& module = kelModule(VelaPolicyMonitor::ServiceDeviceType::root);
  EXPECT_EQ(module.size(), 4U);
  EXPECT_EQ(root->fwkType(), (Kel::FwkType{&module, 0}));
  EXPECT_EQ(device->fwkType(), (Kel::FwkType{&module, 1}));
  EXPECT_EQ(vrf->fwkType(), (Kel::FwkType{&module, 2}));
  EXPECT_EQ(intf->fwkType(), (Kel::FwkType{&module, 3}));
  EXPECT_STREQ(module.type(0).name, "VelaPolicyMonitor::ServiceDeviceTranslateRootSm");
  EXPECT_STREQ(module.type(1).name, "VelaPolicyMonitor::PerServiceDeviceTranslateSm");
  EXPECT_STREQ(module.type(2).name, "VelaPolicyMonitor::PerVrfServiceDeviceTranslateSm");
  EXPECT_STREQ(module.type(3).name, "VelaPolicyMonitor::PerL3IntfServiceDeviceTranslateSm");
}

TEST_F(ServiceDeviceDispatch, AVrfNameOfAHundredBytesIsTranslated) {
  const std::string name(100, 'v');
  deviceV1()->vrfIs(VrfName(name));
  const auto root = makeRoot();
  record->netVrfNameByVrfIs(name, "net");
  EXPECT_EQ(netVrf("net")->vrfName(), name);
}

TEST_F(ServiceDeviceDispatch, DirectCallsLetExceptionsOut) {
  fillVrf();
  const auto root = makeRoot();
  const auto device = root->perDeviceSm("fw1");
  try {
    device->handleVrf(std::string(101, 'v'));
    FAIL() << "no exception";
  } catch (const Kel::RangeException& error) {
    EXPECT_STREQ(error.what(), "Kel::String::bytes > maxLength() not allowed");
  }
  const Kel::Observer refuse(*netVrf(),
                             [](AttrId, const void*) { throw std::runtime_error("no"); });
  const auto vrf = device->perVrfSm(VrfName("red"));
  vrf->cookie()->updatedIs(true);
  EXPECT_THROW(vrf->doUpdate(), std::runtime_error);
}

TEST_F(ServiceDeviceDispatch, AFirstWalkThatFailsLeavesNothingRegisteredAndNoFlag) {
  fillVrf();
  const auto v2 = sourceV2->serviceDeviceIs("fw1");
  {
    const Kel::Observer refuse(*v2, [](AttrId id, const void*) {
      if (id == 258) {
        throw std::runtime_error("no traffic inspection");
      }
    });
    EXPECT_THROW(makeRoot(), std::runtime_error);
  }
  EXPECT_FALSE(record->serviceDeviceConverge());
  EXPECT_EQ(sourceV1->publisher().subscriberCount(), 0U);
  EXPECT_EQ(deviceV1()->publisher().subscriberCount(), 0U);
  EXPECT_EQ(record->publisher().subscriberCount(), 0U);
  EXPECT_EQ(live<ServiceDeviceTranslateRootSm>(), 0U);
  EXPECT_EQ(live<PerServiceDeviceTranslateSm>(), 0U);
  EXPECT_EQ(live<PerVrfServiceDeviceTranslateSm>(), 0U);
  EXPECT_EQ(live<PerL3IntfServiceDeviceTranslateSm>(), 0U);
}

using ServiceDeviceDispatchDeathTest = ServiceDeviceDispatch;

TEST_F(ServiceDeviceDispatchDeathTest, AMappingOfAVrfNameOf101BytesEndsTheProcess) {
  deviceV1();
  const auto root = makeRoot();
  EXPECT_DEATH(record->netVrfNameByVrfIs(std::string(101, 'v'), "net"), "maxLength");
}

TEST_F(ServiceDeviceDispatchDeathTest, RemovingAMappingOfAVrfNameOf101BytesEndsTheProcess) {
  record->netVrfNameByVrfIs(std::string(101, 'v'), "net");
  deviceV1();
  const auto root = makeRoot();
  EXPECT_DEATH(record->netVrfNameByVrfDel(std::string(101, 'v')), "maxLength");
}

TEST_F(ServiceDeviceDispatchDeathTest, AnObserverOfVersion2ThatThrowsEndsTheProcessAtEveryLevel) {
  const auto vrfV1 = fillVrf();
  const auto root = makeRoot();
  const auto refuse = [](AttrId, const void*) { throw std::runtime_error("refused"); };
  const auto intfV1 = vrfV1->l3Intf(IpGenAddr("10.0.0.1"));
  const Kel::Observer source(*sourceV2, refuse);
  EXPECT_DEATH(sourceV1->serviceDeviceDel("fw1"), "refused");
  const Kel::Observer device(*deviceV2(), refuse);
  EXPECT_DEATH(record->trafficInspectionIs(Vela::TrafficInspection{1}), "refused");
  const Kel::Observer vrf(*netVrf(), refuse);
  EXPECT_DEATH(vrfV1->l3IntfIs(IpGenAddr("10.0.0.2")), "refused");
  const Kel::Observer intf(*netVrf()->l3Intf(IpGenAddr("10.0.0.1")), refuse);
  EXPECT_DEATH(intfV1->reachableSubnetIs(IpGenPrefix("10.3.0.0/16")), "refused");
}

}  // namespace
}  // namespace ServiceDeviceTests
