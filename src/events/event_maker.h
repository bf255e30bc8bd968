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
#include "events/frame_sights.h"
#include "events/gaps.h"
#include "events/implied.h"
#include "events/sound_sights.h"

namespace ZEL {

/// Where the parts of a stream ended, in stream time.
struct StreamEnd {
    double video_s = 0.0;
    double audio_s = 0.0;
    std::optional<double> declared_s;
    bool still = false;  ///< one frame is all there was
};

/// Turns what was measured of one stream, in its order, into events.
class EventMaker {
  public:
    EventMaker(const EventRules& rules, StreamTracks tracks, EventListener& listener);

    /// A frame and how long it was shown.
    void frame(TimeSpan shown, const ZELAlgo::ZELVideoResult& verdicts,
               const ZELJudges::MeasuredFrame& measured);
    /// A period that is judged for silence. Tell those that an audio frame ends before the frame itself.
    void silencePeriod(TimeSpan period, const ZELAlgo::ZELAudioResult& result);
    void audio(const MeasuredAudio& audio, double start_s);
    /// Frames are damaged here. Tell this before the first of them.
    void damage(TimeSpan span);
    /// Nothing of `track` has a timestamp here. Tell this before what follows the gap.
    void gap(StreamTrack track, TimeSpan span);
    /// Nothing of `track` has come by the end of `span`, which begins where it was last.
    void late(StreamTrack track, TimeSpan span);
    /// A single frame has no length, so no minimum is asked of it.
    void finish(const StreamEnd& end);

    void setRule(EventKind kind, EventRule rule);
    /// See EventAnalyser::evidence().
    std::optional<Evidence> evidence(EventKind kind) const;

  private:
    void see(const std::vector<Sighting>& sightings);
    void seeSettled(const std::vector<Sighting>& sightings);
    void track(const Sighting& sighting);
    void seeStalls(double settled_s);
    void seeMissing(TimeSpan span);
    void tell(EventKind kind, const std::optional<EventTracker::Raise>& raise);
    void tell(std::optional<Event> cleared);
    std::optional<Evidence> evidenceOf(const Event& event) const;

    EventListener& listener_;
    EventRules rules_;
    FrameSights frames_;
    SoundSights sound_;
    Implied implied_;
    std::vector<EventTracker> trackers_;  // one per kind
    Gaps gaps_;
    double reached_s_ = 0.0;  // how far the stream has come, whatever the judges have settled of it
    double missing_to_s_ = -std::numeric_limits<double>::infinity();  // end of the last gap seen
};

}  // namespace ZEL

#endif  // ZEL_SRC_EVENTS_EVENT_MAKER_H_
