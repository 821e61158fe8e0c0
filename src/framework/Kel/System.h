#pragma once

#include <functional>

#include "Kel/Text.h"

namespace [[using gnu: visibility("default")]] Kel {
namespace System {

/// The time since the epoch of the clock. Without a clock of one's own that is the system's time of
/// day, in seconds since 1970 with a resolution of about a quarter of a microsecond.
Seconds currentTime();

/// Puts `clock` in the place of the system's time of day; an empty function puts that back. Called
/// from the thread of the event loop, or before other threads read the time. The function must not
/// throw: time is also read where nothing may fail.
void clockIs(std::function<Seconds()> clock);

}  // namespace System
}  // namespace Kel
