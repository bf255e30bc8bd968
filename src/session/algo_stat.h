#ifndef ZEL_SRC_SESSION_ALGO_STAT_H_
#define ZEL_SRC_SESSION_ALGO_STAT_H_

#include <cstdint>
#include <utility>

#include "base/mutex.h"

namespace ZEL {

/// Frames taken in and the seconds that taking them in cost the host. Detection is not part of the time.
struct AlgoStat {
    uint64_t vframes = 0;
    uint64_t aframes = 0;
    double vframes_time = 0.0;
    double aframes_time = 0.0;
    uint64_t fail_count = 0;
};

/// The same counts over a session's life and over the heartbeat period. Any thread.
class IntakeStat {
  public:
    /// Adds to one field of both records.
    template <typename Number>
    void add(Number AlgoStat::*field, Number amount) {
        const MutexLock lock(mutex_);
        total_.*field += amount;
        period_.*field += amount;
    }

    void addFailure() { add<uint64_t>(&AlgoStat::fail_count, 1); }

    AlgoStat total() const {
        const MutexLock lock(mutex_);
        return total_;
    }

    /// The period's record; the next period starts at zero.
    AlgoStat closePeriod() {
        const MutexLock lock(mutex_);
        return std::exchange(period_, AlgoStat());
    }

    /// Takes back a closePeriod whose record reached nobody.
    void reopenPeriod(const AlgoStat& closed) {
        const MutexLock lock(mutex_);
        period_.vframes += closed.vframes;
        period_.aframes += closed.aframes;
        period_.vframes_time += closed.vframes_time;
        period_.aframes_time += closed.aframes_time;
        period_.fail_count += closed.fail_count;
    }

  private:
    mutable Mutex mutex_;
    AlgoStat total_ ZEL_GUARDED_BY(mutex_);
    AlgoStat period_ ZEL_GUARDED_BY(mutex_);
};

}  // namespace ZEL

#endif  // ZEL_SRC_SESSION_ALGO_STAT_H_
