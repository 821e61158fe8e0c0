// Waiting for the translation to converge.

#include "host/agent/AgentTest.h"

namespace HostTests {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

const std::string kOther = "/vela-l3:service-device-source/service-device[device-name='fw2']";
const std::string kOtherRecord =
    "/vela-policy-monitor:status/device-policy-list[device-name='fw2']";

class AgentWaits : public Agent {};

TEST_F(AgentWaits, IsAnsweredAtOnceWhenAllHasConverged) {
  TestClient client = start().client();
  EXPECT_EQ(client.ask(R"({"request":"wait"})"), R"({"line":1,"converged":true,"devices":[]})");
  EXPECT_EQ(client.ask(R"({"request":"wait","device":"fw1"})"),
            R"({"line":2,"converged":true,"devices":[]})");
}

TEST_F(AgentWaits, NamesTheDevicesThatHaveNotConvergedWhenTheTimeIsUp) {
  TestClient client = start().client();
  client.ask(update(kOther, "{}"));
  EXPECT_EQ(client.ask(R"({"request":"wait","timeout":0})"),
            R"({"line":2,"converged":false,"devices":[{"device":"fw2","service-device":false}]})");
  EXPECT_EQ(client.ask(R"({"request":"wait","timeout":0.05})"),
            R"({"line":3,"converged":false,"devices":[{"device":"fw2","service-device":false}]})");
  EXPECT_EQ(client.ask(R"({"request":"wait","device":"fw1"})"),
            R"({"line":4,"converged":true,"devices":[]})");
}

TEST_F(AgentWaits, NeverEndsWellForADeviceThatIsNotThere) {
  TestClient client = start().client();
  EXPECT_EQ(client.ask(R"({"request":"wait","device":"fw3","timeout":0})"),
            R"({"line":1,"converged":false,"devices":[{"device":"fw3"}]})");
}

TEST_F(AgentWaits, IsAnsweredWhenAChangeOfAnotherClientMakesItTrue) {
  start().client();
  TestClient waits = agent_->client();
  TestClient writes = agent_->client();
  EXPECT_EQ(writes.ask(update(kOther, "{}")), R"({"line":1})");
  waits.send("{\"request\":\"wait\",\"timeout\":20}\n{}\n");
  // Lines behind one that waits wait too.
  ASSERT_TRUE(eventually([&] {
    return writes.ask(R"({"request":"stats"})").find("\"waiting-input\":3") != std::string::npos;
  }));
  writes.ask(update(kOtherRecord, "{}"));
  writes.ask(R"({"notify":[")" + kOther + R"("]})");
  EXPECT_EQ(waits.line(), R"({"line":1,"converged":true,"devices":[]})");
  EXPECT_EQ(waits.line(), R"({"line":2})");
}

TEST_F(AgentWaits, OfAClientThatHasVanishedIsForgotten) {
  start().client();
  TestClient waits = agent_->client();
  TestClient stays = agent_->client();
  waits.send("{\"request\":\"wait\",\"device\":\"fw3\"}\n");
  ASSERT_TRUE(eventually([&] {
    return stays.ask(R"({"request":"stats"})").find("\"clients\":2,") != std::string::npos;
  }));
  waits.leave();
  EXPECT_TRUE(eventually([&] {
    return stays.ask(R"({"request":"stats"})").find("\"clients\":1,") != std::string::npos;
  }));
}

}  // namespace
}  // namespace HostTests
