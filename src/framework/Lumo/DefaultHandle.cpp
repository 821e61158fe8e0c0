#include "Lumo/DefaultHandle.h"

#include <pthread.h>

namespace Lumo {

constinit std::atomic<TraceFile*> Impl::defaultFile{nullptr};

namespace {

constinit std::atomic<HandleObserver> observer{nullptr};

void notify() noexcept {
  if (const auto changed = observer.load(); changed != nullptr) {
    changed();
  }
}

void afterForkInChild() noexcept { defaultHandleIs(nullptr); }

}  // namespace

TraceFile* defaultHandleIs(TraceFile* file) noexcept {
  static const int registered = pthread_atfork(nullptr, nullptr, afterForkInChild);
  static_cast<void>(registered);  // without memory for it the child goes unprotected, no more
  TraceFile* const before = Impl::defaultFile.exchange(file, std::memory_order_acq_rel);
  notify();
  return before;
}

void Impl::forgetHandle(TraceFile* file) noexcept {
  if (defaultFile.compare_exchange_strong(file, nullptr)) {
    notify();
  }
}

HandleObserver defaultHandleObserverIs(HandleObserver changed) noexcept {
  return observer.exchange(changed);
}

}  // namespace Lumo
