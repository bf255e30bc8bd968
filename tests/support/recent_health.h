#ifndef ZEL_TESTS_SUPPORT_RECENT_HEALTH_H_
#define ZEL_TESTS_SUPPORT_RECENT_HEALTH_H_

#include <zel/monitor/health_assessment.h>

#include "support/manual_clock.h"

namespace support {

/// What the process-wide ZELHA has recorded since the last forget(), as its assessments tell it.
class RecentHealth {
  public:
    /// Lets everything recorded so far expire.
    void forget() { clock_.advance(kTimeToLive); }

    /// All values of all assessments. The error rates count two codes more, a 0 and a 1, so that a recorded 0
    /// shows as well.
    ReportMap figures() {
        ZEL::ZELHA& health = ZEL::ZELHA::getInstance();
        health.record("error_code", 0.0);
        health.record("error_code", 1.0);
        ReportMap all;
        for (const char* name : {"RecentPlayerFF", "RefNetSpeed", "PlayerErrorRate", "PlayerBufferRate"}) {
            all.merge(health.evaluate(name));
        }
        for (const char* key : {"count", "metric", "version"}) {
            all.erase(key);
        }
        return all;
    }

  private:
    static constexpr double kTimeToLive = 900.0;

    /// Far behind the clock of the test before, whose samples are still there.
    static double laterThanBefore() {
        static double start = 1'700'000'000.0;
        return start += 1000.0 * kTimeToLive;
    }

    ManualClock clock_{laterThanBefore()};
};

}  // namespace support

#endif  // ZEL_TESTS_SUPPORT_RECENT_HEALTH_H_
