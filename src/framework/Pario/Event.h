#pragma once

#include <cstdint>

#include "Kel/Text.h"
#include "Pario/Listening.h"

namespace [[using gnu: visibility("default")]] Pario {

namespace Impl {

/// The event that is open on this thread.
struct OpenEvent {
  unsigned depth;  // of events inside one another; 0: none is open
  Kel::Seconds
      seconds;          // what is printed: the time of the event or, when none is open, of the last
  std::uint64_t stamp;  // the same in nanoseconds
};
// Its place is known when the library is loaded: no function is called to find it.
[[gnu::tls_model("initial-exec")]] extern constinit thread_local OpenEvent openEvent;

/// Gives the open event the present time.
void readClock() noexcept;

[[gnu::always_inline]] inline void enterEvent() noexcept {
  if (openEvent.depth++ == 0) {
    readClock();
  }
}
inline void leaveEvent() noexcept { --openEvent.depth; }

}  // namespace Impl

/// Lasts as long as the handling of one event. The outermost one on the stack reads the clock,
/// once; all records inside carry its time, in the order of their writing.
///
/// Deliberate: no record reads a clock. Reading it makes the processor wait for all loads under
/// way, and the work of a handler is a handful of loads that miss the caches and could overlap. So
/// the one place to open an event is where a notification, or a turn of the event loop, begins:
/// before the first of these loads. A record outside of any event is one by itself.
///
/// When nobody listens an event costs a load and a branch; one that began that way takes no time
/// even if somebody begins to listen before it ends.
class Event {
 public:
  [[gnu::always_inline]] Event() noexcept : open_(listening.load(std::memory_order_relaxed) != 0) {
    if (open_) {
      Impl::enterEvent();
    }
  }
  [[gnu::always_inline]] ~Event() {
    if (open_) {
      Impl::leaveEvent();
    }
  }
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  /// Whether somebody listened when it began.
  bool isOpen() const noexcept { return open_; }

 private:
  const bool open_;
};

}  // namespace Pario
