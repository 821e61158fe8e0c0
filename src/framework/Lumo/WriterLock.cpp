#include "Lumo/WriterLock.h"

#include <linux/membarrier.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Lumo {
namespace {

bool membarrier(int command) noexcept { return syscall(SYS_membarrier, command, 0, 0) == 0; }

}  // namespace

WriterLock::WriterLock() { shared_.store(!membarrier(MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED)); }

bool WriterLock::enterSlowly() noexcept {
  const std::uintptr_t self = thisThread();
  std::uintptr_t nobody = kNobody;
  if (!shared_.load() && owner_.compare_exchange_strong(nobody, self)) {
    free_.store(self, std::memory_order_relaxed);
    return enter();
  }
  if (holder_.load(std::memory_order_relaxed) == self ||
      (owner_.load(std::memory_order_relaxed) == self && busy())) {
    return false;
  }
  for (nobody = kNobody; !holder_.compare_exchange_weak(nobody, self, std::memory_order_acquire);
       nobody = kNobody) {
    sched_yield();
  }
  if (!shared_.load(std::memory_order_relaxed)) {
    shared_.store(true);
    membarrier(MEMBARRIER_CMD_PRIVATE_EXPEDITED);
  }
  while (busy()) {
    sched_yield();
  }
  spinning_ = true;
  return true;
}

void WriterLock::leaveSlowly() noexcept {
  spinning_ = false;
  holder_.store(kNobody, std::memory_order_release);
}

}  // namespace Lumo
