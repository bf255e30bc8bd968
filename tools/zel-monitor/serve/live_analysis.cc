#include "serve/live_analysis.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "report/mean_luma.h"

namespace zel_monitor {
namespace {

/// One track of a live stream may always be ahead of the other by about that.
constexpr double kUsuallyApartS = 0.8;

ZEL::AnalyserOptions optionsFor(const StreamSettings& settings, ZEL::StreamTracks tracks) {
    ZEL::AnalyserOptions options;
    options.tracks = tracks;
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        const AlarmRule& rule = settings.rules[indexOf(info.kind)];
        options.rules[indexOf(info.kind)] = {.min_s = rule.min_s, .gap_s = rule.gap_s};
    }
    options.late_after_s = settings.rules[indexOf(ZEL::EventKind::kStall)].min_s + kUsuallyApartS;
    return options;
}

}  // namespace

LiveAnalysis::LiveAnalysis(const StreamSettings& settings, ZEL::StreamTracks tracks, AlarmBook& alarms,
                           History& history)
    : alarms_(alarms), history_(history), analyser_(*this, optionsFor(settings, tracks)) {}

void LiveAnalysis::feed(const VideoFrame& frame, Moment now) {
    now_ = now;
    video_at_s_ = frame.time + durationOf(frame);
    luma_ = meanLuma(frame.planes);
    history_.add(History::Curve::kLuma, *luma_, now.wall);
    analyser_.feedVideo(frame.planes, frame.time, frame.duration);
}

void LiveAnalysis::feed(const AudioFrame& sound, Moment now) {
    now_ = now;
    audio_at_s_ = sound.time + durationOf(sound);
    analyser_.feedAudio({.sample_rate = static_cast<uint32_t>(sound.sample_rate),
                         .samples = static_cast<uint32_t>(sound.samples),
                         .channels = static_cast<uint32_t>(sound.channels),
                         .data = sound.data},
                        sound.time);
}

void LiveAnalysis::end(Cleared reason, Moment now) {
    now_ = now;
    ending_ = reason;
    analyser_.endOfStream();
}

void LiveAnalysis::onRaised(ZEL::EventKind kind, double start_s, double noticed_s) {
    raised_[indexOf(kind)] = !ending_;
    if (ending_) {
        return;  // where a live stream breaks off says nothing of what it lacks
    }
    alarms_.begin(indexOf(kind), std::max(noticed_s - start_s, 0.0), detailOf(kind), now_);
}

void LiveAnalysis::onCleared(const ZEL::Event& event) {
    if (!std::exchange(raised_[indexOf(event.kind)], false)) {
        return;
    }
    const double ago_s = std::max(analyser_.reached() - event.span.end_s, 0.0);
    alarms_.end(indexOf(event.kind), ago_s,
                event.open_at_end ? ending_.value_or(Cleared::kOver) : Cleared::kOver, now_);
    if (event.counts()) {
        const auto ended = now_.wall - wallSeconds(ago_s);
        history_.add(event.kind, ended - wallSeconds(event.span.length()), ended);
    }
}

void LiveAnalysis::onSilencePeriod(ZEL::TimeSpan /*period*/, const ZELAlgo::ZELAudioResult& result) {
    level_ = result.audio_level;
    history_.add(History::Curve::kLevel, result.audio_level, now_.wall);
}

void LiveAnalysis::onVoicePeriod(ZEL::TimeSpan /*period*/, const ZELAlgo::ZELAudioResult& result) {
    history_.add(History::Curve::kVoice, result.voice_scale_longtime, now_.wall);
}

std::string LiveAnalysis::detailOf(ZEL::EventKind kind) const {
    if (kind != ZEL::EventKind::kStall || std::abs(video_at_s_ - audio_at_s_) < kUsuallyApartS) {
        return "";
    }
    return video_at_s_ < audio_at_s_ ? "no video, while audio goes on" : "no audio, while video goes on";
}

}  // namespace zel_monitor
