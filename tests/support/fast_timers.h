#ifndef ZEL_TESTS_SUPPORT_FAST_TIMERS_H_
#define ZEL_TESTS_SUPPORT_FAST_TIMERS_H_

#include <chrono>

#include "base/clock.h"

namespace support {

/// While it lives, a second of a heartbeat's interval takes no more than this.
class FastTimers {
  public:
    explicit FastTimers(std::chrono::nanoseconds second = std::chrono::milliseconds(5)) {
        ZEL::setTimerSecondForTesting(second);
    }
    ~FastTimers() { ZEL::setTimerSecondForTesting(std::chrono::seconds(1)); }
    FastTimers(const FastTimers&) = delete;
    FastTimers& operator=(const FastTimers&) = delete;
};

}  // namespace support

#endif  // ZEL_TESTS_SUPPORT_FAST_TIMERS_H_
