#ifndef ZEL_SRC_BASE_CLOCK_H_
#define ZEL_SRC_BASE_CLOCK_H_

namespace ZEL {

/// Wall-clock seconds since 1970 with microsecond resolution. Any thread.
double now();

/// Replaces the clock of the whole process by a test's own; null restores the system's. Any thread.
void setClockForTesting(double (*clock)());

}  // namespace ZEL

#endif  // ZEL_SRC_BASE_CLOCK_H_
