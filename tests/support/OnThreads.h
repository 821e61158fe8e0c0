#pragma once

#include <cstddef>
#include <thread>
#include <vector>

namespace TestSupport {

/// Runs `body(0)` … `body(count - 1)` on as many threads at once and waits for them.
template <class Body>
void onThreads(std::size_t count, const Body& body) {
  std::vector<std::thread> threads;
  threads.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    threads.emplace_back([&body, i] { body(i); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

}  // namespace TestSupport
