// An agent that runs: it hosts both trees in an event loop of its own, writes version 1 as time
// goes by, is told of what becomes of it in version 2, and stops in the right order.
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>

#include "Kel/Kel.h"
#include "factories.h"

namespace {

/// What the agent holds of the configuration. It outlives the roots.
struct Trees {
  const Brix::Ptr<VelaL3::VelaPolicySourceConfig> policyV1 =
      VelaL3::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  const Brix::Ptr<VelaL3V2::VelaPolicySourceConfig> policyV2 =
      VelaL3V2::VelaPolicySourceConfig::VelaPolicySourceConfigIs();
  const Brix::Ptr<VelaL3::ServiceDeviceSourceConfig> serviceDeviceV1 =
      VelaL3::ServiceDeviceSourceConfig::ServiceDeviceSourceConfigIs();
  const Brix::Ptr<VelaL3V2::ServiceDeviceSourceConfig> serviceDeviceV2 =
      VelaL3V2::ServiceDeviceSourceConfig::ServiceDeviceSourceConfigIs();
  const Brix::Ptr<VelaPolicyMonitor::Status> status = VelaPolicyMonitor::Status::StatusIs();
};

/// What happens to the agent, a step at each tick of its clock.
class Life {
 public:
  explicit Life(const Trees& trees) : trees_(trees) {}

  void step() {
    switch (++step_) {
      case 1:
        return addRule();
      case 2:
        return changeRule();
      case 3:
        return addSubnet();
      case 4:
        return writeWrongly();
      case 5:
        return missMount();
      default:
        std::raise(SIGTERM);  // somebody stops the agent
    }
  }

 private:
  /// When the writer writes a timestamp, the burst has ended, and version 2 is stamped.
  void addRule() {
    policy_ = trees_.policyV1->policySetIs("fw1")->policyIs(L3::VrfName("red"));
    const auto origin = policy_->ruleIs(VelaL3::VelaPriority(20000))->originIs("web");
    origin->actionIs(VelaL3::VelaAction::drop);
    match_ = origin->matchIs();
    match_->dstIpIs(Norv::IpGenPrefix("10.1.0.0/16"));
    policy_->timestampIs(Kel::System::currentTime());

    const auto ruleV2 =
        trees_.policyV2->policySet("fw1")->policy("net-red")->rule(VelaL3V2::VelaPriority(20000));
    const auto matchV2 = ruleV2->origin("web")->match();
    for (const Norv::IpGenPrefix& prefix : matchV2->dstIp()) {
      std::cout << "rule 20000 of net-red begins with " << prefix.stringValue() << '\n';
    }
    watch_.emplace(*matchV2, [&match = *matchV2](Kel::AttrId id, const void* key) {
      if (id == VelaL3V2::VelaMatchConfig::dstIpAttr.id) {
        const auto& prefix = *static_cast<const Norv::IpGenPrefix*>(key);
        std::cout << "rule 20000 of net-red " << (match.dstIp(prefix) ? "gains " : "loses ")
                  << prefix.stringValue() << '\n';
      }
    });
  }

  void changeRule() {
    match_->dstIpIs(Norv::IpGenPrefix("10.2.0.0/16"));
    match_->dstIpDel(Norv::IpGenPrefix("10.1.0.0/16"));
    policy_->timestampIs(Kel::System::currentTime());
  }

  void addSubnet() {
    const auto vrf = trees_.serviceDeviceV1->serviceDeviceIs("fw1")->vrfIs(L3::VrfName("red"));
    vrf->l3IntfIs(Norv::IpGenAddr("192.0.2.1"))
        ->reachableSubnetIs(Norv::IpGenPrefix("198.51.100.0/24"));
    vrf->timestampIs(Kel::System::currentTime());
    const auto intfV2 = trees_.serviceDeviceV2->serviceDevice("fw1")->netVrf("net-red")->l3Intf(
        Norv::IpGenAddr("192.0.2.1"));
    std::cout << "interface 192.0.2.1 of net-red reaches " << intfV2->reachableSubnet().size()
              << " subnet\n";
  }

  /// What the library raises derives from Kel::Exception, and nothing has changed then.
  void writeWrongly() {
    try {
      trees_.policyV1->policySet("fw1")->policyIs(L3::VrfName(std::string(101, 'x')));
    } catch (const Kel::RangeException& refused) {
      std::cout << "refused: " << refused.what() << '\n';
    }
  }

  /// The library registers the message, and the agent raises it.
  void missMount() {
    Kel::LogHandle::find("ZARN_MOUNT_TIMEOUT")->raise("agent", "server", "/vela/policy");
  }

  const Trees& trees_;
  int step_ = 0;
  Brix::Ptr<VelaL3::VelaPolicyConfig> policy_;
  Brix::Ptr<VelaL3::VelaMatchConfig> match_;
  std::optional<Kel::Observer> watch_;
};

/// The agent's own event loop; returns when the agent is told to stop. Everything of the library
/// happens inside of what is called from here.
void run(Life& life) {
  sigset_t stops;
  sigemptyset(&stops);
  sigaddset(&stops, SIGTERM);
  sigaddset(&stops, SIGINT);
  sigprocmask(SIG_BLOCK, &stops, nullptr);
  const int stop = signalfd(-1, &stops, SFD_CLOEXEC);
  const int clock = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC);
  constexpr timespec kTick{0, 1'000'000};
  const itimerspec ticks{kTick, kTick};
  if (stop < 0 || clock < 0 || timerfd_settime(clock, 0, &ticks, nullptr) != 0) {
    throw std::runtime_error("there is no event loop without descriptors");
  }
  std::array<pollfd, 2> waiting{{{stop, POLLIN, 0}, {clock, POLLIN, 0}}};
  while (poll(waiting.data(), waiting.size(), -1) > 0 && waiting[0].revents == 0) {
    std::uint64_t elapsed = 0;
    if (read(clock, &elapsed, sizeof elapsed) == sizeof elapsed) {
      life.step();
    }
  }
  close(clock);
  close(stop);
}

/// The objects of all types that live at this moment.
std::size_t objects() {
  std::size_t count = 0;
  const auto add = [](void* sum, const Kel::Slab& slab) {
    *static_cast<std::size_t*>(sum) += slab.live();
  };
  Kel::Slab::forEach(add, &count);
  return count;
}

void live() {
  const Trees trees;
  trees.status->devicePolicyListIs("fw1")->netVrfNameByVrfIs("red", "net-red");

  // The roots mirror what is there, and from then on every change.
  const Factories make = factories();
  auto policyRoot = make.policy(trees.policyV1, trees.policyV2, trees.status);
  auto serviceDeviceRoot =
      make.serviceDevice(trees.serviceDeviceV1, trees.serviceDeviceV2, trees.status);

  Life life(trees);
  run(life);

  // A root that goes empties its version 2. The trees go last.
  policyRoot = nullptr;
  serviceDeviceRoot = nullptr;
  std::cout << "stopped, with " << trees.policyV2->policySet().size() << " policy sets and "
            << trees.serviceDeviceV2->serviceDevice().size() << " devices in version 2\n";
}

}  // namespace

int main() {
  Kel::LogHandle::sinkIs([](const Kel::LogHandle& handle, const std::string& message) {
    std::cout << handle.identifier() << ": " << message << '\n';
  });
  live();
  std::cout << "objects left: " << objects() << '\n';
}
