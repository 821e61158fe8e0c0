#pragma once

#include "Kel/Text.h"

namespace Kel::Impl {

/// The system's time of day in seconds since 1970.
///
/// Asking the kernel's clock costs 20 to 25 ns, most of it for work that is the same every time,
/// and every event is stamped. So the processor's own counter is read, and the kernel is asked only
/// once in ten milliseconds, for the time of day at some reading of the counter and for how long a
/// tick is. Between, time goes on by ticks. The error is that of the tick's length over ten
/// milliseconds, some tens of nanoseconds; when the time of day is set anew this is noticed after
/// at most ten milliseconds, also on a machine whose counter jumps (a virtual machine that was
/// moved), because a jump ends the interval. Each thread has its own reckoning, so nothing is
/// shared.
///
/// On a processor whose counter does not run at one rate the kernel is asked every time.
Seconds timeOfDay() noexcept;

}  // namespace Kel::Impl
