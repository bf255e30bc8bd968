#ifndef ZEL_TOOLS_SCAN_KINDS_H_
#define ZEL_TOOLS_SCAN_KINDS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace zel_monitor::scan {

/// What can be wrong over a stretch of a stream. The order is that of every table and report.
enum class Kind : uint8_t {
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
inline constexpr size_t kKindCount = 12;

template <typename T>
using PerKind = std::array<T, kKindCount>;

constexpr size_t indexOf(Kind kind) {
    return static_cast<size_t>(kind);
}

/// Where a kind's verdicts come from.
enum class Source : uint8_t { kVideo, kAudio, kTimestamps };

/// When a run of verdicts is an event: it lasts at least `min_s`, and `gap_s` without the fault ends it.
struct EventRule {
    double min_s = 0.0;
    double gap_s = 0.0;
};
using EventRules = PerKind<EventRule>;

struct KindInfo {
    Kind kind;
    std::string_view name;  ///< as on the command line and in reports
    Source source;
    EventRule rule;            ///< the default
    std::string_view meaning;  ///< one line, no full stop
};

/// Every kind once, in the order of Kind.
const PerKind<KindInfo>& kinds();

inline const KindInfo& infoOf(Kind kind) {
    return kinds()[indexOf(kind)];
}

std::optional<Kind> kindByName(std::string_view name);

/// "video", "audio" or "timestamps".
std::string_view nameOf(Source source);

EventRules defaultRules();

}  // namespace zel_monitor::scan

#endif  // ZEL_TOOLS_SCAN_KINDS_H_
