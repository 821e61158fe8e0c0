#pragma once

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <fstream>
#include <functional>
#include <string>
#include <thread>

namespace TestSupport {

/// Runs `act` on a thread of its own. Each of the first three times that it waits in write(), a
/// signal interrupts that; then `release` has to let it go on.
inline void withInterruptions(const std::function<void()>& act,
                              const std::function<void()>& release) {
  struct sigaction quiet {};
  struct sigaction before {};
  quiet.sa_handler = [](int) {};  // and no SA_RESTART: the call returns
  sigaction(SIGUSR1, &quiet, &before);
  std::atomic<pid_t> id{0};
  std::thread actor([&] {
    id = gettid();
    act();
  });
  for (int times = 0; times != 3;) {
    std::ifstream file("/proc/self/task/" + std::to_string(id) + "/syscall");
    long call = -1;
    if (file >> call && call == SYS_write) {
      pthread_kill(actor.native_handle(), SIGUSR1);
      ++times;
    }
    std::this_thread::yield();
  }
  release();
  actor.join();
  sigaction(SIGUSR1, &before, nullptr);
}

}  // namespace TestSupport
