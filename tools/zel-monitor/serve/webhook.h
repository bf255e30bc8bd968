#ifndef ZEL_TOOLS_SERVE_WEBHOOK_H_
#define ZEL_TOOLS_SERVE_WEBHOOK_H_

#include <atomic>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <thread>

#include "cli/backoff.h"
#include "serve/alarm_queue.h"
#include "serve/settings.h"

namespace zel_monitor {

/// Sends alarms to a URL on a thread of its own, in order: native ones each in a request of its own, those
/// for Alertmanager as they come, and what is active again every minute, as it wants that. What fails is
/// tried again with growing waits; what the other side refuses for good is not.
class Webhook : public AlarmSink {
  public:
    explicit Webhook(const WebhookSettings& settings);
    Webhook(const Webhook&) = delete;
    Webhook& operator=(const Webhook&) = delete;
    /// Tries once more to deliver what waits, for a few seconds at most.
    ~Webhook() override;

    void take(const Alarm& alarm) override { queue_.take(alarm); }

    const WebhookSettings& settings() const { return settings_; }
    struct Counts {
        uint64_t delivered = 0;
        uint64_t failed_attempts = 0;
        uint64_t lost = 0;  ///< refused for good, or more than could wait
        uint64_t waiting = 0;
    };
    Counts counts() const;

  private:
    enum class Answer { kTaken, kRefused, kFailed };

    void run();
    Answer deliver(std::deque<Alarm>& alarms);
    void note(const Alarm& alarm);
    Answer sendAgain();
    Answer post(const std::string& body);
    void tellOnce(const std::string& what);

    const WebhookSettings settings_;
    const std::string shown_url_;
    AlarmQueue queue_;
    Backoff backoff_;
    std::map<std::string, Alarm> active_;  // for Alertmanager, by id; the thread's
    std::chrono::steady_clock::time_point again_at_;
    bool told_ = false;  // that it does not work
    std::atomic<uint64_t> delivered_{0};
    std::atomic<uint64_t> failed_attempts_{0};
    std::atomic<uint64_t> refused_{0};
    std::thread thread_;  // last: uses every field above
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_WEBHOOK_H_
