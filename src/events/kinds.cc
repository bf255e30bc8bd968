#include <zel/events/kinds.h>

#include <algorithm>

namespace ZEL {
namespace {

constexpr PerEventKind<EventKindInfo> kKinds{{
    {EventKind::kBlack,
     "black",
     EventSource::kVideo,
     {0.5, 0.1},
     "at least 95% of the looked-at luma is below 30"},
    {EventKind::kGreen,
     "green",
     EventSource::kVideo,
     {0.2, 0.1},
     "luma and chroma are zero: a picture never written"},
    {EventKind::kBlock, "block", EventSource::kVideo, {0.2, 0.5}, "small hard-edged rectangles (mosaic)"},
    {EventKind::kFreeze, "freeze", EventSource::kVideo, {2.0, 0.1}, "the same picture again and again"},
    {EventKind::kUnderexposed,
     "underexposed",
     EventSource::kVideo,
     {1.0, 0.5},
     "too dark to see, but not black"},
    {EventKind::kOverexposed, "overexposed", EventSource::kVideo, {1.0, 0.5}, "washed out by too much light"},
    {EventKind::kMute, "mute", EventSource::kAudio, {1.0, 0.2}, "mean sample level of at most 2 of 32767"},
    {EventKind::kLowVoice,
     "low-voice",
     EventSource::kAudio,
     {3.0, 2.0},
     "speech with a mean level of at most 500"},
    {EventKind::kHighVoice,
     "high-voice",
     EventSource::kAudio,
     {1.0, 2.0},
     "speech with a mean level from 20000"},
    {EventKind::kNoVoice, "no-voice", EventSource::kAudio, {5.0, 0.5}, "sound, but nobody speaks"},
    {EventKind::kStall,
     "stall",
     EventSource::kTimestamps,
     {1.0, 0.1},
     "no picture or no sound: a gap in the timestamps, or a track begins late or ends early"},
    {EventKind::kShort,
     "short",
     EventSource::kTimestamps,
     {1.0, 0.0},
     "the stream ends before its declared end"},
}};

}  // namespace

const PerEventKind<EventKindInfo>& eventKinds() {
    return kKinds;
}

std::optional<EventKind> eventKindByName(std::string_view name) {
    const auto* const found = std::find_if(kKinds.begin(), kKinds.end(),
                                           [&](const EventKindInfo& info) { return info.name == name; });
    return found == kKinds.end() ? std::nullopt : std::optional(found->kind);
}

std::string_view nameOf(EventSource source) {
    constexpr std::array<std::string_view, 3> kNames{"video", "audio", "timestamps"};
    return kNames.at(static_cast<size_t>(source));
}

EventRules defaultEventRules() {
    EventRules rules;
    std::transform(kKinds.begin(), kKinds.end(), rules.begin(),
                   [](const EventKindInfo& info) { return info.rule; });
    return rules;
}

}  // namespace ZEL
