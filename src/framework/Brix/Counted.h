#pragma once

#include <atomic>
#include <cstdint>

namespace [[using gnu: visibility("default")]] Brix {

/// Whether reference counts are changed by atomic read-modify-write. Off (the default) while one
/// event loop owns all objects; switch it on before a second thread holds a pointer.
inline std::atomic<bool> threadSafePointers{false};

/// The base of everything that `Brix::Ptr` can hold: a count of the pointers to it.
///
/// How counting works, and why it is safe where it looks dangerous:
///
/// - *The count starts at 1, before any derived constructor runs.* A constructor of ours registers
///   itself with publishers and writes to objects that call back at once; every such call may take
///   a pointer to the object that is still being built, and drop it. Were the count 0 at that time,
///   the drop would bring it back to 0 and destroy a half-built object. The first reference belongs
///   to whoever called `new`; `Brix::Ptr` takes it over with `Brix::adopt`.
///
/// - *Zero is reached once.* A destructor runs clean-up code that calls observers, and these may
///   again take and drop a pointer to the dying object. So the step to zero first moves the count
///   to a value far away from zero (`kDying`) and then destroys: no number of pointers taken and
///   dropped during destruction can bring it back.
///
/// - *One word, two ways to change it.* The count is an atomic. With `threadSafePointers` off it is
///   changed by a relaxed load and a relaxed store, which compile to plain instructions; with it on
///   by read-modify-write, where a decrement releases and acquires, so that whoever destroys sees
///   all writes made through other pointers (a fence would do, but thread checkers do not know
///   fences). Both ways work on the same word, so the switch may be thrown while objects are alive,
///   as long as only one thread uses them at that moment.
///
/// - *What happens at zero is the object's own business* (`onZeroReferences`). Nearly all objects
///   are destroyed there and then. A state machine with a handler on the stack waits for that
///   handler to end: a count of zero while it works means "destroy when done". That makes a counted
///   pointer per notification unnecessary.
class Counted {
 public:
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

  /// Takes a reference.
  void refInc() const noexcept {
    if (threadSafePointers.load(std::memory_order_relaxed)) {
      count_.fetch_add(1, std::memory_order_relaxed);
    } else {
      count_.store(count_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    }
  }

  /// Drops a reference; with the last one the object ends.
  void refDec() const noexcept {
    if (threadSafePointers.load(std::memory_order_relaxed)) {
      if (count_.fetch_sub(1, std::memory_order_acq_rel) != 1) {
        return;
      }
    } else {
      const std::uint32_t left = count_.load(std::memory_order_relaxed) - 1;
      count_.store(left, std::memory_order_relaxed);
      if (left != 0) {
        return;
      }
    }
    const_cast<Counted*>(this)->onZeroReferences();
  }

  /// The pointers held at this moment; for tests and statistics.
  std::uint32_t refCount() const noexcept { return count_.load(std::memory_order_relaxed); }

 protected:
  Counted() noexcept = default;
  virtual ~Counted() = default;

  /// Called when the last pointer has gone.
  virtual void onZeroReferences() noexcept { destroy(); }

  /// Ends the object's life; pointers taken and dropped meanwhile do no harm.
  void destroy() noexcept {
    count_.store(kDying, std::memory_order_relaxed);
    delete this;
  }

 private:
  static constexpr std::uint32_t kDying = 0x8000'0000;
  mutable std::atomic<std::uint32_t> count_{1};
};

}  // namespace Brix
