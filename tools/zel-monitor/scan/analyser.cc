#include "scan/analyser.h"

#include <algorithm>
#include <utility>

namespace zel_monitor {
namespace {

constexpr double kFallbackPictureS = 1.0 / 25;
constexpr double kStampGrainS = 0.001;  // many containers count in milliseconds
constexpr double kShortestSlideS = 0.5;
constexpr double kMostOfStated = 3.0;
constexpr size_t kMostPicturesHeld = 4;
constexpr size_t kMostSoundsHeld = 32;  // one packet of a transport stream holds several, under one timestamp

double lengthOf(const Sound& sound) {
    return static_cast<double>(sound.samples) / sound.sample_rate;
}

}  // namespace

ZELAlgo::ZELAlgoConfig scanConfig(double audio_period_s) {
    ZELAlgo::ZELAlgoConfig config;
    config.staticframe_param = 1.0F;
    config.longtime_period_s = audio_period_s;
    return config;
}

Analyser::Analyser(const ZEL::EventRules& rules, ZEL::StreamTracks tracks, AnalysisListener& listener)
    : listener_(listener),
      maker_(rules, tracks, listener),
      stall_s_(rules[indexOf(ZEL::EventKind::kStall)].min_s),
      detector_(scanConfig(kSilencePeriodS)),
      tracks_(tracks),
      video_line_(kMostPicturesHeld, video_clock_, audio_clock_),
      audio_line_(kMostSoundsHeld, audio_clock_, video_clock_),
      shortest_s_(kFallbackPictureS) {}

void Analyser::take(Picture picture) {
    const double time_s = picture.time;
    const double length_s = picture.duration > 0.0 ? picture.duration : kFallbackPictureS;
    video_line_.take(std::move(picture), time_s, length_s,
                     [this](Picture placed, double start_s) { show(std::move(placed), start_s); });
}

void Analyser::take(Sound sound) {
    const double time_s = sound.time;
    const double length_s = lengthOf(sound);
    audio_line_.take(std::move(sound), time_s, length_s,
                     [this](const Sound& placed, double start_s) { hear(placed, start_s); });
}

void Analyser::finish(std::optional<double> declared_s) {
    video_line_.finish([this](Picture placed, double start_s) { show(std::move(placed), start_s); });
    audio_line_.finish([this](const Sound& placed, double start_s) { hear(placed, start_s); });
    if (shown_) {
        settle(video_->end_s);
    }
    tellMissingEnd();
    maker_.finish({.video_s = video_ ? video_->end_s : 0.0,
                   .audio_s = audio_ ? audio_->end_s : 0.0,
                   .declared_s = declared_s,
                   .still_picture = pictures_ == 1 && !audio_});
}

double Analyser::reached() const {
    return std::max(video_ ? video_->end_s : 0.0, audio_ ? audio_->end_s : 0.0);
}

void Analyser::show(Picture picture, double start_s) {
    if (shown_) {
        const ZEL::TimeSpan missing{shown_->start_s + ownLength(start_s), start_s};
        if (isGap(missing)) {
            settle(missing.start_s);
            maker_.gap(ZEL::StreamTrack::kVideo, missing);
        } else {
            settle(start_s);
        }
        if (!isSlide(shown_->stated_s) && isSlide(start_s - shown_->start_s)) {
            ++slides_;
        }
    }
    ZELAlgo::ZELVideoResult result{};
    detector_.detectPlanes(picture.planes, result);
    const double stated_s = picture.duration > 0.0 ? picture.duration : kFallbackPictureS;
    ++pictures_;
    slides_ += isSlide(stated_s) ? uint64_t{1} : uint64_t{0};
    shortest_s_ = pictures_ == 1 ? stated_s : std::min(shortest_s_, stated_s);
    shown_.emplace(Shown{std::move(picture), start_s, stated_s, result});
    if (!video_) {
        video_ = {start_s, start_s};
        tellMissingStart(ZEL::StreamTrack::kVideo);
    }
    video_->end_s = start_s + stated_s;
    listener_.onPicture(shown_->picture, start_s);
}

void Analyser::hear(const Sound& sound, double start_s) {
    if (!audio_) {
        audio_ = {start_s, start_s};
        tellMissingStart(ZEL::StreamTrack::kAudio);
    }
    if (const ZEL::TimeSpan missing{audio_->end_s, start_s}; isGap(missing)) {
        maker_.gap(ZEL::StreamTrack::kAudio, missing);
        if (silence_) {
            silence_->skipTo(start_s);
            voice_->skipTo(start_s);
        }
    }
    if (!silence_ || silence_->sampleRate() != sound.sample_rate) {
        silence_.emplace(scanConfig(kSilencePeriodS), sound.sample_rate);
        voice_.emplace(scanConfig(kVoicePeriodS), sound.sample_rate);
    }
    silence_->feed(sound, start_s, [this](ZEL::TimeSpan period, const ZELAlgo::ZELAudioResult& result) {
        maker_.silencePeriod(period, result);
        listener_.onSilencePeriod(period, result);
    });
    voice_->feed(sound, start_s, [this](ZEL::TimeSpan period, const ZELAlgo::ZELAudioResult& result) {
        maker_.voicePeriod(period, result);
        listener_.onVoicePeriod(period, result);
    });
    audio_->end_s = start_s + lengthOf(sound);
}

void Analyser::settle(double end_s) {
    maker_.picture({shown_->start_s, std::max(end_s, shown_->start_s)}, shown_->result);
}

/// Whether a picture of that length is rather one of a slide show than one of a film.
bool Analyser::isSlide(double length_s) const {
    return length_s + ZEL::kSlackS >= std::max(stall_s_, kShortestSlideS);
}

/// How long the picture that is shown lasts if nothing is missing before `next_s`. Some containers state the
/// time to the next picture, which hides gaps, others one length for all. So a film's pictures are never
/// believed to last as long as a gap, and in a slide show, where at least every other picture is a slide,
/// only far more than the stated time is a gap.
double Analyser::ownLength(double next_s) const {
    const double length_s = next_s - shown_->start_s;
    if (2 * slides_ >= pictures_) {
        const bool too_long = isSlide(shown_->stated_s) && length_s > kMostOfStated * shown_->stated_s;
        return too_long ? shown_->stated_s : length_s;
    }
    return shown_->stated_s < stall_s_ ? shown_->stated_s : shortest_s_;
}

bool Analyser::isGap(ZEL::TimeSpan span) const {
    return span.length() > kStampGrainS && span.length() + ZEL::kSlackS >= stall_s_;
}

/// Tells that `late`, which just began, was not there when the other track was.
void Analyser::tellMissingStart(ZEL::StreamTrack late) {
    const std::optional<ZEL::TimeSpan>& other = late == ZEL::StreamTrack::kVideo ? audio_ : video_;
    const std::optional<ZEL::TimeSpan>& mine = late == ZEL::StreamTrack::kVideo ? video_ : audio_;
    if (other && isGap({other->start_s, mine->start_s})) {
        maker_.gap(late, {other->start_s, mine->start_s});
    }
}

/// Tells that one track ended before the other, or never came. A single picture that goes with sound, and is
/// said to be all there is, is its cover.
void Analyser::tellMissingEnd() {
    const auto tell = [this](ZEL::StreamTrack track, const std::optional<ZEL::TimeSpan>& mine,
                             const std::optional<ZEL::TimeSpan>& other) {
        if (!other) {
            return;
        }
        const ZEL::TimeSpan missing{mine ? mine->end_s : other->start_s, other->end_s};
        if (isGap(missing)) {
            maker_.gap(track, missing);
        }
    };
    if (tracks_.video && !(tracks_.still_picture && pictures_ == 1)) {
        tell(ZEL::StreamTrack::kVideo, video_, audio_);
    }
    if (tracks_.audio) {
        tell(ZEL::StreamTrack::kAudio, audio_, video_);
    }
}

}  // namespace zel_monitor
