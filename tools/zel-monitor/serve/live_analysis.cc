#include "serve/live_analysis.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "report/mean_luma.h"

namespace zel_monitor {
namespace {

/// One track of a live stream may always be ahead of the other by about that.
constexpr double kUsuallyApartS = 0.8;

ZEL::EventRule ruleFor(const StreamSettings& settings, ZEL::EventKind kind) {
    const AlarmRule& rule = settings.rules[indexOf(kind)];
    return {.min_s = rule.min_s, .gap_s = rule.gap_s};
}

ZEL::AnalyserOptions optionsFor(const StreamSettings& settings, ZEL::StreamTracks tracks) {
    ZEL::AnalyserOptions options;
    options.tracks = tracks;
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        options.rules[indexOf(info.kind)] = ruleFor(settings, info.kind);
    }
    options.late_after_s = settings.rules[indexOf(ZEL::EventKind::kStall)].min_s + kUsuallyApartS;
    return options;
}

}  // namespace

LiveAnalysis::LiveAnalysis(const StreamSettings& settings, ZEL::StreamTracks tracks, AlarmBook& alarms,
                           History& history)
    : alarms_(alarms),
      history_(history),
      tells_damage_(settings.rules[indexOf(ZEL::EventKind::kDamage)].enabled),
      analyser_(*this, optionsFor(settings, tracks)),
      damage_(ruleFor(settings, ZEL::EventKind::kDamage), *this) {}

void LiveAnalysis::saw(const MediaItem& item, Moment now) {
    now_ = now;
    reached_s_[trackOf(item)] = timeOf(item) + durationOf(item);
    damage_.saw(item);
}

void LiveAnalysis::feed(const VideoFrame& frame, double left_out_s) {
    luma_ = meanLuma(frame.planes);
    history_.add(History::Curve::kLuma, *luma_, now_.wall);
    // What is left out on purpose is no gap; what damage leaves is told once, unless damage is not told.
    analyser_.feedVideo(frame.planes, frame.time,
                        left_out_s > 0.0 ? durationOf(frame) + left_out_s : frame.duration,
                        tells_damage_ ? conditionOf(frame) : ZEL::FrameCondition::kWhole);
}

void LiveAnalysis::feed(const AudioFrame& sound) {
    analyser_.feedAudio({.sample_rate = static_cast<uint32_t>(sound.sample_rate),
                         .samples = static_cast<uint32_t>(sound.samples),
                         .channels = static_cast<uint32_t>(sound.channels),
                         .data = sound.data},
                        sound.time);
}

void LiveAnalysis::end(Cleared reason, Moment now) {
    now_ = now;
    ending_ = reason;
    damage_.end();
    analyser_.endOfStream();
}

void LiveAnalysis::onRaised(ZEL::EventKind kind, double start_s, double noticed_s) {
    raised_[indexOf(kind)] = !ending_;
    if (ending_) {
        return;  // where a live stream breaks off says nothing of what it lacks
    }
    const bool is_damage = kind == ZEL::EventKind::kDamage;
    alarms_.begin(
        indexOf(kind), std::max(noticed_s - start_s, 0.0),
        {.detail = detailOf(kind), .evidence = is_damage ? damage_.evidence() : analyser_.evidence(kind)},
        now_);
}

void LiveAnalysis::onCleared(const ZEL::Event& event) {
    if (!std::exchange(raised_[indexOf(event.kind)], false)) {
        return;
    }
    const bool is_damage = event.kind == ZEL::EventKind::kDamage;
    const double reached_s = is_damage ? std::max(reached_s_.video, reached_s_.audio) : analyser_.reached();
    const double ago_s = std::max(reached_s - event.span.end_s, 0.0);
    alarms_.measured(indexOf(event.kind), event.evidence);
    alarms_.end(indexOf(event.kind), ago_s,
                event.open_at_end ? ending_.value_or(Cleared::kOver) : Cleared::kOver, now_);
    if (event.counts() || is_damage) {  // damage lies here and there
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
    if (kind != ZEL::EventKind::kStall || std::abs(reached_s_.video - reached_s_.audio) < kUsuallyApartS) {
        return "";
    }
    return reached_s_.video < reached_s_.audio ? "no video, while audio goes on"
                                               : "no audio, while video goes on";
}

}  // namespace zel_monitor
