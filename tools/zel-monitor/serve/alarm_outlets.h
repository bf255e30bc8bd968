#ifndef ZEL_TOOLS_SERVE_ALARM_OUTLETS_H_
#define ZEL_TOOLS_SERVE_ALARM_OUTLETS_H_

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "serve/event_log.h"
#include "serve/settings.h"
#include "serve/webhook.h"

namespace zel_monitor {

/// Where alarms go: the event log and the webhooks of the configuration in force. Any thread; what takes
/// alarms only after configure().
class AlarmOutlets : public AlarmSink {
  public:
    void take(const Alarm& alarm) override;

    /// Changes what differs from before. Throws std::system_error if the event log cannot be opened; then
    /// nothing has changed.
    void configure(const std::string& events, const std::vector<WebhookSettings>& webhooks);
    /// Goes on in new files.
    void reopen();

    /// The system's error number, if standard output takes no more; 0 if it does.
    int outputError() const;
    struct Counts {
        uint64_t lost = 0;  ///< by the event log
        struct Hook {
            std::string url;
            Webhook::Counts counts;
        };
        std::vector<Hook> webhooks;
    };
    Counts counts() const;

  private:
    mutable std::mutex mutex_;
    std::string events_;
    std::shared_ptr<EventLog> log_;
    std::vector<std::shared_ptr<Webhook>> webhooks_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_ALARM_OUTLETS_H_
