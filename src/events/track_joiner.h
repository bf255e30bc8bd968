#ifndef ZEL_SRC_EVENTS_TRACK_JOINER_H_
#define ZEL_SRC_EVENTS_TRACK_JOINER_H_

#include <zel/events/analyser.h>
#include <zel/events/event.h>
#include <zel/events/listener.h>
#include <zel/events/stream_clock.h>

#include <cstdint>
#include <optional>

#include "algo/audio_meter.h"
#include "events/event_maker.h"
#include "events/sound_sights.h"
#include "judges/frame_meter.h"

namespace ZEL {

/// What was measured of one video frame.
struct MeasuredVideo {
    FrameMeasurement frame;
    double stated_s = 0.0;  ///< how long the stream says that it lasts
    FrameCondition condition = FrameCondition::kWhole;
    ZELJudges::MeasuredFrame measures = {};
};

/// Joins what was measured of the frames of both tracks, once they have their places in the stream: how long
/// each video frame is shown, where either track has gaps, and the periods of the audio.
class TrackJoiner {
  public:
    TrackJoiner(const AnalyserOptions& options, EventListener& listener);

    /// The first video frame has come, and ends at about `end_s`; its place is certain with the second one.
    void expectFirst(double end_s) { first_end_s_ = end_s; }
    /// The next video frame. Leaves the memory of an earlier one's measures in `video`, to be used again.
    void frame(MeasuredVideo& video);
    /// The next audio frame.
    void audio(const MeasuredAudio& audio, double start_s);
    void finish(std::optional<double> declared_s);

    void setRule(EventKind kind, EventRule rule);
    double reached() const;
    std::optional<Evidence> evidence(EventKind kind) const { return maker_.evidence(kind); }

  private:
    struct Periods {
        explicit Periods(uint32_t rate);
        uint32_t sample_rate;
        ZELAlgo::AudioPeriods silence;
        ZELAlgo::AudioPeriods voice;
    };

    void settle(double end_s);
    bool isSlide(double length_s) const;
    double ownLength(double next_s) const;
    bool isGap(TimeSpan span) const;
    bool isCover(uint64_t frames) const;
    void tellMissingStart(StreamTrack late);
    void tellMissingEnd();
    void tellLateVideo();
    void tellLateAudio();
    void tellLate(StreamTrack track, TimeSpan missing);
    const std::optional<TimeSpan>& spanOf(StreamTrack track) const;

    EventListener& listener_;
    EventMaker maker_;
    StreamTracks tracks_;
    std::optional<double> late_after_s_;
    double stall_s_;
    std::optional<double> first_end_s_;
    std::optional<MeasuredVideo> shown_;
    std::optional<Periods> periods_;
    std::optional<TimeSpan> video_;  // from the first frame's start to the last one's end
    std::optional<TimeSpan> audio_;
    double shortest_s_ = 0.0;  // of the video frames' stated lengths
    uint64_t frames_ = 0;
    uint64_t slides_ = 0;  // those that lasted too long for a film, as stated or as it came
};

}  // namespace ZEL

#endif  // ZEL_SRC_EVENTS_TRACK_JOINER_H_
