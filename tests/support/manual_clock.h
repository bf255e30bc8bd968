#ifndef ZEL_TESTS_SUPPORT_MANUAL_CLOCK_H_
#define ZEL_TESTS_SUPPORT_MANUAL_CLOCK_H_

#include <atomic>

#include "base/clock.h"

namespace support {

/// Takes over the library's clock while it lives; time stands still until it is advanced. One at a time.
class ManualClock {
  public:
    explicit ManualClock(double start = 1'700'000'000.0) {
        time().store(start);
        ZEL::setClockForTesting(+[] { return time().load(); });
    }
    ~ManualClock() { ZEL::setClockForTesting(nullptr); }
    ManualClock(const ManualClock&) = delete;
    ManualClock& operator=(const ManualClock&) = delete;

    void advance(double seconds) { time().store(time().load() + seconds); }

  private:
    static std::atomic<double>& time() {
        static std::atomic<double> value{0.0};
        return value;
    }
};

}  // namespace support

#endif  // ZEL_TESTS_SUPPORT_MANUAL_CLOCK_H_
