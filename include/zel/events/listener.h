#ifndef ZEL_EVENTS_LISTENER_H_
#define ZEL_EVENTS_LISTENER_H_

#include <zel/algo/algo_types.h>
#include <zel/events/event.h>
#include <zel/events/kinds.h>
#include <zel/events/stream_clock.h>

#include <cstdint>

namespace ZEL {

/// What the detectors say of one video frame.
struct FrameMeasurement {
    uint64_t index = 0;    ///< number of the frame, from 0 in the order fed
    double start_s = 0.0;  ///< where it begins, in stream time
    ZELAlgo::ZELVideoResult verdicts{};
};

/// Hears what an EventAnalyser finds, on the thread that feeds it and while it does. It overrides what it
/// wants to hear of. Times are stream time, in seconds.
///
/// Of one kind it hears, in this order: suspected, and then nothing more, or raised and cleared.
class EventListener {
  public:
    EventListener() = default;
    EventListener(const EventListener&) = delete;
    EventListener& operator=(const EventListener&) = delete;
    virtual ~EventListener() = default;

    /// The fault has been seen, and may become an event. It began with the frame at hand, see onFrame(), or
    /// up to five seconds before: most kinds are judged by what follows too.
    virtual void onSuspected(EventKind /*kind*/) {}
    /// The fault has lasted the minimum and was there at least half of the time: it began at `start_s`, and
    /// that was known when the stream was at `noticed_s`.
    virtual void onRaised(EventKind /*kind*/, double /*start_s*/, double /*noticed_s*/) {}
    /// The event that was raised is over: once for each raise. See Event::counts().
    virtual void onCleared(const Event& /*event*/) {}

    /// `track` has no frame in `span`, which is at least as long as the shortest stall. Both tracks may have
    /// gaps at the same time, which are one stall.
    virtual void onGap(StreamTrack /*track*/, TimeSpan /*span*/) {}

    /// A frame has its place in the stream. It is the frame at hand until the next one is told.
    virtual void onFrame(const FrameMeasurement& /*frame*/) {}
    /// A period of EventAnalyser::kSilencePeriodS is over. It is judged for silence.
    virtual void onSilencePeriod(TimeSpan /*period*/, const ZELAlgo::ZELAudioResult& /*result*/) {}
    /// A period of EventAnalyser::kVoicePeriodS is over. It tells how much of it was speech.
    virtual void onVoicePeriod(TimeSpan /*period*/, const ZELAlgo::ZELAudioResult& /*result*/) {}
};

}  // namespace ZEL

#endif  // ZEL_EVENTS_LISTENER_H_
