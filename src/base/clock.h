#ifndef ZEL_SRC_BASE_CLOCK_H_
#define ZEL_SRC_BASE_CLOCK_H_

#include <chrono>

namespace ZEL {

/// Wall-clock seconds since 1970 with microsecond resolution. Any thread.
double now();

/// Replaces the clock of the whole process by a test's own; null restores the system's. Any thread.
void setClockForTesting(double (*clock)());

/// How long timers wait for each second of their period. Any thread.
std::chrono::nanoseconds timerSecond();

/// Lets the timers of the whole process run faster or slower, from their next wait on. Any thread.
void setTimerSecondForTesting(std::chrono::nanoseconds length);

}  // namespace ZEL

#endif  // ZEL_SRC_BASE_CLOCK_H_
