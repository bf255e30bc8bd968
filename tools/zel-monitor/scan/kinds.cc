#include "scan/kinds.h"

#include <algorithm>

namespace zel_monitor::scan {
namespace {

constexpr PerKind<KindInfo> kKinds{{
    {Kind::kBlack, "black", Source::kVideo, {0.5, 0.1}, "at least 95% of the looked-at luma is below 30"},
    {Kind::kGreen, "green", Source::kVideo, {0.2, 0.1}, "luma and chroma are zero: a picture never written"},
    {Kind::kBlock, "block", Source::kVideo, {0.2, 0.5}, "small hard-edged rectangles (mosaic)"},
    {Kind::kFreeze, "freeze", Source::kVideo, {2.0, 0.1}, "the same picture again and again"},
    {Kind::kUnderexposed, "underexposed", Source::kVideo, {1.0, 0.5}, "too dark to see, but not black"},
    {Kind::kOverexposed, "overexposed", Source::kVideo, {1.0, 0.5}, "washed out by too much light"},
    {Kind::kMute, "mute", Source::kAudio, {1.0, 0.2}, "mean sample level of at most 2 of 32767"},
    {Kind::kLowVoice, "low-voice", Source::kAudio, {3.0, 2.0}, "speech with a mean level of at most 500"},
    {Kind::kHighVoice, "high-voice", Source::kAudio, {1.0, 2.0}, "speech with a mean level from 20000"},
    {Kind::kNoVoice, "no-voice", Source::kAudio, {5.0, 0.5}, "sound, but nobody speaks"},
    {Kind::kStall,
     "stall",
     Source::kTimestamps,
     {1.0, 0.1},
     "no picture or no sound: a gap in the timestamps, or a track begins late or ends early"},
    {Kind::kShort, "short", Source::kTimestamps, {1.0, 0.0}, "the stream ends before its declared end"},
}};

}  // namespace

const PerKind<KindInfo>& kinds() {
    return kKinds;
}

std::optional<Kind> kindByName(std::string_view name) {
    const auto* const found =
        std::find_if(kKinds.begin(), kKinds.end(), [&](const KindInfo& info) { return info.name == name; });
    return found == kKinds.end() ? std::nullopt : std::optional(found->kind);
}

std::string_view nameOf(Source source) {
    constexpr std::array<std::string_view, 3> kNames{"video", "audio", "timestamps"};
    return kNames.at(static_cast<size_t>(source));
}

EventRules defaultRules() {
    EventRules rules;
    std::transform(kKinds.begin(), kKinds.end(), rules.begin(),
                   [](const KindInfo& info) { return info.rule; });
    return rules;
}

}  // namespace zel_monitor::scan
