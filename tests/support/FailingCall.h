#pragma once

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <thread>

namespace TestSupport {

/// A system call that fails: SYS_openat and the like, and errno. With an argument, only the calls
/// whose argument with this number (from 0) is `value`.
struct FailingCall {
  long number;
  std::uint32_t error;
  std::size_t argument = 6;  ///< 6: whatever the arguments
  std::uint32_t value = 0;
};

/// Runs `act` on a thread of its own, for which the call fails as if the system had refused it.
inline void withFailing(const FailingCall& call, const std::function<void()>& act) {
  const auto load = [](std::size_t at) {
    return sock_filter{BPF_LD | BPF_W | BPF_ABS, 0, 0, static_cast<std::uint32_t>(at)};
  };
  // Falls through when equal, otherwise jumps to the last statement.
  const auto require = [](std::size_t value, std::uint8_t toLast) {
    return sock_filter{BPF_JMP | BPF_JEQ | BPF_K, 0, toLast, static_cast<std::uint32_t>(value)};
  };
  const bool any = call.argument == 6;
  std::array<sock_filter, 6> program{
      load(offsetof(seccomp_data, nr)),
      require(static_cast<std::size_t>(call.number), 3),
      load(any ? offsetof(seccomp_data, nr) : offsetof(seccomp_data, args) + 8 * call.argument),
      require(any ? static_cast<std::size_t>(call.number) : call.value, 1),
      sock_filter{BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ERRNO | call.error},
      sock_filter{BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW}};
  std::thread([&] {
    const sock_fprog filter{program.size(), program.data()};
    ASSERT_EQ(prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), 0);
    ASSERT_EQ(prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter), 0);
    act();
  }).join();
}

}  // namespace TestSupport
