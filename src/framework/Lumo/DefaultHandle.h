#pragma once

#include <atomic>

#include "Lumo/TraceFile.h"

namespace [[using gnu: visibility("default")]] Lumo {

namespace Impl {
extern std::atomic<TraceFile*> defaultFile;
/// Ends the default if it is `file`.
void forgetHandle(TraceFile* file) noexcept;
}  // namespace Impl

/// The ring to which the trace front end writes; null when none was set up.
inline TraceFile* defaultHandle() noexcept {
  return Impl::defaultFile.load(std::memory_order_acquire);
}

/// Sets the default ring, null for none. The caller keeps it alive; a ring that is destroyed stops
/// being the default by itself, and in a child made by fork there is none. Returns the previous
/// one.
TraceFile* defaultHandleIs(TraceFile* file) noexcept;

/// `changed` is called after each change of the default ring; null for nobody. Returns the previous
/// one. There is one place for it, for the trace front end, which notes whether there is a ring for
/// its first test.
using HandleObserver = void (*)();
/// Sets who is called; returns who was.
HandleObserver defaultHandleObserverIs(HandleObserver changed) noexcept;

}  // namespace Lumo
