#include <zel/algo/algo_facade.h>
#include <zel/events/analyser.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <deque>
#include <stdexcept>
#include <utility>
#include <vector>

#include "algo/audio_meter.h"
#include "algo/mix_down.h"
#include "events/track_joiner.h"
#include "judges/frame_meter.h"
#include "judges/sound_meter.h"

namespace ZEL {
namespace {

constexpr double kFallbackFrameS = 1.0 / 25;

/// What is no number passes none of these comparisons.
bool isValid(EventRule rule) {
    return rule.min_s >= 0.0 && rule.gap_s >= 0.0;
}

const AnalyserOptions& checked(const AnalyserOptions& options) {
    if (!std::all_of(options.rules.begin(), options.rules.end(), &isValid) ||
        !(options.late_after_s.value_or(0.0) >= 0.0)) {
        throw std::invalid_argument("a length of time for events is negative or not a number");
    }
    return options;
}

ZELJudges::FramePlanes planesOf(const ZELAlgo::ZELVideoPlanes& frame) {
    return {.width = frame.width,
            .height = frame.height,
            .data = {frame.data[0], frame.data[1], frame.data[2]},
            .stride = {frame.stride[0], frame.stride[1], frame.stride[2]}};
}

}  // namespace

/// Measures frames as they come, and keeps the measurements until the clock has placed them: what the
/// detectors and the meters say depends on the order of the frames only.
class EventAnalyser::Impl {
  public:
    Impl(EventListener& listener, const AnalyserOptions& options)
        : detectors_(detectorConfig()), joiner_(checked(options), listener) {}

    bool feedVideo(const ZELAlgo::ZELVideoPlanes& frame, double time_s, double duration_s,
                   FrameCondition condition) {
        MeasuredVideo waiting{.frame = {.index = frames_fed_}, .condition = condition};
        if (ended_ || !std::isfinite(time_s) || !detectors_.detectPlanes(frame, waiting.frame.verdicts)) {
            return false;
        }
        if (!spare_measures_.empty()) {
            waiting.measures = std::move(spare_measures_.back());
            spare_measures_.pop_back();
        }
        frame_meter_.measure(planesOf(frame), time_s, waiting.measures);
        waiting.stated_s = std::isfinite(duration_s) && duration_s > 0.0 ? duration_s : kFallbackFrameS;
        if (frames_fed_++ == 0) {
            joiner_.expectFirst(time_s + waiting.stated_s);
        }
        frames_.push_back(std::move(waiting));
        clock_.take(StreamTrack::kVideo, time_s, frames_.back().stated_s, place_);
        return true;
    }

    bool feedAudio(const ZELAlgo::ZELAudioFrame& frame, double time_s) {
        if (ended_ || !std::isfinite(time_s) || frame.data == nullptr || frame.sample_rate < 1 ||
            frame.channels < 1) {
            return false;
        }
        if (frame.samples == 0) {
            return true;
        }
        if (!meter_ || meter_->sampleRate() != frame.sample_rate) {
            meter_.emplace(frame.sample_rate);
        }
        MeasuredAudio measured = std::move(spare_audio_);
        measured.sample_rate = frame.sample_rate;
        measured.samples = frame.samples;
        measured.channels = frame.channels;
        measured.pieces.clear();
        sound_meter_.measure({.data = frame.data,
                              .samples = frame.samples,
                              .channels = frame.channels,
                              .sample_rate = frame.sample_rate},
                             measured.pieces);
        meter_->measure(ZELAlgo::mixedDown(frame.data, frame.samples, frame.channels, mono_), frame.samples,
                        measured.chunks);
        const double length_s = measured.length();
        audio_.push_back(std::move(measured));
        clock_.take(StreamTrack::kAudio, time_s, length_s, place_);
        return true;
    }

    void endOfStream(std::optional<double> declared_s) {
        if (!std::exchange(ended_, true)) {
            clock_.finish(place_);
            joiner_.finish(declared_s && std::isfinite(*declared_s) ? declared_s : std::nullopt);
        }
    }

    bool setRule(EventKind kind, EventRule rule) {
        if (indexOf(kind) >= kEventKinds || !isValid(rule)) {
            return false;
        }
        joiner_.setRule(kind, rule);
        return true;
    }

    double reached() const { return joiner_.reached(); }
    std::optional<Evidence> evidence(EventKind kind) const {
        return indexOf(kind) < kEventKinds ? joiner_.evidence(kind) : std::nullopt;
    }

  private:
    void place(StreamTrack track, double start_s) {
        if (track == StreamTrack::kVideo) {
            MeasuredVideo video = std::move(frames_.front());
            frames_.pop_front();
            video.frame.start_s = start_s;
            joiner_.frame(video);
            spare_measures_.push_back(std::move(video.measures));
        } else {
            MeasuredAudio audio = std::move(audio_.front());
            audio_.pop_front();
            joiner_.audio(audio, start_s);
            spare_audio_ = std::move(audio);
        }
    }

    ZELAlgo::AlgoFacade detectors_;
    ZELJudges::FrameMeter frame_meter_;
    std::optional<ZELAlgo::AudioMeter> meter_;
    ZELJudges::SoundMeter sound_meter_;
    std::vector<int16_t> mono_;
    std::vector<ZELJudges::MeasuredFrame> spare_measures_;  // of frames that were judged, for the next ones
    MeasuredAudio spare_audio_;
    StreamClock clock_;
    std::deque<MeasuredVideo> frames_;  // without a place yet, like the audio; the clock bounds them
    std::deque<MeasuredAudio> audio_;
    TrackJoiner joiner_;
    StreamClock::Place place_ = [this](StreamTrack track, double start_s) { place(track, start_s); };
    uint64_t frames_fed_ = 0;
    bool ended_ = false;
};

ZELAlgo::ZELAlgoConfig EventAnalyser::detectorConfig() {
    ZELAlgo::ZELAlgoConfig config;
    config.staticframe_param = 1.0F;
    config.longtime_period_s = kSilencePeriodS;
    return config;
}

EventAnalyser::EventAnalyser(EventListener& listener, const AnalyserOptions& options)
    : impl_(std::make_unique<Impl>(listener, options)) {}

EventAnalyser::~EventAnalyser() = default;

bool EventAnalyser::feedVideo(const ZELAlgo::ZELVideoPlanes& frame, double time_s, double duration_s,
                              FrameCondition condition) {
    return impl_->feedVideo(frame, time_s, duration_s, condition);
}

bool EventAnalyser::feedAudio(const ZELAlgo::ZELAudioFrame& frame, double time_s) {
    return impl_->feedAudio(frame, time_s);
}

void EventAnalyser::endOfStream(std::optional<double> declared_s) {
    impl_->endOfStream(declared_s);
}

bool EventAnalyser::setRule(EventKind kind, EventRule rule) {
    return impl_->setRule(kind, rule);
}

double EventAnalyser::reached() const {
    return impl_->reached();
}

std::optional<Evidence> EventAnalyser::evidence(EventKind kind) const {
    return impl_->evidence(kind);
}

}  // namespace ZEL
