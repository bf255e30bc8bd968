#ifndef ZEL_EVENTS_KINDS_H_
#define ZEL_EVENTS_KINDS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace ZEL {

/// What can be wrong over a stretch of a stream. The order is that of every table and report.
enum class EventKind : uint8_t {
    kBlack,
    kGreen,
    kBlock,
    kFreeze,
    kUnderexposed,
    kOverexposed,
    kMute,
    kLowVoice,
    kHighVoice,
    kNoVoice,
    kStall,
    kShort
};
inline constexpr size_t kEventKinds = 12;

template <typename T>
using PerEventKind = std::array<T, kEventKinds>;

constexpr size_t indexOf(EventKind kind) {
    return static_cast<size_t>(kind);
}

/// Where a kind's verdicts come from.
enum class EventSource : uint8_t { kVideo, kAudio, kTimestamps };

/// When a run of verdicts is an event: it lasts at least `min_s`, and `gap_s` without the fault ends it.
struct EventRule {
    double min_s = 0.0;
    double gap_s = 0.0;
};
using EventRules = PerEventKind<EventRule>;

struct EventKindInfo {
    EventKind kind;
    std::string_view name;  ///< as on the command line and in reports
    EventSource source;
    EventRule rule;            ///< the default
    std::string_view meaning;  ///< one line, no full stop
};

/// Every kind once, in the order of Kind.
const PerEventKind<EventKindInfo>& eventKinds();

inline const EventKindInfo& infoOf(EventKind kind) {
    return eventKinds()[indexOf(kind)];
}

std::optional<EventKind> eventKindByName(std::string_view name);

/// "video", "audio" or "timestamps".
std::string_view nameOf(EventSource source);

EventRules defaultEventRules();

}  // namespace ZEL

#endif  // ZEL_EVENTS_KINDS_H_
