#ifndef ZEL_TOOLS_SERVE_SETTINGS_H_
#define ZEL_TOOLS_SERVE_SETTINGS_H_

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "serve/alarm_kinds.h"

namespace zel_monitor {

/// Between which the waiting time before a new attempt grows.
struct ReconnectSettings {
    double first_s = 1.0;
    double most_s = 15.0;

    bool operator==(const ReconnectSettings&) const = default;
};

/// How one stream is monitored.
struct StreamSettings {
    std::string name;
    std::string input;
    std::map<std::string, std::string> labels;
    std::string format;                          ///< FFmpeg's name of it; empty: found out
    std::map<std::string, std::string> options;  ///< of FFmpeg's protocol and demuxer
    int threads = 1;                             ///< of each decoder; 0: as many as there are processors
    std::optional<bool> video;                   ///< whether it must have any; no value: as it comes
    std::optional<bool> audio;
    double open_timeout_s = 15.0;
    double read_timeout_s = 10.0;
    double grace_s = 5.0;  ///< after a connection began, no fault is raised for so long
    ReconnectSettings reconnect;
    PerAlarmKind<AlarmRule> rules = defaultAlarmRules();

    bool operator==(const StreamSettings&) const = default;
};

enum class WebhookForm { kNative, kAlertmanager };

struct WebhookSettings {
    std::string url;
    WebhookForm form = WebhookForm::kNative;
    std::map<std::string, std::string> headers;
    double timeout_s = 5.0;
    size_t queue = 1000;  ///< alarms that wait at most

    bool operator==(const WebhookSettings&) const = default;
};

struct ServeSettings {
    std::string listen;  ///< "address:port"; empty: no HTTP server
    std::string events;  ///< file of the event log; empty: standard output
    std::vector<WebhookSettings> webhooks;
    std::vector<StreamSettings> streams;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_SETTINGS_H_
