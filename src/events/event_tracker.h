#ifndef ZEL_SRC_EVENTS_EVENT_TRACKER_H_
#define ZEL_SRC_EVENTS_EVENT_TRACKER_H_

#include <zel/events/event.h>
#include <zel/events/kinds.h>

#include <cstdint>
#include <optional>

namespace ZEL {

/// What a detector says of one stretch. Unknown: another verdict hides this one; it passes time, but is
/// counted neither for nor against the event's share.
enum class Sight : uint8_t { kAbsent, kPresent, kUnknown };

/// Joins the sights of one kind, in stream order, to events.
class EventTracker {
  public:
    EventTracker(EventKind kind, EventRule rule) : kind_(kind), rule_(rule) {}

    /// Any length is an event from now on.
    void waiveMinimum() { rule_.min_s = 0.0; }

    struct Step {
        std::optional<Event> ended;  ///< the event that this sight closed
        bool began = false;          ///< a run has begun that may become an event
    };

    /// Takes in what was seen over `span`. A present sight may reach back over earlier ones.
    Step see(TimeSpan span, Sight sight);

    /// The stream ended at `end_s`: closes what is open, and ends there what was present to the last.
    std::optional<Event> finish(double end_s);

  private:
    std::optional<Event> close(bool at_end);
    void extend(TimeSpan span);

    EventKind kind_;
    EventRule rule_;
    bool open_ = false;
    bool last_present_ = false;
    TimeSpan run_;
    double present_s_ = 0.0;
    double unknown_s_ = 0.0;
    double pending_unknown_s_ = 0.0;  // unknown time after run_.end_s
};

}  // namespace ZEL

#endif  // ZEL_SRC_EVENTS_EVENT_TRACKER_H_
