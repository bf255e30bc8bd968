#ifndef ZEL_SRC_EVENTS_EVENT_TRACKER_H_
#define ZEL_SRC_EVENTS_EVENT_TRACKER_H_

#include <zel/events/event.h>
#include <zel/events/kinds.h>

#include <optional>

#include "events/evidence_mean.h"
#include "events/sighting.h"

namespace ZEL {

/// Joins the sights of one kind, in stream order, to events. An event is raised as soon as its run lasts the
/// minimum and its share suffices, and cleared when the run ends; a run that was never raised ends unheard.
class EventTracker {
  public:
    EventTracker(EventKind kind, EventRule rule) : kind_(kind), rule_(rule) {}

    struct Raise {
        double start_s;
        double noticed_s;
    };

    /// What a sight did; of the former run first.
    struct Step {
        std::optional<Event> ended;  ///< one that was raised
        bool began = false;          ///< a run has begun that may become an event
        std::optional<Raise> raised;
    };

    /// Takes in what was seen over `span`. A present sight may reach back over earlier ones; one that is
    /// apart begins another run.
    Step see(TimeSpan span, Sight sight, const std::optional<Evidence>& evidence = std::nullopt,
             bool apart = false);

    /// The run at hand may have become an event by the new rule.
    std::optional<Raise> setRule(EventRule rule);

    /// The run at hand as far as it goes, if it was raised.
    std::optional<Event> raised() const;

    /// The stream ended at `end_s`: ends there what was present to the last, and may thereby raise it.
    std::optional<Raise> extendTo(double end_s);
    /// The same, and clears what was raised; it was there to the end if the fault was present to the last.
    std::optional<Event> finish(double end_s);

  private:
    std::optional<Raise> raise();
    std::optional<Event> clear(bool at_end);
    void extend(TimeSpan span);
    double share() const;

    EventKind kind_;
    EventRule rule_;
    bool open_ = false;
    bool raised_ = false;
    bool last_present_ = false;
    TimeSpan run_;
    double seen_to_s_ = 0.0;
    double present_s_ = 0.0;
    double unknown_s_ = 0.0;
    double pending_unknown_s_ = 0.0;  // unknown time after run_.end_s
    EvidenceMean evidence_;
};

}  // namespace ZEL

#endif  // ZEL_SRC_EVENTS_EVENT_TRACKER_H_
