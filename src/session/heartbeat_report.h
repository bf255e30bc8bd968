#ifndef ZEL_SRC_SESSION_HEARTBEAT_REPORT_H_
#define ZEL_SRC_SESSION_HEARTBEAT_REPORT_H_

#include <zel/zel.h>

#include <cstdint>

#include "session/algo_stat.h"
#include "session/result_accounting.h"

namespace ZEL {

/// Writes a session's reports and remembers what the last heartbeat saw, since counters are reported as
/// increases. One thread at a time.
class HeartbeatReport {
  public:
    /// The keys of the period that `period` and `now` end.
    ReportMap fields(int64_t token, const AlgoStat& period, const EventSnapshot& now) const;

    /// The period's fields are on their way: the next ones begin with `now`.
    void closePeriod(EventSnapshot now) noexcept;

    /// The report over a session's whole life: totals and raw counters.
    static ReportMap wholeLife(const AlgoStat& total, const EventSnapshot& now);

  private:
    uint32_t sequence_ = 0;
    EventSnapshot last_;
};

}  // namespace ZEL

#endif  // ZEL_SRC_SESSION_HEARTBEAT_REPORT_H_
