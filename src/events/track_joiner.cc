#include "events/track_joiner.h"

#include <algorithm>
#include <utility>

namespace ZEL {
namespace {

constexpr double kStampGrainS = 0.001;  // many containers count in milliseconds
constexpr double kShortestSlideS = 0.5;
constexpr double kMostOfStated = 3.0;

StreamTrack otherThan(StreamTrack track) {
    return track == StreamTrack::kVideo ? StreamTrack::kAudio : StreamTrack::kVideo;
}

ZELAlgo::ZELAlgoConfig periodConfig(double period_s) {
    ZELAlgo::ZELAlgoConfig config = EventAnalyser::detectorConfig();
    config.longtime_period_s = period_s;
    return config;
}

}  // namespace

TrackJoiner::Periods::Periods(uint32_t rate)
    : sample_rate(rate),
      silence(periodConfig(EventAnalyser::kSilencePeriodS), rate),
      voice(periodConfig(EventAnalyser::kVoicePeriodS), rate) {}

TrackJoiner::TrackJoiner(const AnalyserOptions& options, EventListener& listener)
    : listener_(listener),
      maker_(options.rules, options.tracks, listener),
      tracks_(options.tracks),
      late_after_s_(options.late_after_s),
      stall_s_(options.rules[indexOf(EventKind::kStall)].min_s) {}

void TrackJoiner::frame(MeasuredVideo& video) {
    const FrameMeasurement frame = video.frame;
    const double start_s = frame.start_s;
    const double stated_s = video.stated_s;
    if (shown_) {
        const TimeSpan missing{shown_->frame.start_s + ownLength(start_s), start_s};
        if (isGap(missing)) {
            settle(missing.start_s);
            maker_.gap(StreamTrack::kVideo, missing);
        } else {
            settle(start_s);
        }
        if (!isSlide(shown_->stated_s) && isSlide(start_s - shown_->frame.start_s)) {
            ++slides_;
        }
    }
    if (video.condition == FrameCondition::kDamaged) {
        maker_.damage({start_s, start_s + stated_s});
    }
    ++frames_;
    slides_ += isSlide(stated_s) ? uint64_t{1} : uint64_t{0};
    shortest_s_ = frames_ == 1 ? stated_s : std::min(shortest_s_, stated_s);
    if (!shown_) {
        shown_.emplace();
    }
    std::swap(*shown_, video);
    if (!video_) {
        video_ = {start_s, start_s};
        tellMissingStart(StreamTrack::kVideo);
    }
    video_->end_s = start_s + stated_s;
    listener_.onFrame(frame);
    tellLateAudio();
}

void TrackJoiner::audio(const MeasuredAudio& audio, double start_s) {
    if (!audio_) {
        audio_ = {start_s, start_s};
        tellMissingStart(StreamTrack::kAudio);
    }
    if (const TimeSpan missing{audio_->end_s, start_s}; isGap(missing)) {
        maker_.gap(StreamTrack::kAudio, missing);
        if (periods_) {
            periods_->silence.skipTo(start_s);
            periods_->voice.skipTo(start_s);
        }
    }
    if (!periods_ || periods_->sample_rate != audio.sample_rate) {
        periods_.emplace(audio.sample_rate);
    }
    periods_->silence.add(audio.chunks, audio.samples, start_s,
                          [this](double from_s, double to_s, const ZELAlgo::ZELAudioResult& result) {
                              maker_.silencePeriod({from_s, to_s}, result);
                              listener_.onSilencePeriod({from_s, to_s}, result);
                          });
    maker_.audio(audio, start_s);
    periods_->voice.add(audio.chunks, audio.samples, start_s,
                        [this](double from_s, double to_s, const ZELAlgo::ZELAudioResult& result) {
                            listener_.onVoicePeriod({from_s, to_s}, result);
                        });
    audio_->end_s =
        std::max(audio_->end_s, start_s + audio.length());  // a short frame may lie within a long one
    tellLateVideo();
}

void TrackJoiner::finish(std::optional<double> declared_s) {
    if (shown_) {
        settle(video_->end_s);
    }
    tellMissingEnd();
    maker_.finish({.video_s = video_ ? video_->end_s : 0.0,
                   .audio_s = audio_ ? audio_->end_s : 0.0,
                   .declared_s = declared_s,
                   .still = frames_ == 1 && !audio_});
}

void TrackJoiner::setRule(EventKind kind, EventRule rule) {
    if (kind == EventKind::kStall) {
        stall_s_ = rule.min_s;
    }
    maker_.setRule(kind, rule);
}

double TrackJoiner::reached() const {
    return std::max(video_ ? video_->end_s : 0.0, audio_ ? audio_->end_s : 0.0);
}

/// The frame that is shown lasts until `end_s`.
void TrackJoiner::settle(double end_s) {
    const double start_s = shown_->frame.start_s;
    maker_.frame({start_s, std::max(end_s, start_s)}, shown_->frame.verdicts, shown_->measures);
}

/// Whether a frame of that length is rather one of a slide show than one of a film.
bool TrackJoiner::isSlide(double length_s) const {
    return length_s + kSlackS >= std::max(stall_s_, kShortestSlideS);
}

/// How long the frame that is shown lasts if nothing is missing before `next_s`. Some containers state the
/// time to the next frame, which hides gaps, others one length for all. So a film's frames are never believed
/// to last as long as a gap, and in a slide show, where at least every other frame is a slide, only far more
/// than the stated time is a gap.
double TrackJoiner::ownLength(double next_s) const {
    const double length_s = next_s - shown_->frame.start_s;
    if (2 * slides_ >= frames_) {
        const bool too_long = isSlide(shown_->stated_s) && length_s > kMostOfStated * shown_->stated_s;
        return too_long ? shown_->stated_s : length_s;
    }
    return shown_->stated_s < stall_s_ ? shown_->stated_s : shortest_s_;
}

bool TrackJoiner::isGap(TimeSpan span) const {
    return span.length() > kStampGrainS && span.length() + kSlackS >= stall_s_;
}

/// Whether `frames` frames are all that is to be expected of the video: a single picture that goes with
/// audio, and is said to be all there is, is its cover.
bool TrackJoiner::isCover(uint64_t frames) const {
    return tracks_.still && frames == 1;
}

/// Tells that `late`, which just began, was not there when the other track was.
void TrackJoiner::tellMissingStart(StreamTrack late) {
    const std::optional<TimeSpan>& other = spanOf(otherThan(late));
    const std::optional<TimeSpan>& mine = spanOf(late);
    if (other && isGap({other->start_s, mine->start_s})) {
        maker_.gap(late, {other->start_s, mine->start_s});
    }
}

/// Tells that one track ended before the other, or never came.
void TrackJoiner::tellMissingEnd() {
    const auto tell = [this](StreamTrack track) {
        const std::optional<TimeSpan>& mine = spanOf(track);
        const std::optional<TimeSpan>& other = spanOf(otherThan(track));
        if (!other) {
            return;
        }
        const TimeSpan missing{mine ? mine->end_s : other->start_s, other->end_s};
        if (isGap(missing)) {
            maker_.gap(track, missing);
        }
    };
    if (tracks_.video && !isCover(frames_)) {
        tell(StreamTrack::kVideo);
    }
    if (tracks_.audio) {
        tell(StreamTrack::kAudio);
    }
}

/// Tells that the video of a live stream has fallen too far behind the audio, which just came.
void TrackJoiner::tellLateVideo() {
    double from_s = audio_->start_s;
    uint64_t frames = frames_;
    if (shown_) {
        from_s = shown_->frame.start_s + ownLength(audio_->end_s);  // as if the next frame came now
    } else if (first_end_s_) {
        from_s = std::max(from_s, *first_end_s_);
        frames = 1;
    }
    if (tracks_.video && !isCover(frames)) {
        tellLate(StreamTrack::kVideo, {from_s, audio_->end_s});
    }
}

/// The same the other way round. A frame that is to be shown for long is not that far yet.
void TrackJoiner::tellLateAudio() {
    if (tracks_.audio) {
        tellLate(StreamTrack::kAudio, {audio_ ? audio_->end_s : video_->start_s, shown_->frame.start_s});
    }
}

void TrackJoiner::tellLate(StreamTrack track, TimeSpan missing) {
    if (late_after_s_ && missing.length() > *late_after_s_ && isGap(missing)) {
        maker_.late(track, missing);
    }
}

const std::optional<TimeSpan>& TrackJoiner::spanOf(StreamTrack track) const {
    return track == StreamTrack::kVideo ? video_ : audio_;
}

}  // namespace ZEL
