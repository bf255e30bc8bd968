#ifndef ZEL_TOOLS_SERVE_ALARM_QUEUE_H_
#define ZEL_TOOLS_SERVE_ALARM_QUEUE_H_

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>

#include "serve/alarm.h"

namespace zel_monitor {

/// Alarms that wait for the thread that delivers them, in order, a bounded number: where one more comes, the
/// oldest goes.
class AlarmQueue : public AlarmSink {
  public:
    explicit AlarmQueue(size_t most) : most_(most) {}

    void take(const Alarm& alarm) override;
    /// No more alarms come; those that wait are still given.
    void close();

    /// All that wait, in order, waiting for at least one until `until`; none if there was none by then, or
    /// the queue is closed and empty.
    std::deque<Alarm> wait(std::chrono::steady_clock::time_point until);
    /// Puts back at the front what could not be delivered, unless that is more than fits.
    void putBack(std::deque<Alarm> alarms);
    /// Waits until `until`, or until the queue is closed.
    void pause(std::chrono::steady_clock::time_point until);

    bool isClosed() const;
    size_t size() const;
    /// How many had to go.
    uint64_t dropped() const;

  private:
    void shrink();  // with mutex_ held

    const size_t most_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Alarm> waiting_;  // guarded by mutex_, like all below
    uint64_t dropped_ = 0;
    bool closed_ = false;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_ALARM_QUEUE_H_
