#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/MountTimeout.h"

namespace {

const Kel::LogHandle* const kFoundBeforeMain = Kel::LogHandle::find("ZARN_MOUNT_TIMEOUT");

TEST(MountTimeout, IsRegisteredWhenTheLibraryIsLoaded) {
  EXPECT_NE(kFoundBeforeMain, nullptr);
  EXPECT_EQ(Kel::LogHandle::find("ZARN_MOUNT_TIMEOUT"), &VelaPolicyMonitor::mountTimeout());
}

TEST(MountTimeout, SaysWhatItMeansAndWhatToDo) {
  const Kel::LogHandle& handle = VelaPolicyMonitor::mountTimeout();
  EXPECT_STREQ(handle.identifier(), "ZARN_MOUNT_TIMEOUT");
  EXPECT_EQ(handle.severity(), 3);
  EXPECT_STREQ(handle.format(), "%s is unable to mount from %s %s.");
  EXPECT_STREQ(handle.explanation(),
               "A mount request to synchronize state between Zarn and switch has timed out. The "
               "services that depend on the state can be dysfunctional.");
  EXPECT_STREQ(handle.recommendedAction(), Kel::LogHandle::contactSupport);
}

TEST(MountTimeout, IsRaisedByTheAgentWithItsThreeArguments) {
  std::vector<std::string> raised;
  Kel::LogHandle::sinkIs(
      [&](const Kel::LogHandle&, const std::string& message) { raised.push_back(message); });
  VelaPolicyMonitor::mountTimeout().raise("PolicyAgent", "zarn-1", "after 30 s");
  Kel::LogHandle::sinkIs({});
  EXPECT_EQ(raised,
            std::vector<std::string>{"PolicyAgent is unable to mount from zarn-1 after 30 s."});
}

}  // namespace
