#ifndef ZEL_SRC_EVENTS_EVENT_MAKER_H_
#define ZEL_SRC_EVENTS_EVENT_MAKER_H_

#include <zel/algo/algo_types.h>
#include <zel/events/event.h>
#include <zel/events/kinds.h>

#include <limits>
#include <optional>
#include <vector>

#include "events/event_tracker.h"
#include "events/gaps.h"

namespace ZEL {

/// Hears of events while a stream is analysed.
class EventListener {
  public:
    EventListener() = default;
    EventListener(const EventListener&) = delete;
    EventListener& operator=(const EventListener&) = delete;
    virtual ~EventListener() = default;

    /// A run of verdicts has begun that may or may not become an event.
    virtual void onRunBegan(EventKind kind) = 0;
    virtual void onEvent(const Event& event) = 0;
};

/// Where the parts of a stream ended, in stream time.
struct StreamEnd {
    double video_s = 0.0;
    double audio_s = 0.0;
    std::optional<double> declared_s;
    bool still_picture = false;  ///< one picture is all there was
};

/// Turns the verdicts on one stream, in its order, into events.
class EventMaker {
  public:
    EventMaker(const EventRules& rules, StreamTracks tracks, EventListener& listener);

    /// A picture and how long it was shown.
    void picture(TimeSpan shown, const ZELAlgo::ZELVideoResult& result);
    /// A period that is judged for silence only, and one that is judged for speech only.
    void silencePeriod(TimeSpan period, const ZELAlgo::ZELAudioResult& result);
    void voicePeriod(TimeSpan period, const ZELAlgo::ZELAudioResult& result);
    /// Nothing of `track` has a timestamp here. Tell this before what follows the gap.
    void gap(StreamTrack track, TimeSpan span);
    /// A single picture has no length, so no minimum is asked of it.
    void finish(const StreamEnd& end);

  private:
    void see(EventKind kind, TimeSpan span, Sight sight);
    void seeStalls(double settled_s);
    void report(const std::optional<Event>& event);

    EventListener& listener_;
    std::vector<EventTracker> trackers_;  // one per kind
    Gaps gaps_;
    double missing_to_s_ = -std::numeric_limits<double>::infinity();  // end of the last gap seen
    std::optional<double> like_start_;  // start of the last picture, if a freeze may have begun with it
    bool any_picture_ = false;
};

}  // namespace ZEL

#endif  // ZEL_SRC_EVENTS_EVENT_MAKER_H_
