#ifndef ZEL_EVENTS_ANALYSER_H_
#define ZEL_EVENTS_ANALYSER_H_

#include <zel/algo/algo_types.h>
#include <zel/events/event.h>
#include <zel/events/kinds.h>
#include <zel/events/listener.h>

#include <cstdint>
#include <memory>
#include <optional>

namespace ZEL {

/// Which tracks a stream has.
struct StreamTracks {
    bool video = true;
    bool audio = true;
    bool still = false;  ///< the video track is said to be one picture, such as a cover
};

/// What is known of a frame before anybody looks at it.
enum class FrameCondition : uint8_t {
    kWhole,
    kDamaged,  ///< a decoder made up part of it, or did without a frame that it refers to
};

struct AnalyserOptions {
    StreamTracks tracks = {};
    EventRules rules = defaultEventRules();
    /// For live streams: a track that has fallen behind the other by more than this many seconds stalls, and
    /// its stall is raised while the stream runs. Without a value, as files want it, what is missing of a
    /// track is known when that goes on, or when the stream ends.
    std::optional<double> late_after_s = {};
};

/// Finds the events of one stream: time-stamped frames in, events out, as they begin and end.
///
/// Runs the detectors on every frame and on every period of the audio and measures both, at once; gives each
/// its place in the stream with a StreamClock; judges what was measured over time, and joins that to events
/// by the rules of their kinds. Green and silence are as the detectors say. A gap in the timestamps, a track
/// that begins late or ends early, and an end before the declared one are events as well. What one fault
/// implies is not told again.
///
/// An event is raised at most a second after its rule's minimum is over, but for a freeze of a nearly plain
/// frame: whether that is a title card shows up to ten seconds later.
///
/// Works for files and for live streams: memory is bounded, however long the stream, and whatever it lacks.
/// Nothing that is fed is kept beyond the call.
///
/// One thread at a time; the listener is called on it. The listener may call reached() and evidence(), and
/// nothing else. What it throws comes out of the call, and the analyser can then only be destroyed.
///
/// The detectors log a line for every frame like the one before it; setLogSink() says where that goes.
class EventAnalyser {
  public:
    /// Silence is found to a tenth of a second. Speech has pauses, so it is measured by the second.
    static constexpr double kSilencePeriodS = 0.1;
    static constexpr double kVoicePeriodS = 1.0;

    /// What the detectors are asked for: the library's defaults but for what the rules for events take the
    /// place of. Every frame like the one before is told at once, and audio is judged in short periods; the
    /// period is that for silence.
    static ZELAlgo::ZELAlgoConfig detectorConfig();

    /// `listener` is borrowed. Throws std::invalid_argument for a rule that setRule() refuses, and for such a
    /// lateness.
    explicit EventAnalyser(EventListener& listener, const AnalyserOptions& options = {});
    ~EventAnalyser();
    EventAnalyser(const EventAnalyser&) = delete;
    EventAnalyser& operator=(const EventAnalyser&) = delete;

    /// Takes the next video frame, whose timestamp is `time_s` and which is to be shown for `duration_s`,
    /// both in seconds; a duration that is not positive stands for none, and 1/25 is taken. Timestamps may
    /// jump, see StreamClock, but those of few bits are to be unwrapped. `frame` is borrowed for the call.
    ///
    /// What damage leaves of a frame is blocks, stands still or is green. That is one fact with the damage,
    /// so these kinds are not told of frames that are damaged nor for a second after them.
    ///
    /// False, and nothing is taken, for what AlgoFacade::detectPlanes() refuses (a null plane, an odd size, a
    /// stride that is too small, 2^31 bytes or more, no memory for the detectors), for a time that is not
    /// finite, and after the end of the stream.
    bool feedVideo(const ZELAlgo::ZELVideoPlanes& frame, double time_s, double duration_s = 0.0,
                   FrameCondition condition = FrameCondition::kWhole);

    /// Takes the next audio frame, which begins at `time_s`: `samples` times `channels` interleaved samples.
    /// Silence and speech are looked for in the mean of several channels, the rest in each. The rate and the
    /// channels may change from frame to frame; a rate below 100 Hz is not heard. `frame` is borrowed for the
    /// call.
    ///
    /// False, and nothing is taken, for null data, a sample rate or channels below 1, a time that is not
    /// finite, and after the end of the stream.
    bool feedAudio(const ZELAlgo::ZELAudioFrame& frame, double time_s);

    /// The stream is over, and said that it would last `declared_s` seconds, if it said anything; what is not
    /// finite says nothing. Ends and clears what is open. A second call does nothing.
    void endOfStream(std::optional<double> declared_s = std::nullopt);

    /// Changes the rule for a kind, also for a run that has begun. False for a length that is negative or not
    /// a number.
    bool setRule(EventKind kind, EventRule rule);

    /// How far the stream has come, in stream time: the later end of what either track has placed.
    double reached() const;

    /// What has been measured of the event of a kind that is raised and not cleared, as far as it is known.
    /// In onRaised() that event is there already.
    std::optional<Evidence> evidence(EventKind kind) const;

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace ZEL

#endif  // ZEL_EVENTS_ANALYSER_H_
