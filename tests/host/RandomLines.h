#pragma once

#include <array>
#include <cstddef>
#include <random>
#include <string>
#include <string_view>

namespace HostTests {

/// Change lines at random over a world so small that they meet again and again: three devices (one
/// a pair), three VRFs, few names for each, both trees, the monitor's records, mappings that are
/// shared, swapped, emptied and gone, announcements, controls, and bursts without a signal. Many
/// lines do not fit the state they meet and are refused. The same seed gives the same lines.
class RandomLines {
 public:
  explicit RandomLines(unsigned seed) : random_(seed) {}

  std::string next() {
    switch (below(20)) {
      case 0:
        return R"({"control":")" + std::string(one(kVerbs)) + tree() + "\"}";
      case 1:
      case 2:
        return line("notify", '"' + any() + '"');
      case 3:
      case 4:
      case 5:
        return line("delete", '"' + any() + '"');
      case 6:
        return line("replace", edit());
      default:
        return line("update", below(3) == 0 ? edit() + "," + edit() : edit());
    }
  }

  std::size_t below(std::size_t limit) { return random_() % limit; }

 private:
  static constexpr std::array<std::string_view, 3> kDevices{"fw1", "fw2", R"(fwA\\:fwB_HAPair)"};
  static constexpr std::array<std::string_view, 4> kRecords{"fw1", "fw2", "fwA", "fwB"};
  static constexpr std::array<std::string_view, 3> kVrfs{"red", "blue", "green"};
  static constexpr std::array<std::string_view, 4> kNetVrfs{"", "net-1", "net-2", "net-3"};
  static constexpr std::array<std::string_view, 3> kPriorities{"10000", "20000", "30000"};
  static constexpr std::array<std::string_view, 2> kOrigins{"web", "dns"};
  static constexpr std::array<std::string_view, 3> kPrefixes{"10.0.0.0/8", "10.1.0.0/16",
                                                             "2001:db8::/32"};
  static constexpr std::array<std::string_view, 2> kAddresses{"10.0.0.1", "2001:db8::1"};
  static constexpr std::array<std::string_view, 8> kVerbs{
      "suspend", "resume", "cleanup", "initialize", "stop", "start", "resume", "start"};

  template <std::size_t N>
  std::string one(const std::array<std::string_view, N>& all) {
    return std::string(all[below(N)]);
  }

  std::string tree() {
    constexpr std::array<std::string_view, 3> kTrees{"", R"(","tree":"policy)",
                                                     R"(","tree":"service-device)"};
    return one(kTrees);
  }
  std::string line(std::string_view member, const std::string& what) {
    return R"({")" + std::string(member) + "\":[" + what + "]" +
           (below(6) == 0 ? R"(,"signal":false})" : "}");
  }

  std::string policySet() {
    return "/vela-l3:policy-source/policy-set[device-name='" + one(kDevices) + "']";
  }
  std::string policy() { return policySet() + "/policy[vrf-name='" + one(kVrfs) + "']"; }
  std::string rule() { return policy() + "/rule[priority='" + one(kPriorities) + "']"; }
  std::string origin() { return rule() + "/origin[name='" + one(kOrigins) + "']"; }
  std::string device() {
    return "/vela-l3:service-device-source/service-device[device-name='" + one(kDevices) + "']";
  }
  std::string vrf() { return device() + "/vrf[vrf-name='" + one(kVrfs) + "']"; }
  std::string interface() { return vrf() + "/l3-intf[address='" + one(kAddresses) + "']"; }
  std::string record() {
    return "/vela-policy-monitor:status/device-policy-list[device-name='" + one(kRecords) + "']";
  }
  std::string mapping() { return record() + "/net-vrf-name-by-vrf[vrf-name='" + one(kVrfs) + "']"; }

  /// The path of anything that there may be.
  std::string any() {
    switch (below(12)) {
      case 0:
        return policySet();
      case 1:
        return policy();
      case 2:
        return rule();
      case 3:
        return origin();
      case 4:
        return origin() + "/match";
      case 5:
        return origin() + "/match/dst-ip[.='" + one(kPrefixes) + "']";
      case 6:
        return device();
      case 7:
        return vrf();
      case 8:
        return interface();
      case 9:
        return interface() + "/reachable-subnet[.='" + one(kPrefixes) + "']";
      case 10:
        return record();
      default:
        return mapping();
    }
  }

  std::string put(const std::string& path, const std::string& value) {
    return R"({"path":")" + path + R"(","value":)" + value + "}";
  }
  std::string edit() {
    switch (below(9)) {
      case 0:
        return put(policy(), R"({"rule":[{"priority":)" + one(kPriorities) +
                                 R"(,"origin":[{"name":")" + one(kOrigins) +
                                 R"(","match":{"src-ip":[")" + one(kPrefixes) + "\"]}}]}]}");
      case 1:
        return put(origin(), R"({"tags":"t)" + std::to_string(below(3)) +
                                 R"(","action":"drop","policy-modifier":["stateless"]})");
      case 2:
        return put(origin() + "/match", R"({"dst-ip":[")" + one(kPrefixes) +
                                            R"("],"l3-app":[6],"dst-l4-app":[{"port":)" +
                                            std::to_string(below(3)) + R"(,"protocol":6}]})");
      case 3:
        return put(interface(), R"({"reachable-subnet":[")" + one(kPrefixes) + "\"]}");
      case 4:
        return put(vrf(), "{}");
      case 5:
        return put(record(), R"({"traffic-inspection":"unified"})");
      case 6:
        return put(policySet(), "{}");
      default:
        return put(mapping(), R"({"net-vrf-name":")" + one(kNetVrfs) + "\"}");
    }
  }

  std::mt19937 random_;
};

}  // namespace HostTests
