#include "serve/alarm_outlets.h"

#include <algorithm>
#include <utility>

#include "serve/shown_url.h"

namespace zel_monitor {

void AlarmOutlets::take(const Alarm& alarm) {
    const std::lock_guard<std::mutex> lock(mutex_);
    log_->take(alarm);
    for (const auto& webhook : webhooks_) {
        webhook->take(alarm);
    }
}

void AlarmOutlets::configure(const std::string& events, const std::vector<WebhookSettings>& webhooks) {
    std::shared_ptr<EventLog> log = log_;
    if (log == nullptr || events != events_) {
        log = std::make_shared<EventLog>(events);
    }
    std::vector<std::shared_ptr<Webhook>> hooks;
    for (const WebhookSettings& settings : webhooks) {
        const auto same = std::find_if(webhooks_.begin(), webhooks_.end(), [&](const auto& hook) {
            return hook->settings() == settings && std::find(hooks.begin(), hooks.end(), hook) == hooks.end();
        });
        hooks.push_back(same != webhooks_.end() ? *same : std::make_shared<Webhook>(settings));
    }
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        std::swap(log_, log);
        std::swap(webhooks_, hooks);
        events_ = events;
    }
    // Those that are left deliver what they have, while alarms already go to the new ones.
}

void AlarmOutlets::reopen() {
    const std::lock_guard<std::mutex> lock(mutex_);
    log_->reopen();
}

int AlarmOutlets::outputError() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return log_->outputError();
}

AlarmOutlets::Counts AlarmOutlets::counts() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    Counts counts{.lost = log_ != nullptr ? log_->lost() : 0, .webhooks = {}};
    for (const auto& webhook : webhooks_) {
        counts.webhooks.push_back({shownUrl(webhook->settings().url), webhook->counts()});
    }
    return counts;
}

}  // namespace zel_monitor
