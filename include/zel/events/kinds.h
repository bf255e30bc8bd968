#ifndef ZEL_EVENTS_KINDS_H_
#define ZEL_EVENTS_KINDS_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string_view>

namespace ZEL {

/// Where a kind's verdicts come from.
enum class EventSource : uint8_t { kVideo, kAudio, kTimestamps };

/// Whether a kind is told unasked. A fault is wrong in any stream; a look may be as it was meant to be, as a
/// night scene and music without words are.
enum class EventTier : uint8_t { kFault, kLook };

/// When a run of verdicts is an event: it lasts at least `min_s` seconds, and `gap_s` seconds without the
/// fault end it.
struct EventRule {
    double min_s = 0.0;
    double gap_s = 0.0;
};

/// What can be wrong over a stretch of a stream. The order is that of every table and report. A new kind is
/// an enumerator here and a row in the table below: nothing else lists them.
enum class EventKind : uint8_t {
    kBlack,
    kGreen,
    kBlock,
    kFreeze,
    kUnderexposed,
    kOverexposed,
    kMute,
    kClipping,
    kDeadChannel,
    kAntiphase,
    kLowVoice,
    kHighVoice,
    kNoVoice,
    kStall,
    kShort
};

struct EventKindInfo {
    EventKind kind;
    std::string_view name;  ///< as on command lines and in reports
    EventSource source;
    EventTier tier = EventTier::kFault;
    EventRule rule;            ///< the default
    std::string_view unit;     ///< what is measured, in words: that of Evidence
    std::string_view meaning;  ///< one line, no full stop
    std::string_view colour;   ///< "#rrggbb", readable on light and on dark ground, unlike its neighbours'
};

inline constexpr auto kEventKindTable = std::to_array<EventKindInfo>({
    {.kind = EventKind::kBlack,
     .name = "black",
     .source = EventSource::kVideo,
     .rule = {.min_s = 0.5, .gap_s = 0.1},
     .unit = "share of the frame that is black",
     .meaning = "all black, but for a logo or a clock",
     .colour = "#64748b"},
    {.kind = EventKind::kGreen,
     .name = "green",
     .source = EventSource::kVideo,
     .rule = {.min_s = 0.2, .gap_s = 0.1},
     .unit = "share of the chroma that is zero",
     .meaning = "luma and chroma are zero: a frame never written",
     .colour = "#2e9e4f"},
    {.kind = EventKind::kBlock,
     .name = "block",
     .source = EventSource::kVideo,
     .rule = {.min_s = 0.2, .gap_s = 0.5},
     .unit = "share of the frame with edges on a grid, or lost",
     .meaning = "coarse blocks (mosaic), or parts of the frame that were never decoded",
     .colour = "#d9772b"},
    {.kind = EventKind::kFreeze,
     .name = "freeze",
     .source = EventSource::kVideo,
     .rule = {.min_s = 2.0, .gap_s = 0.1},
     .unit = "share of the frame that has changed",
     .meaning = "the picture stands still, but for a clock or a ticker",
     .colour = "#3b82d6"},
    {.kind = EventKind::kUnderexposed,
     .name = "underexposed",
     .source = EventSource::kVideo,
     .tier = EventTier::kLook,
     .rule = {.min_s = 1.0, .gap_s = 0.5},
     .unit = "share of the frame that is bright",
     .meaning = "too dark to see, but not black",
     .colour = "#7c6bd0"},
    {.kind = EventKind::kOverexposed,
     .name = "overexposed",
     .source = EventSource::kVideo,
     .tier = EventTier::kLook,
     .rule = {.min_s = 1.0, .gap_s = 0.5},
     .unit = "share of the frame that is dark, or burnt out",
     .meaning = "washed out by too much light",
     .colour = "#d4a012"},
    {.kind = EventKind::kMute,
     .name = "mute",
     .source = EventSource::kAudio,
     .rule = {.min_s = 1.0, .gap_s = 0.2},
     .unit = "mean absolute sample value",
     .meaning = "mean sample level of at most 2 of 32767",
     .colour = "#a3487f"},
    {.kind = EventKind::kClipping,
     .name = "clipping",
     .source = EventSource::kAudio,
     .rule = {.min_s = 0.5, .gap_s = 1.0},
     .unit = "share of the samples that are cut off at full scale",
     .meaning = "sound that is driven beyond full scale",
     .colour = "#8aa11e"},
    {.kind = EventKind::kDeadChannel,
     .name = "dead-channel",
     .source = EventSource::kAudio,
     .rule = {.min_s = 2.0, .gap_s = 0.5},
     .unit = "dB that one channel lies below the other",
     .meaning = "left or right is silent, the other is not",
     .colour = "#b08968"},
    {.kind = EventKind::kAntiphase,
     .name = "antiphase",
     .source = EventSource::kAudio,
     .rule = {.min_s = 2.0, .gap_s = 0.5},
     .unit = "correlation of left and right",
     .meaning = "left and right cancel each other out in mono",
     .colour = "#5a55c9"},
    {.kind = EventKind::kLowVoice,
     .name = "low-voice",
     .source = EventSource::kAudio,
     .tier = EventTier::kLook,
     .rule = {.min_s = 3.0, .gap_s = 2.0},
     .unit = "mean absolute sample value of voiced sound",
     .meaning = "speech with a mean level of at most 500",
     .colour = "#c77dba"},
    {.kind = EventKind::kHighVoice,
     .name = "high-voice",
     .source = EventSource::kAudio,
     .tier = EventTier::kLook,
     .rule = {.min_s = 1.0, .gap_s = 2.0},
     .unit = "mean absolute sample value of voiced sound",
     .meaning = "speech with a mean level from 20000",
     .colour = "#e0527a"},
    {.kind = EventKind::kNoVoice,
     .name = "no-voice",
     .source = EventSource::kAudio,
     .tier = EventTier::kLook,
     .rule = {.min_s = 5.0, .gap_s = 0.5},
     .unit = "seconds of voiced sound in a row",
     .meaning = "sound, but nobody speaks",
     .colour = "#2aa3a3"},
    {.kind = EventKind::kStall,
     .name = "stall",
     .source = EventSource::kTimestamps,
     .rule = {.min_s = 1.0, .gap_s = 0.1},
     .unit = "seconds for which a track has no frame",
     .meaning = "no video or no audio: a gap in the timestamps, or a track begins late or ends early",
     .colour = "#cf4436"},
    {.kind = EventKind::kShort,
     .name = "short",
     .source = EventSource::kTimestamps,
     .rule = {.min_s = 1.0, .gap_s = 0.0},
     .unit = "seconds missing before the declared end",
     .meaning = "the stream ends before its declared end",
     .colour = "#96502c"},
});
inline constexpr size_t kEventKinds = std::size(kEventKindTable);

template <typename T>
using PerEventKind = std::array<T, kEventKinds>;

/// A rule for every kind.
using EventRules = PerEventKind<EventRule>;

constexpr size_t indexOf(EventKind kind) {
    return static_cast<size_t>(kind);
}

static_assert(std::adjacent_find(kEventKindTable.begin(), kEventKindTable.end(),
                                 [](const auto& a, const auto& b) { return a.kind >= b.kind; }) ==
                      kEventKindTable.end() &&
                  indexOf(kEventKindTable.back().kind) == kEventKinds - 1,
              "every kind has one row, in the order of the enumerators");

/// Every kind once, in the order of EventKind.
constexpr const PerEventKind<EventKindInfo>& eventKinds() {
    return kEventKindTable;
}

constexpr const EventKindInfo& infoOf(EventKind kind) {
    return kEventKindTable[indexOf(kind)];
}

/// Nothing for a name that no kind has.
std::optional<EventKind> eventKindByName(std::string_view name);

/// "video", "audio" or "timestamps".
std::string_view nameOf(EventSource source);

/// "fault" or "look".
std::string_view nameOf(EventTier tier);

EventRules defaultEventRules();

}  // namespace ZEL

#endif  // ZEL_EVENTS_KINDS_H_
