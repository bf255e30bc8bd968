#ifndef ZEL_TOOLS_SERVE_ALARM_H_
#define ZEL_TOOLS_SERVE_ALARM_H_

#include <zel/events/event.h>

#include <chrono>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "serve/alarm_kinds.h"

namespace zel_monitor {

/// One moment by both clocks: what lasts is measured by one, what people read is told by the other.
struct Moment {
    std::chrono::steady_clock::time_point steady;
    std::chrono::system_clock::time_point wall;

    static Moment now() { return {std::chrono::steady_clock::now(), std::chrono::system_clock::now()}; }
};

inline double secondsBetween(std::chrono::steady_clock::time_point from,
                             std::chrono::steady_clock::time_point to) {
    return std::chrono::duration<double>(to - from).count();
}

inline std::chrono::steady_clock::duration steadySeconds(double seconds) {
    return std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double>(seconds));
}

inline std::chrono::system_clock::duration wallSeconds(double seconds) {
    return std::chrono::duration_cast<std::chrono::system_clock::duration>(
        std::chrono::duration<double>(seconds));
}

/// Why an alarm was cleared.
enum class Cleared {
    kOver,          ///< the fault has gone
    kSignalLost,    ///< nothing comes any more, so nobody can say
    kDisconnected,  ///< the connection ended
    kStopped        ///< the stream is monitored no longer, or anew
};

std::string_view nameOf(Cleared reason);

/// An alarm that is raised or cleared. Of each alarm there is one of either, with the same id.
struct Alarm {
    std::string id;
    std::string stream;
    std::map<std::string, std::string> labels;
    AlarmKind kind = kNoSignal;
    Severity severity = Severity::kWarning;
    std::string detail;                                          ///< in words; empty if the kind says it all
    std::optional<ZEL::Evidence> evidence;                       ///< so far, or of all of it
    std::chrono::system_clock::time_point time;                  ///< of this raise or clear
    std::chrono::system_clock::time_point began;                 ///< when the fault did
    std::optional<std::chrono::system_clock::time_point> ended;  ///< when the fault did; set for a clear
    Cleared reason = Cleared::kOver;                             ///< for a clear

    bool isCleared() const { return ended.has_value(); }
};

/// Takes alarms on any thread, at once: whoever tells of one must not wait.
class AlarmSink {
  public:
    AlarmSink() = default;
    AlarmSink(const AlarmSink&) = delete;
    AlarmSink& operator=(const AlarmSink&) = delete;
    virtual ~AlarmSink() = default;

    virtual void take(const Alarm& alarm) = 0;
};

/// As docs/alarm.schema.json describes it.
nlohmann::ordered_json alarmJson(const Alarm& alarm);

/// As Alertmanager's API v2 takes an alert. One that is active holds until `expires`.
nlohmann::ordered_json alertJson(const Alarm& alarm, std::chrono::system_clock::time_point expires);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_ALARM_H_
