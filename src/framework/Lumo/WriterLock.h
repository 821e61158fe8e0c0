#pragma once

#include <pthread.h>

#include <atomic>
#include <cstdint>

namespace [[using gnu: visibility("default")]] Lumo {

/// A number of the calling thread that no other living thread has; never 0.
inline std::uintptr_t thisThread() noexcept {
#if defined(__x86_64__)
  std::uintptr_t self = 0;
  // The first word of a thread's control block is its own address. The library's function for it
  // would be the only call on the way of a record.
  __asm__("mov %%fs:0, %0" : "=r"(self));
  return self;
#else
  return reinterpret_cast<std::uintptr_t>(pthread_self());
#endif
}

/// Keeps writers of a ring apart at the price of a plain store, as long as there is one thread.
///
/// The library runs in one event loop, so nearly always one thread writes all records, and an
/// atomic read-modify-write per record would cost more than the record. But a host is free to have
/// other threads, and a trace must not be the thing that breaks then. So the lock is *biased*: it
/// belongs to the first thread that takes it. That thread finds itself in `free_`, takes it out and
/// looks whether `shared_` is still false, with no fence between: the processor may do the two in
/// either order. One word says whose the lock is and that it is free, so that one look suffices.
///
/// Another thread that comes sets `shared_` and then asks the kernel for a barrier on every
/// processor that runs a thread of this process (membarrier). After it the owner either has seen
/// `shared_`, or is seen to be inside and is waited for. From then on the lock is an ordinary
/// spinning one, for everybody and for good: a program that has threads keeps having them.
///
/// Where the kernel refuses the barrier the lock is shared from the beginning. In either state a
/// thread that already holds the lock and comes again (from a signal handler that interrupted a
/// record) is turned away.
class WriterLock {
 public:
  WriterLock();

  /// False when this thread is already inside.
  bool enter() noexcept { return tryEnter() || enterSlowly(); }

  /// True when the lock belongs to this thread and was free; false says nothing.
  [[gnu::always_inline]] bool tryEnter() noexcept {
    if (free_.load(std::memory_order_relaxed) == thisThread()) [[likely]] {
      free_.store(kNobody, std::memory_order_relaxed);
      std::atomic_signal_fence(std::memory_order_seq_cst);
      if (!shared_.load(std::memory_order_acquire)) [[likely]] {
        return true;
      }
      leaveOwned();
    }
    return false;
  }

  /// Ends what a `tryEnter` that returned true began.
  void leaveOwned() noexcept { free_.store(thisThread(), std::memory_order_release); }

  /// Ends what an `enter` or a `tryEnter` that returned true began.
  void leave() noexcept {
    if (!spinning_) [[likely]] {
      leaveOwned();
    } else {
      leaveSlowly();
    }
  }

 private:
  bool enterSlowly() noexcept;
  void leaveSlowly() noexcept;
  // Whether the owner is inside.
  bool busy() const noexcept {
    return free_.load(std::memory_order_acquire) != owner_.load(std::memory_order_relaxed);
  }

  static constexpr std::uintptr_t kNobody = 0;  // never the id of a thread on Linux

  std::atomic<std::uintptr_t> free_{kNobody};  // the owner while it is not inside, which writes it
  std::atomic<bool> shared_{false};
  bool spinning_ = false;  // held through `holder_`; guarded by the lock itself
  std::atomic<std::uintptr_t> holder_{kNobody};
  std::atomic<std::uintptr_t> owner_{kNobody};  // to whom the lock belongs while it is not shared
};

}  // namespace Lumo
