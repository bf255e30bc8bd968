#ifndef ZEL_TOOLS_SERVE_EVENT_LOG_H_
#define ZEL_TOOLS_SERVE_EVENT_LOG_H_

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>

#include "serve/alarm_queue.h"

namespace zel_monitor {

/// Writes each alarm as a line of JSON to standard output or to the end of a file, on a thread of its own.
class EventLog : public AlarmSink {
  public:
    /// An empty `path` is standard output. Throws std::system_error if the file cannot be opened.
    explicit EventLog(std::string path);
    EventLog(const EventLog&) = delete;
    EventLog& operator=(const EventLog&) = delete;
    /// Everything that was taken is written when it returns.
    ~EventLog() override;

    void take(const Alarm& alarm) override { queue_.take(alarm); }
    /// Goes on in a new file of the same name, for whoever renamed the old one.
    void reopen();

    /// Alarms that were not written, because the file did not take them or they came too fast.
    uint64_t lost() const { return failed_.load() + queue_.dropped(); }
    /// The system's error number for the first line that standard output did not take; 0 if there is none.
    int outputError() const { return output_error_.load(); }

  private:
    void run();
    void write(const Alarm& alarm);

    const std::string path_;
    int descriptor_;  ///< the thread's, once that runs
    AlarmQueue queue_;
    std::atomic<bool> reopen_{false};
    std::atomic<uint64_t> failed_{0};
    std::atomic<int> output_error_{0};
    std::thread thread_;  // last: uses every field above
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_EVENT_LOG_H_
