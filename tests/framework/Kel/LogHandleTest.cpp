#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <vector>

#include "Kel/LogHandle.h"
#include "support/OnThreads.h"

namespace {

const Kel::LogHandle kMount("TEST_MOUNT_TIMEOUT", 3, "%s is unable to mount from %s %s.",
                            "A mount request has timed out.", Kel::LogHandle::contactSupport);

/// Collects raised messages while it lives.
class Raised {
 public:
  Raised() {
    Kel::LogHandle::sinkIs([this](const Kel::LogHandle& handle, const std::string& message) {
      all.push_back(std::string(handle.identifier()) + ": " + message);
    });
  }
  ~Raised() { Kel::LogHandle::sinkIs({}); }
  std::vector<std::string> all;
};

TEST(LogHandle, IsKnownByItsIdentifierFromTheMomentOfLoading) {
  const Kel::LogHandle* const found = Kel::LogHandle::find("TEST_MOUNT_TIMEOUT");
  ASSERT_EQ(found, &kMount);
  EXPECT_EQ(found->severity(), 3);
  EXPECT_STREQ(found->format(), "%s is unable to mount from %s %s.");
  EXPECT_STREQ(found->explanation(), "A mount request has timed out.");
  EXPECT_STREQ(found->recommendedAction(), Kel::LogHandle::contactSupport);
}

TEST(LogHandle, AnUnknownIdentifierIsNull) {
  EXPECT_EQ(Kel::LogHandle::find("NO_SUCH_MESSAGE"), nullptr);
}

TEST(LogHandle, AVisitReachesEveryHandleUntilItIsDestroyed) {
  const auto visited = [](const Kel::LogHandle& wanted) {
    int times = 0;
    Kel::LogHandle::forEach([&](const Kel::LogHandle& handle) { times += &handle == &wanted; });
    return times;
  };
  auto second = std::make_unique<Kel::LogHandle>("SECOND", 5, "x", "y", "z");
  EXPECT_EQ(visited(kMount), 1);
  EXPECT_EQ(visited(*second), 1);
  second.reset();
  EXPECT_EQ(Kel::LogHandle::find("SECOND"), nullptr);
}

TEST(LogHandle, RaisingPutsTheArgumentsInThePlacesInOrder) {
  Raised raised;
  kMount.raise("agent", std::string("switch"), std::string_view("after 30 s"));
  EXPECT_EQ(raised.all,
            std::vector<std::string>{
                "TEST_MOUNT_TIMEOUT: agent is unable to mount from switch after 30 s."});
}

TEST(LogHandle, AnArgumentIsNotAFormat) {
  EXPECT_EQ(kMount.message({"%s", "100%", "%%"}), "%s is unable to mount from 100% %%.");
}

TEST(LogHandle, AWrongNumberOfArgumentsDoesNotHideTheMessage) {
  EXPECT_EQ(kMount.message({"agent"}), "agent is unable to mount from (missing) (missing).");
  EXPECT_EQ(kMount.message({"a", "b", "c", "d"}), "a is unable to mount from b c. (d)");
}

TEST(LogHandle, APercentSignInTheFormatIsKept) {
  const Kel::LogHandle handle("PERCENT", 6, "%d %% of %s%", "", "");
  EXPECT_EQ(handle.message({"all"}), "%d % of all%");
}

TEST(LogHandle, WithoutASinkTheMessageIsOneLineOnStandardError) {
  testing::internal::CaptureStderr();
  kMount.raise("a\nb", "switch", "x");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "TEST_MOUNT_TIMEOUT (severity 3): a\\x0ab is unable to mount from switch x.\n");
}

TEST(LogHandle, WhatASinkThrowsDoesNotReachTheCaller) {
  Kel::LogHandle::sinkIs(
      [](const Kel::LogHandle&, const std::string&) { throw std::runtime_error("sink"); });
  EXPECT_NO_THROW(kMount.raise("a", "b", "c"));
  Kel::LogHandle::sinkIs({});
}

TEST(LogHandle, ASinkMayRaiseAnotherMessageAndReplaceItself) {
  std::vector<std::string> all;
  Kel::LogHandle::sinkIs([&](const Kel::LogHandle&, const std::string& message) {
    all.push_back(message);
    Kel::LogHandle::sinkIs(
        [&](const Kel::LogHandle&, const std::string& next) { all.push_back("second: " + next); });
    kMount.raise("x", "y", "z");
  });
  kMount.raise("a", "b", "c");
  Kel::LogHandle::sinkIs({});
  EXPECT_EQ(all, (std::vector<std::string>{"a is unable to mount from b c.",
                                           "second: x is unable to mount from y z."}));
}

TEST(LogHandle, HandlesComeAndGoOnSeveralThreads) {
  TestSupport::onThreads(4, [](std::size_t) {
    for (int round = 0; round < 200; ++round) {
      const Kel::LogHandle handle("PASSING", 7, "%s", "", "");
      EXPECT_NE(Kel::LogHandle::find("PASSING"), nullptr);
    }
  });
  EXPECT_EQ(Kel::LogHandle::find("PASSING"), nullptr);
}

}  // namespace
