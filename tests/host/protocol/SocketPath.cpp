#include "protocol/SocketPath.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "text/ByteSink.h"

namespace HostTests {
namespace {

/// The environment that the choice depends on, put back at the end of a test.
class SocketPath : public testing::Test {
 protected:
  void SetUp() override { set("", ""); }
  void TearDown() override { set(own_, runtime_); }

  static void set(const std::string& own, const std::string& runtime) {
    ::setenv("VPM_SOCKET", own.c_str(), 1);
    ::setenv("XDG_RUNTIME_DIR", runtime.c_str(), 1);
  }

 private:
  static std::string valueOf(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
  }
  const std::string own_ = valueOf("VPM_SOCKET");
  const std::string runtime_ = valueOf("XDG_RUNTIME_DIR");
};

TEST_F(SocketPath, IsTheOneAskedForBeforeAllOthers) {
  set("/tmp/own.sock", "/run/user/7");
  EXPECT_EQ(Host::socketPath("./asked.sock"), "./asked.sock");
}

TEST_F(SocketPath, IsThatOfTheEnvironmentThenOfTheUserThenOfTheSystem) {
  set("/tmp/own.sock", "/run/user/7");
  EXPECT_EQ(Host::socketPath(""), "/tmp/own.sock");
  set("", "/run/user/7");
  EXPECT_EQ(Host::socketPath(""), "/run/user/7/vpm.sock");
  set("", "");
  EXPECT_EQ(Host::socketPath(""), "/run/vpm.sock");
}

TEST_F(SocketPath, IsRefusedWhenNoAddressHoldsIt) {
  const std::string longest(107, 's');
  EXPECT_EQ(std::string(Host::socketAddress(longest).sun_path), longest);
  try {
    Host::socketAddress(longest + "s");
    FAIL() << "a path of 108 bytes was taken";
  } catch (const Host::OutputError& error) {
    EXPECT_THAT(error.what(), testing::HasSubstr("108 bytes; expected at most 107"));
  }
}

}  // namespace
}  // namespace HostTests
