#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

#include "host/agent/RunningAgent.h"

namespace HostTests {

inline const char* const kFirewall = R"({
  "vela-l3:policy-source": {"policy-set": [{"device-name": "fw1", "policy": [
    {"vrf-name": "red", "rule": [{"priority": 20000, "origin": [
      {"name": "web", "match": {"dst-ip": ["10.1.0.0/16"]}}]}]}]}]},
  "vela-policy-monitor:status": {"device-policy-list": [{"device-name": "fw1",
    "net-vrf-name-by-vrf": [{"vrf-name": "red", "net-vrf-name": "net-red"}]}]}
})";
inline const std::string kRed =
    "/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']";
inline const std::string kWeb = kRed + "/rule[priority='20000']/origin[name='web']";
inline const std::string kWebV2 =
    "/vela-l3v2:policy-source/policy-set[device-name='fw1']/policy[net-vrf-name='net-red']"
    "/rule[priority='20000']/origin[name='web']";

inline std::string update(const std::string& path, const std::string& value) {
  return R"({"update":[{"path":")" + path + R"(","value":)" + value + "}]}";
}
/// Asks for the version-2 tags of the origin "web".
inline const std::string kShowTags = R"({"request":"show","path":")" + kWebV2 + R"(/tags"})";

class Agent : public testing::Test {
 protected:
  /// An agent on one document.
  RunningAgent& start(std::vector<std::string> options = {},
                      const std::function<void()>& prepare = {}) {
    options.insert(options.end(), {"--config", folder_.write("c.json", kFirewall)});
    return agent_.emplace(folder_, options, prepare);
  }

  Folder folder_;
  std::optional<RunningAgent> agent_;
};

}  // namespace HostTests
