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
    /// Writes the period's keys into `report`, over entries of the same name.
    void write(ReportMap& report, int64_t token, const AlgoStat& period, EventSnapshot now);

    /// The report over a session's whole life: totals and raw counters.
    static ReportMap wholeLife(const AlgoStat& total, const EventSnapshot& now);

  private:
    uint32_t sequence_ = 0;
    EventSnapshot last_;
};

}  // namespace ZEL

#endif  // ZEL_SRC_SESSION_HEARTBEAT_REPORT_H_
