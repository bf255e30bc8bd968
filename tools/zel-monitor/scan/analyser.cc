#include "scan/analyser.h"

#include <algorithm>
#include <utility>

namespace zel_monitor::scan {
namespace {

constexpr double kFallbackPictureS = 1.0 / 25;

}  // namespace

ZELAlgo::ZELAlgoConfig scanConfig(double audio_period_s) {
    ZELAlgo::ZELAlgoConfig config;
    config.staticframe_param = 1.0F;
    config.longtime_period_s = audio_period_s;
    return config;
}

double TrackClock::place(double time_s) {
    if (any_ && time_s + shift_ < last_) {
        shift_ = expected_ - time_s;
    }
    any_ = true;
    return last_ = time_s + shift_;
}

Analyser::Analyser(const EventRules& rules, double frame_rate, AnalysisListener& listener)
    : listener_(listener),
      maker_(rules, listener),
      stall_s_(rules[indexOf(Kind::kStall)].min_s),
      video_(scanConfig(kSilencePeriodS)),
      usual_s_(frame_rate > 0.0 ? 1.0 / frame_rate : kFallbackPictureS) {}

void Analyser::take(Picture picture) {
    const double start_s = video_clock_.place(picture.time);
    if (shown_) {
        const double length_s = start_s - shown_->start_s;
        if (length_s - usual_s_ >= stall_s_) {
            const double end_s = shown_->start_s + usual_s_;
            settle(end_s);
            maker_.gap({end_s, start_s});
        } else {
            usual_s_ = length_s > 0.0 ? length_s : usual_s_;
            settle(start_s);
        }
    }
    ZELAlgo::ZELVideoResult result{};
    video_.detectPlanes(picture.planes, result);
    ++pictures_;
    shown_.emplace(Shown{std::move(picture), start_s, result});
    video_clock_.expectNext(start_s + lengthOfLast());
    listener_.onPicture(shown_->picture, start_s);
}

void Analyser::take(const Sound& sound) {
    const double start_s = audio_clock_.place(sound.time);
    const double expected_s = audio_clock_.expected();
    if (silence_ && start_s - expected_s >= stall_s_) {
        maker_.gap({expected_s, start_s});
    }
    if (!silence_ || silence_->sampleRate() != sound.sample_rate) {
        silence_.emplace(scanConfig(kSilencePeriodS), sound.sample_rate);
        voice_.emplace(scanConfig(kVoicePeriodS), sound.sample_rate);
    }
    silence_->feed(sound, start_s, [this](Span period, const ZELAlgo::ZELAudioResult& result) {
        maker_.silencePeriod(period, result);
        listener_.onSilencePeriod(period, result);
    });
    voice_->feed(sound, start_s, [this](Span period, const ZELAlgo::ZELAudioResult& result) {
        maker_.voicePeriod(period, result);
        listener_.onVoicePeriod(period, result);
    });
    audio_clock_.expectNext(start_s + static_cast<double>(sound.samples) / sound.sample_rate);
}

void Analyser::finish(std::optional<double> declared_s) {
    const double video_end_s = video_clock_.expected();
    if (shown_) {
        settle(video_end_s);
    }
    maker_.finish({.video_s = video_end_s,
                   .audio_s = audio_clock_.expected(),
                   .declared_s = declared_s,
                   .still_picture = pictures_ == 1 && !silence_});
}

double Analyser::reached() const {
    return std::max(video_clock_.expected(), audio_clock_.expected());
}

void Analyser::settle(double end_s) {
    maker_.picture({shown_->start_s, std::max(end_s, shown_->start_s)}, shown_->result);
}

/// What the stream says of the last picture, unless that hides a gap behind it.
double Analyser::lengthOfLast() const {
    const double said_s = shown_->picture.duration;
    return said_s > 0.0 && said_s - usual_s_ < stall_s_ ? said_s : usual_s_;
}

}  // namespace zel_monitor::scan
