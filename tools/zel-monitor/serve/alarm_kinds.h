#ifndef ZEL_TOOLS_SERVE_ALARM_KINDS_H_
#define ZEL_TOOLS_SERVE_ALARM_KINDS_H_

#include <zel/events/kinds.h>

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace zel_monitor {

/// What an alarm is about: one of the library's kinds of events, by its index, or that there is no signal.
using AlarmKind = size_t;

inline constexpr AlarmKind kNoSignal = ZEL::kEventKinds;
inline constexpr size_t kAlarmKinds = ZEL::kEventKinds + 1;

template <typename T>
using PerAlarmKind = std::array<T, kAlarmKinds>;

enum class Severity { kWarning, kCritical };

std::string_view nameOf(Severity severity);

std::string_view alarmName(AlarmKind kind);
/// One line, no full stop.
std::string_view alarmMeaning(AlarmKind kind);
/// Nothing for a name that no kind has.
std::optional<AlarmKind> alarmByName(std::string_view name);

/// When a kind's alarm is raised and cleared.
struct AlarmRule {
    bool enabled = true;
    Severity severity = Severity::kWarning;
    double min_s = 0.0;       ///< how long the fault lasts at least
    double gap_s = 0.0;       ///< without the fault this long, it is over
    double cooldown_s = 0.0;  ///< after a clear, no new raise for so long

    bool operator==(const AlarmRule&) const = default;
};

/// Rules for every kind: faults are on, looks are off.
PerAlarmKind<AlarmRule> defaultAlarmRules();

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_ALARM_KINDS_H_
