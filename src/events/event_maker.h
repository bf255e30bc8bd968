#ifndef ZEL_SRC_EVENTS_EVENT_MAKER_H_
#define ZEL_SRC_EVENTS_EVENT_MAKER_H_

#include <zel/algo/algo_types.h>
#include <zel/events/analyser.h>
#include <zel/events/event.h>
#include <zel/events/kinds.h>
#include <zel/events/listener.h>

#include <limits>
#include <optional>
#include <vector>

#include "events/event_tracker.h"
#include "events/gaps.h"
#include "events/verdicts.h"

namespace ZEL {

/// Where the parts of a stream ended, in stream time.
struct StreamEnd {
    double video_s = 0.0;
    double audio_s = 0.0;
    std::optional<double> declared_s;
    bool still = false;  ///< one frame is all there was
};

/// Turns the verdicts on one stream, in its order, into events.
class EventMaker {
  public:
    EventMaker(const EventRules& rules, StreamTracks tracks, EventListener& listener);

    /// A frame and how long it was shown.
    void frame(TimeSpan shown, const ZELAlgo::ZELVideoResult& result);
    /// A period that is judged for silence only, and one that is judged for speech only.
    void silencePeriod(TimeSpan period, const ZELAlgo::ZELAudioResult& result);
    void voicePeriod(TimeSpan period, const ZELAlgo::ZELAudioResult& result);
    /// Nothing of `track` has a timestamp here. Tell this before what follows the gap.
    void gap(StreamTrack track, TimeSpan span);
    /// Nothing of `track` has come by the end of `span`, which begins where it was last.
    void late(StreamTrack track, TimeSpan span);
    /// A single frame has no length, so no minimum is asked of it.
    void finish(const StreamEnd& end);

    void setRule(EventKind kind, EventRule rule);

  private:
    void see(TimeSpan span, const Sights& sights);
    void see(EventKind kind, TimeSpan span, Sight sight);
    void seeStalls(double settled_s);
    void seeMissing(TimeSpan span);
    void tell(EventKind kind, const std::optional<EventTracker::Raise>& raise);
    void tell(const std::optional<Event>& cleared);

    EventListener& listener_;
    EventRules rules_;
    std::vector<EventTracker> trackers_;  // one per kind
    Gaps gaps_;
    double missing_to_s_ = -std::numeric_limits<double>::infinity();  // end of the last gap seen
    std::optional<double> like_start_;  // start of the last frame, if a freeze may have begun with it
    bool any_frame_ = false;
};

}  // namespace ZEL

#endif  // ZEL_SRC_EVENTS_EVENT_MAKER_H_
